#pragma once

// The extension as a child process: starting it, asking it, watching it, ending it.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include "platform/base/clock.h"
#include "platform/base/result.h"
#include "platform/view/view.h"
#include "platform/view/widget_family.h"
#include "platform/widget/timeline.h"

namespace host {

/// The child's own memory and times.
struct ExtensionStatistics {
    long peakRssKiB = 0;
    long privateKiB = 0;
    double userMs = 0.0;
    double systemMs = 0.0;
    /// Of a child's first answer from spawn to answer, of later ones from question to answer.
    double wallMs = 0.0;
    /// The part of it spent waiting for the service.
    double networkMs = 0.0;
};

struct ExtensionOptions {
    std::filesystem::path program;
    /// Given to the child after its own name.
    std::vector<std::string> arguments;
    /// Takes the child's log, line by line, on a thread of the process's own.
    std::function<void(std::string line)> log;
    /// A child that nobody has asked for so long is asked to go.
    std::chrono::milliseconds idleLimit = std::chrono::minutes(1);
    /// A child that has ever held more is killed while it is asked, as a phone does above 30 MB, and an
    /// answer that took more is not used. 0: no limit, as a sanitizer alone takes more.
    long residentLimitKiB = isSanitized ? 0 : 30L * 1024;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    static constexpr bool isSanitized = true;
#else
    static constexpr bool isSanitized = false;
#endif
};

enum class EntryRequest { placeholder, snapshot, timeline };

struct EntryQuestion {
    std::string kind;
    platform::WidgetFamily family = platform::WidgetFamily::systemSmall;
    EntryRequest request = EntryRequest::timeline;
    bool isPreview = false;
    /// Building views may end the extension: ask for them only where they are drawn.
    bool wantsEntries = false;
    bool wantsViews = false;
};

struct AnsweredEntry {
    platform::Instant date;
    /// JSON text; empty when not asked for.
    std::string json;
    std::optional<platform::View> view;
};

struct EntryAnswer {
    std::vector<AnsweredEntry> entries;
    /// Of a timeline only.
    std::optional<platform::TimelineReloadPolicy> policy;
    double networkMs = 0.0;
};

struct WidgetListing {
    std::string kind;
    std::string displayName;
    std::string description;
    std::vector<platform::WidgetFamily> families;
    bool contentMarginsDisabled = false;
};

/// One child. Starts with the first question; after its death or end the next question starts a new one.
/// It runs with a clean environment and no open file but its three pipes, and dies with the host.
/// Idle for long it is asked to go; while it is asked it is killed when it answers no ping for two
/// seconds or when its resident memory has passed the limit.
///
/// Questions may overlap; any thread. Errors (domain "ExtensionError") are one line that says how the
/// child ended or how long it was waited for; a kind or family that there is not is a "UsageError".
class ExtensionProcess {
public:
    explicit ExtensionProcess(ExtensionOptions options);
    /// Ends the child and waits for it.
    ~ExtensionProcess();
    ExtensionProcess(const ExtensionProcess&) = delete;
    ExtensionProcess& operator=(const ExtensionProcess&) = delete;

    platform::Result<std::vector<WidgetListing>> gallery(std::chrono::milliseconds limit);
    /// A late answer is dropped; the child lives on.
    platform::Result<EntryAnswer> ask(const EntryQuestion& question, std::chrono::milliseconds limit);
    /// The extension's clock from now on; absent: the system's.
    platform::Result<void> setClock(std::optional<platform::Instant> instant, double rate);
    platform::Result<void> ping(std::chrono::milliseconds limit);

    /// Of the running child, or of the last one as it was at its last answer.
    ExtensionStatistics statistics() const;
    /// 0 when none runs.
    int processId() const;
    /// Ends the child (SIGKILL when it does not go by itself) and reaps it.
    void end();
    /// Ends it for good: whatever will be asked fails at once, and what is asked fails when the child goes,
    /// within about a second. Does not wait for that.
    void close();

private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace host
