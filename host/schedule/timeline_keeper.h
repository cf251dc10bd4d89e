#pragma once

// Keeps the timelines of the placed widgets: decides when each is asked for the next one, shows every entry
// at its moment, and keeps the last good picture whatever happens. Has no clock, no thread and no process: it
// is told the time and the answers, so that a simulated clock can drive it.

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>
#include "host/paint/widget_renderer.h"
#include "host/process/extension_process.h"
#include "host/schedule/ledger.h"
#include "host/schedule/reload_plan.h"

namespace host {

/// What a placed widget shows. A new picture is a new object: this one never changes.
struct ShownPicture {
    /// Counts up over all pictures of the process.
    int version = 0;
    DrawnWidget widget;
    std::string entryJson;
    platform::Instant entryDate;
    /// When it was first shown, on the widgets' clock.
    platform::Instant since;
};

/// The present state of one placed widget.
struct WidgetState {
    int id = 0;
    std::string kind;
    platform::WidgetFamily family = platform::WidgetFamily::systemSmall;
    /// Null until the placeholder has arrived.
    std::shared_ptr<const ShownPicture> picture;
    std::optional<platform::TimelineReloadPolicy> policy;
    std::optional<NextReload> next;
    bool isRunning = false;
    int failures = 0;
    /// Of the latest reload; empty when it succeeded.
    std::string lastError;
};

/// A question that the keeper wants to be put to the extension. Its answer must come back under its number.
struct TimelineQuestion {
    std::uint64_t number = 0;
    int widget = 0;
    EntryQuestion question;
};

/// Not for several threads. `now` never goes back on its real clock.
class TimelineKeeper {
public:
    /// Timelines that may be awaited at once. One placeholder may be awaited beside them.
    static constexpr int mostReloads = 6;

    /// `ledger` must outlive it.
    TimelineKeeper(Ledger& ledger, ReloadMode mode) : ledger_(ledger), mode_(mode) {}

    /// What the owner has to do after a step.
    struct Steps {
        std::vector<TimelineQuestion> questions;
        /// Widgets whose state is no longer what it was.
        std::set<int> changed;
        /// When to advance next; absent: when something has happened.
        std::optional<std::chrono::nanoseconds> pause;
    };
    /// Does everything that is due. To be called after every other call and after each pause. A clock that
    /// went back counts as set.
    Steps advance(const Moment& now);
    /// An answer to a question, however late.
    void answered(std::uint64_t number, platform::Result<EntryAnswer> answer, long peakRssKiB,
                  const Moment& now);

    /// Shows the placeholder and asks for a timeline. `id` must be new.
    void place(int id, std::string kind, platform::WidgetFamily family, const Moment& now);
    void remove(int id);
    /// Asks for one widget's timeline.
    void reload(int id, Requester requester, const Moment& now);
    /// Asks for the timelines of all widgets of that kind, or of all widgets.
    void reload(std::optional<std::string_view> kind, Requester requester, const Moment& now);
    /// Takes away the pictures of that kind, since they belong to another user. The placeholder is shown
    /// until the next timeline arrives.
    void forget(std::string_view kind, const Moment& now);

    ReloadMode mode() const { return mode_; }
    void setMode(ReloadMode mode);
    /// The widgets' clock was set and now runs at `rate`: asks for everything anew.
    void clockSet(double rate, const Moment& now);

    /// In the order of their ids.
    std::vector<WidgetState> states(const Moment& now) const;

private:
    struct Widget {
        int id;
        std::string kind;
        platform::WidgetFamily family;
        ReloadPlan plan;
        /// Counts up when answers under way must not be shown any more.
        int generation = 0;
        bool needsPlaceholder = true;
        std::vector<AnsweredEntry> entries = {};
        std::optional<platform::TimelineReloadPolicy> policy = {};
        std::shared_ptr<const ShownPicture> picture = {};
        std::string lastError = {};
        /// The hold that the ledger already lists.
        std::optional<std::pair<Requester, platform::Instant>> notedHold = {};
        /// Since when it could have been asked, had fewer answers been awaited.
        std::optional<std::chrono::steady_clock::time_point> waitsSince = {};
    };
    struct Awaited {
        int widget;
        int generation;
        /// Absent: it is a placeholder.
        std::optional<std::uint64_t> ledgerNumber;
        Moment start;
    };

    class Pause;
    void startReloads(const Moment& now, Pause& pause);
    void startReload(Widget& widget, const NextReload& next, const Moment& now);
    void askForPlaceholder(const Moment& now);
    void ask(const Widget& widget, EntryRequest request, std::optional<std::uint64_t> ledgerNumber,
             const Moment& now);
    bool isKindBusy(std::string_view kind) const;
    int reloadsUnderWay() const;
    void noteHold(Widget& widget, const NextReload& next, const Moment& now);
    void showDueEntry(Widget& widget, platform::Instant now);
    bool show(Widget& widget, const AnsweredEntry& entry, bool isPlaceholder, platform::Instant now);
    LedgerEntry::Result take(Widget& widget, platform::Result<EntryAnswer> answer, const Moment& now);

    Ledger& ledger_;
    ReloadMode mode_;
    double clockRate_ = 1.0;
    platform::Instant lastShown_ = platform::Instant::min();
    int lastVersion_ = 0;
    std::uint64_t lastQuestion_ = 0;
    std::map<int, Widget> widgets_;
    std::map<std::uint64_t, Awaited> awaited_;
    Steps steps_;
};

}  // namespace host
