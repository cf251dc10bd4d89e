#pragma once

// The extension as a child process: starting it, asking it, watching it, ending it.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include "platform/base/clock.h"
#include "platform/base/result.h"
#include "platform/view/screen.h"
#include "platform/view/view.h"
#include "platform/widget/timeline.h"

namespace host {

/// The child's memory and times.
struct ExtensionStatistics {
    long peakRssKiB = 0;
    long privateKiB = 0;
    double userMs = 0.0;
    double systemMs = 0.0;
    /// A child's first answer is timed from its start, later ones from the question.
    double wallMs = 0.0;
    /// The part of it spent waiting for the service.
    double networkMs = 0.0;
};

struct ExtensionOptions {
    std::filesystem::path program;
    /// Without the program's own name.
    std::vector<std::string> arguments;
    /// Receives the child's log line by line, on the child's thread. May be empty.
    std::function<void(std::string line)> log;
    /// A child that was asked nothing for so long is told to exit.
    std::chrono::milliseconds idleLimit = std::chrono::minutes(1);
    /// A child whose peak was higher is killed while it owes an answer, as a phone does above 30 MB, and an
    /// answer that took more is not used. 0: no limit, since a sanitizer takes more by itself.
    long residentLimitKiB = isSanitized ? 0 : 30L * 1024;
    /// In bytes; 0: no limit. The resident memory is only looked at now and then, and a child can take much
    /// between two looks. An extension of 30 MB takes less than half of this with its libraries and its
    /// threads' stacks.
    std::uint64_t addressSpaceLimit = isSanitized ? 0 : 256U << 20;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    static constexpr bool isSanitized = true;
#else
    static constexpr bool isSanitized = false;
#endif
};

enum class EntryRequest { placeholder, snapshot, timeline };

/// How long a host waits for the answer.
constexpr std::chrono::seconds answerLimit(EntryRequest request) {
    switch (request) {
        case EntryRequest::placeholder: return std::chrono::seconds(2);
        case EntryRequest::snapshot: return std::chrono::seconds(10);
        case EntryRequest::timeline: break;
    }
    return std::chrono::seconds(30);
}

struct EntryQuestion {
    std::string kind;
    platform::WidgetFamily family = platform::WidgetFamily::systemSmall;
    EntryRequest request = EntryRequest::timeline;
    bool isPreview = false;
    /// Building views can end the extension, so ask for them only to draw them.
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
    /// Only for a timeline.
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

/// A "UsageError" with the kinds to choose from when the gallery has no widget of that kind.
platform::Result<void> checkKind(const std::vector<WidgetListing>& gallery, std::string_view kind);

/// One child. The first question starts it; after its death or end the next question starts another.
/// It runs with a clean environment and no open file except its three pipes, and dies with the host. It is
/// asked to exit when it has been idle for long. While it owes an answer it is killed if it does not answer a
/// ping for two seconds, or when its resident memory has passed the limit.
///
/// Questions may overlap; any thread. Errors (domain "ExtensionError") are one line that says how the
/// child ended or how long it was waited for. An unknown kind or family is a "UsageError".
class ExtensionProcess {
public:
    explicit ExtensionProcess(ExtensionOptions options);
    /// Ends the child and waits for it.
    ~ExtensionProcess();
    ExtensionProcess(const ExtensionProcess&) = delete;
    ExtensionProcess& operator=(const ExtensionProcess&) = delete;

    /// The bundle's widgets. Waits for the answer.
    platform::Result<std::vector<WidgetListing>> gallery(std::chrono::milliseconds limit);
    /// Waits for the answer. When it comes too late it is dropped, and the child lives on.
    platform::Result<EntryAnswer> ask(const EntryQuestion& question, std::chrono::milliseconds limit);
    using Completion = std::function<void(platform::Result<EntryAnswer>)>;
    /// The same without waiting. `completion` is called exactly once, on another thread or before this
    /// returns; it must not destroy the ExtensionProcess.
    void ask(const EntryQuestion& question, std::chrono::milliseconds limit, Completion completion);
    /// Sets the extension's clock, also in later children. Absent: it follows the system.
    platform::Result<void> setClock(std::optional<platform::Instant> instant, double rate);

    /// Of the running child, or of the last one as of its last answer.
    ExtensionStatistics statistics() const;
    /// 0 when no child runs.
    int processId() const;
    /// Ends the child (with SIGKILL if it does not exit by itself) and reaps it.
    void end();
    /// Ends it for good: later questions fail at once, and those under way fail when the child is gone,
    /// within about a second. Does not wait for that.
    void close();

private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace host
