#pragma once

// Keeps the placed widgets' timelines: asks the extension when a plan grants it, shows each entry at
// its moment, and keeps the last good picture whatever happens.

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>
#include "host/paint/widget_renderer.h"
#include "host/process/extension_process.h"
#include "host/schedule/ledger.h"
#include "host/schedule/pause.h"
#include "host/schedule/reload_plan.h"
#include "platform/base/clock.h"

namespace host {

/// What a placed widget shows. A value that never changes; a new picture is a new one.
struct ShownPicture {
    /// Counts up over all pictures of the process.
    int version = 0;
    DrawnWidget widget;
    std::string entryJson;
    platform::Instant entryDate;
    /// When it came, on the widgets' clock.
    platform::Instant since;
};

/// One placed widget as it stands.
struct WidgetState {
    int id = 0;
    std::string kind;
    platform::WidgetFamily family = platform::WidgetFamily::systemSmall;
    /// Null until the placeholder is there.
    std::shared_ptr<const ShownPicture> picture;
    std::optional<platform::TimelineReloadPolicy> policy;
    std::optional<NextReload> next;
    bool isRunning = false;
    int failures = 0;
    /// Of the latest reload, empty when it went well.
    std::string lastError;
};

/// Asks on threads of its own: placeholders and entries that become due never wait for a timeline. Any
/// thread may call it; `changed` is called on one of its threads, without any lock, whenever a widget's
/// state is another.
class WidgetSchedule {
public:
    struct Surroundings {
        ExtensionProcess& extension;
        WidgetRenderer& renderer;
        /// The clock that widgets see.
        platform::Clock& clock;
        Ledger& ledger;
        std::function<void(int id)> changed;
    };

    static constexpr std::chrono::seconds placeholderLimit{2};
    static constexpr std::chrono::seconds snapshotLimit{10};
    static constexpr std::chrono::seconds timelineLimit{30};

    /// All that it is given must outlive it.
    WidgetSchedule(Surroundings surroundings, ReloadMode mode);
    /// Waits for questions under way.
    ~WidgetSchedule();
    WidgetSchedule(const WidgetSchedule&) = delete;
    WidgetSchedule& operator=(const WidgetSchedule&) = delete;

    /// Asks nothing any more; questions under way go on. For ending the extension before this.
    void stopAsking();

    /// Shows the placeholder and asks for a timeline. `id` must be new.
    void place(int id, std::string kind, platform::WidgetFamily family);
    void remove(int id);

    /// Asks for the widgets of that kind, or for all.
    void reload(std::optional<std::string_view> kind, Requester requester);
    void reload(int id, Requester requester);
    /// Takes the pictures of that kind away: they belong to somebody who is no longer here. The
    /// placeholder stands there until the next timeline comes.
    void forget(std::string_view kind);

    ReloadMode mode() const;
    void setMode(ReloadMode mode);
    /// Sets the widgets' clock, here and in the extension, and asks for everything anew. Absent: the
    /// system's time.
    void setClock(std::optional<platform::Instant> instant, double rate);
    double clockRate() const;

    std::optional<WidgetState> state(int id) const;
    /// In the order of their ids.
    std::vector<WidgetState> states() const;

private:
    struct Widget;
    using Widgets = std::map<int, std::shared_ptr<Widget>>;

    Moment now() const;
    // What the threads do until the end.
    void reloadWhatIsReady();
    void showPlaceholders();
    void showEntries();

    void wait(std::unique_lock<std::mutex>& lock, const Pause& pause);
    /// The widget that has been ready for longest. After a failure widgets of a kind are asked one by one.
    std::shared_ptr<Widget> nextReload(const Moment& now, Pause& pause);
    bool isKindBusy(std::string_view kind) const;
    std::shared_ptr<Widget> nextWithoutPicture() const;
    Hold holdOf(const NextReload& next) const;
    void noteHold(Widget& widget, const NextReload& next, const Moment& now);
    bool showEntryOf(Widget& widget, const Moment& now);
    void reload(const std::shared_ptr<Widget>& widget, std::unique_lock<std::mutex>& lock);
    void showPlaceholder(const std::shared_ptr<Widget>& widget, std::unique_lock<std::mutex>& lock);
    bool show(Widget& widget, const AnsweredEntry& entry, bool isPlaceholder);
    WidgetState stateOf(const Widget& widget) const;

    Surroundings surroundings_;
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    ReloadMode mode_;
    double clockRate_ = 1.0;
    bool isEnding_ = false;
    int lastVersion_ = 0;
    int busyWorkers_ = 0;
    std::chrono::steady_clock::time_point allBusySince_;
    /// When a worker last came back after all of them had long been out: what was ready then had to wait.
    std::optional<Moment> cameFree_;
    Widgets widgets_;
    std::vector<std::thread> threads_;
};

}  // namespace host
