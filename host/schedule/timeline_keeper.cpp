#include "host/schedule/timeline_keeper.h"
#include <algorithm>
#include <utility>

namespace host {
namespace {

/// Shorter waits for other answers are not worth a word in the ledger.
constexpr std::chrono::milliseconds notableWait{250};
/// The system's clock is corrected by less than this all the time.
constexpr std::chrono::minutes notableStepBack{1};

std::string endOfHold(const NextReload& next, const Moment& now) {
    if (next.hold != Hold::backOff) return "until " + platform::formatInstant(next.at.shown);
    // Back-off counts real time, whatever the widgets' clock shows.
    const auto rest = std::chrono::ceil<std::chrono::seconds>(next.at.real - now.real);
    return "for " + std::to_string(rest.count()) + " s";
}

/// The entry that is shown at that moment; null when all lie in the future.
const AnsweredEntry* entryAt(const std::vector<AnsweredEntry>& entries, platform::Instant moment) {
    const AnsweredEntry* current = nullptr;
    for (const AnsweredEntry& entry : entries) {
        if (entry.date <= moment && (current == nullptr || entry.date >= current->date)) current = &entry;
    }
    return current;
}

}  // namespace

/// How long to wait for the earliest of several moments.
class TimelineKeeper::Pause {
public:
    /// `clockRate`: of the shown clock, beside the real one; 0 when it stands still.
    Pause(const Moment& now, double clockRate) : now_(now), clockRate_(clockRate) {}

    /// Absent: until something happens.
    std::optional<std::chrono::nanoseconds> duration() const { return duration_; }

    void untilShown(platform::Instant moment) {
        if (clockRate_ <= 0.0) return;
        // Moments may be further apart than 64 bits of nanoseconds reach.
        const double rest = static_cast<double>(moment.time_since_epoch().count()) -
                            static_cast<double>(now_.shown.time_since_epoch().count());
        add(std::chrono::nanoseconds(static_cast<long long>(std::clamp(rest / clockRate_, 0.0, longest))));
    }
    void until(const Moment& moment) {
        if (moment.shown > now_.shown) {
            untilShown(moment.shown);
        } else {
            add(moment.real - now_.real);
        }
    }

private:
    void add(std::chrono::nanoseconds duration) {
        // A moment that is a little late does no harm, a thread that wakes too often does.
        const auto bounded = std::max<std::chrono::nanoseconds>(duration, std::chrono::milliseconds(1));
        duration_ = std::min(duration_.value_or(bounded), bounded);
    }

    /// An hour, in nanoseconds.
    static constexpr double longest = 3.6e12;

    Moment now_;
    double clockRate_;
    std::optional<std::chrono::nanoseconds> duration_;
};

void TimelineKeeper::place(int id, std::string kind, platform::WidgetFamily family, const Moment& now) {
    Widget widget{.id = id, .kind = std::move(kind), .family = family, .plan = ReloadPlan(mode_)};
    widget.plan.ask(Requester::placement, now);
    widgets_.emplace(id, std::move(widget));
}

void TimelineKeeper::remove(int id) { widgets_.erase(id); }

void TimelineKeeper::reload(int id, Requester requester, const Moment& now) {
    const auto found = widgets_.find(id);
    if (found != widgets_.end()) found->second.plan.ask(requester, now);
}

void TimelineKeeper::reload(std::optional<std::string_view> kind, Requester requester, const Moment& now) {
    for (auto& [id, widget] : widgets_) {
        if (!kind || widget.kind == *kind) widget.plan.ask(requester, now);
    }
}

void TimelineKeeper::forget(std::string_view kind, const Moment& now) {
    for (auto& [id, widget] : widgets_) {
        if (widget.kind != kind) continue;
        ++widget.generation;
        widget.entries.clear();
        widget.picture.reset();
        widget.needsPlaceholder = true;
        widget.plan.ask(Requester::app, now);
        steps_.changed.insert(id);
    }
}

void TimelineKeeper::setMode(ReloadMode mode) {
    mode_ = mode;
    for (auto& [id, widget] : widgets_) {
        widget.plan.setMode(mode);
        widget.notedHold.reset();
    }
}

void TimelineKeeper::clockSet(double rate, const Moment& now) {
    clockRate_ = rate;
    lastShown_ = now.shown;
    for (auto& [id, widget] : widgets_) {
        widget.plan.clockMoved();
        widget.plan.ask(Requester::clock, now);
        widget.waitsSince.reset();
    }
}

std::vector<WidgetState> TimelineKeeper::states(const Moment& now) const {
    std::vector<WidgetState> states;
    for (const auto& [id, widget] : widgets_) {
        states.push_back({.id = id,
                          .kind = widget.kind,
                          .family = widget.family,
                          .picture = widget.picture,
                          .policy = widget.policy,
                          .next = widget.plan.next(now),
                          .isRunning = widget.plan.isRunning(),
                          .failures = widget.plan.failures(),
                          .lastError = widget.lastError});
    }
    return states;
}

TimelineKeeper::Steps TimelineKeeper::advance(const Moment& now) {
    // What was asked for under the later time would come late by as much.
    if (now.shown + notableStepBack < lastShown_) clockSet(clockRate_, now);
    lastShown_ = now.shown;
    Pause pause(now, clockRate_);
    startReloads(now, pause);
    askForPlaceholder(now);
    for (auto& [id, widget] : widgets_) {
        showDueEntry(widget, now.shown);
        for (const AnsweredEntry& entry : widget.entries) {
            if (entry.date > now.shown) pause.untilShown(entry.date);
        }
    }
    steps_.pause = pause.duration();
    return std::exchange(steps_, {});
}

void TimelineKeeper::startReloads(const Moment& now, Pause& pause) {
    std::vector<std::pair<NextReload, Widget*>> ready;
    for (auto& [id, widget] : widgets_) {
        const std::optional<NextReload> next = widget.plan.next(now);
        if (!next) continue;
        if (next->isReady(now)) {
            ready.emplace_back(*next, &widget);
        } else {
            noteHold(widget, *next, now);
            pause.until(next->at);
        }
    }
    // The real clock orders those that became ready while the shown one stood still.
    std::ranges::stable_sort(
        ready, {}, [](const auto& each) { return std::pair(each.first.at.shown, each.first.at.real); });
    for (const auto& [next, widget] : ready) {
        // Together they may have been too much for the extension: after a failure, one of a kind at a time.
        if (widget->plan.failures() > 0 && next.requester != Requester::person && isKindBusy(widget->kind))
            continue;
        if (reloadsUnderWay() < mostReloads) {
            startReload(*widget, next, now);
        } else if (!widget->waitsSince) {
            widget->waitsSince = now.real;
        }
    }
}

void TimelineKeeper::startReload(Widget& widget, const NextReload& next, const Moment& now) {
    const bool hasWaited = widget.waitsSince && now.real - *widget.waitsSince >= notableWait;
    const Hold hold = next.hold == Hold::none && hasWaited ? Hold::busy : next.hold;
    widget.plan.start(now);
    widget.notedHold.reset();
    widget.waitsSince.reset();
    steps_.changed.insert(widget.id);
    const std::uint64_t ledgerNumber = ledger_.add({.widget = widget.id,
                                                    .kind = widget.kind,
                                                    .family = widget.family,
                                                    .requester = next.requester,
                                                    .due = next.due,
                                                    .decided = now.shown,
                                                    .reason = pastReason(hold, mode_)});
    ask(widget, EntryRequest::timeline, ledgerNumber, now);
}

void TimelineKeeper::askForPlaceholder(const Moment& now) {
    const bool isAwaited =
        std::ranges::any_of(awaited_, [](const auto& each) { return !each.second.ledgerNumber; });
    if (isAwaited) return;
    for (auto& [id, widget] : widgets_) {
        if (!widget.needsPlaceholder || widget.picture) continue;
        widget.needsPlaceholder = false;
        return ask(widget, EntryRequest::placeholder, std::nullopt, now);
    }
}

void TimelineKeeper::ask(const Widget& widget, EntryRequest request,
                         std::optional<std::uint64_t> ledgerNumber, const Moment& now) {
    awaited_.emplace(++lastQuestion_, Awaited{widget.id, widget.generation, ledgerNumber, now});
    steps_.questions.push_back({lastQuestion_,
                                widget.id,
                                {.kind = widget.kind,
                                 .family = widget.family,
                                 .request = request,
                                 .wantsEntries = true,
                                 .wantsViews = true}});
}

bool TimelineKeeper::isKindBusy(std::string_view kind) const {
    return std::ranges::any_of(widgets_, [kind](const auto& each) {
        return each.second.kind == kind && each.second.plan.isRunning();
    });
}

int TimelineKeeper::reloadsUnderWay() const {
    return static_cast<int>(std::ranges::count_if(
        awaited_, [](const auto& each) { return each.second.ledgerNumber.has_value(); }));
}

void TimelineKeeper::noteHold(Widget& widget, const NextReload& next, const Moment& now) {
    const std::pair hold{next.requester, next.due};
    if (next.hold == Hold::none || widget.notedHold == hold) return;
    widget.notedHold = hold;
    ledger_.add({.widget = widget.id,
                 .kind = widget.kind,
                 .family = widget.family,
                 .requester = next.requester,
                 .due = next.due,
                 .decided = now.shown,
                 .result = LedgerEntry::Result::held,
                 .reason = reason(next.hold, mode_) + "; " + endOfHold(next, now)});
}

void TimelineKeeper::showDueEntry(Widget& widget, platform::Instant now) {
    const AnsweredEntry* entry = entryAt(widget.entries, now);
    if (entry == nullptr || (widget.picture && widget.picture->entryDate == entry->date)) return;
    if (show(widget, *entry, false, now)) steps_.changed.insert(widget.id);
}

bool TimelineKeeper::show(Widget& widget, const AnsweredEntry& entry, bool isPlaceholder,
                          platform::Instant now) {
    if (!entry.view) return false;
    DrawnWidget drawn{*entry.view, widget.kind, widget.family, isPlaceholder};
    const bool isNew = !widget.picture || widget.picture->widget != drawn;
    widget.picture = std::make_shared<ShownPicture>(
        ShownPicture{.version = isNew ? ++lastVersion_ : widget.picture->version,
                     .widget = std::move(drawn),
                     .entryJson = entry.json,
                     .entryDate = entry.date,
                     .since = now});
    return isNew;
}

void TimelineKeeper::answered(std::uint64_t number, platform::Result<EntryAnswer> answer, long peakRssKiB,
                              const Moment& now) {
    const auto found = awaited_.find(number);
    if (found == awaited_.end()) return;
    const Awaited asked = found->second;
    awaited_.erase(found);

    const auto placed = widgets_.find(asked.widget);
    Widget* widget = placed == widgets_.end() ? nullptr : &placed->second;
    const bool isWanted = widget != nullptr && widget->generation == asked.generation;
    if (widget != nullptr) steps_.changed.insert(widget->id);
    if (!asked.ledgerNumber) {
        if (isWanted && !widget->picture && answer && !answer->entries.empty())
            show(*widget, answer->entries.front(), true, now.shown);
        return;
    }
    LedgerEntry::Result result = LedgerEntry::Result::dropped;
    std::string trouble;
    if (isWanted) {
        result = take(*widget, std::move(answer), now);
        trouble = widget->lastError;
    } else if (widget != nullptr) {
        // forget() has asked anew: this answer belongs to another user.
        widget->plan.answered(platform::TimelineReloadPolicy::atEnd(), 1, asked.start.shown, now);
        widget->lastError.clear();
    }
    ledger_.finish(*asked.ledgerNumber, result, std::move(trouble),
                   std::chrono::duration<double, std::milli>(now.real - asked.start.real).count(),
                   peakRssKiB);
}

LedgerEntry::Result TimelineKeeper::take(Widget& widget, platform::Result<EntryAnswer> answer,
                                         const Moment& now) {
    if (!answer || answer->entries.empty()) {
        widget.lastError = answer ? "the timeline has no entry" : answer.error().message;
        widget.plan.failed(now);
        return LedgerEntry::Result::failed;
    }
    widget.lastError.clear();
    widget.policy = answer->policy.value_or(platform::TimelineReloadPolicy::atEnd());
    widget.entries = std::move(answer->entries);
    const auto last = std::ranges::max(widget.entries, {}, &AnsweredEntry::date).date;
    widget.plan.answered(*widget.policy, widget.entries.size(), last, now);
    const AnsweredEntry* entry = entryAt(widget.entries, now.shown);
    const bool isNew = entry != nullptr && show(widget, *entry, false, now.shown);
    return isNew ? LedgerEntry::Result::shown : LedgerEntry::Result::unchanged;
}

}  // namespace host
