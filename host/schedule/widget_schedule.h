#pragma once

// Runs a TimelineKeeper in real time: asks the extension what the keeper wants to know and wakes it when
// something is due.

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>
#include "host/process/extension_process.h"
#include "host/schedule/ledger.h"
#include "host/schedule/timeline_keeper.h"
#include "platform/base/clock.h"

namespace host {

/// Any thread may call it; no call waits for the extension.
class WidgetSchedule {
public:
    /// `clock` is the one that the widgets see. `changed` is called on the schedule's thread, without any
    /// lock, when a widget's state may have changed. Everything given here must outlive the schedule.
    WidgetSchedule(ExtensionProcess& extension, platform::Clock& clock, Ledger& ledger, ReloadMode mode,
                   std::function<void(int id)> changed);
    /// Waits for questions under way.
    ~WidgetSchedule();

    /// Asks nothing more; questions under way go on. For closing the extension before this ends.
    void stopAsking();

    // See TimelineKeeper.
    void place(int id, std::string kind, platform::WidgetFamily family);
    void remove(int id);
    void reload(int id, Requester requester);
    void reload(std::optional<std::string_view> kind, Requester requester);
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
    Moment now() const;
    void run();
    void ask(const TimelineQuestion& question);
    template <typename Change>
    void change(const Change& what);

    ExtensionProcess& extension_;
    platform::Clock& clock_;
    const std::function<void(int id)> changed_;

    mutable std::mutex mutex_;
    std::condition_variable wake_;
    TimelineKeeper keeper_;
    double clockRate_ = 1.0;
    bool isEnding_ = false;
    /// Whether something has happened since the keeper last advanced.
    bool hasNews_ = false;
    std::size_t unanswered_ = 0;

    // Last, so that it starts after everything else is ready.
    std::thread thread_;
};

}  // namespace host
