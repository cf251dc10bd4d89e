#include "host/schedule/widget_schedule.h"
#include <algorithm>
#include <utility>

namespace host {

namespace {

constexpr int workerCount = 6;
/// The ledger says nothing of shorter ones.
constexpr std::chrono::milliseconds notableWait{250};

double millisecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

std::string endOfHold(const NextReload& next, const Moment& now) {
    if (next.hold != Hold::backOff) return "until " + platform::formatInstant(next.at.shown);
    // A failure is waited out in real time, whatever the widgets' clock shows.
    const auto rest = std::chrono::ceil<std::chrono::seconds>(next.at.real - now.real);
    return "for " + std::to_string(rest.count()) + " s";
}

}  // namespace

struct WidgetSchedule::Widget {
    Widget(int ownId, std::string ownKind, platform::WidgetFamily ownFamily, ReloadMode mode)
        : id(ownId), kind(std::move(ownKind)), family(ownFamily), plan(mode) {}

    int id;
    std::string kind;
    platform::WidgetFamily family;
    ReloadPlan plan;
    /// Changes when answers under way must not be shown any more.
    int generation = 0;
    bool needsPlaceholder = true;
    bool isRemoved = false;
    std::vector<AnsweredEntry> entries;
    std::optional<platform::TimelineReloadPolicy> policy;
    std::shared_ptr<const ShownPicture> picture;
    std::string lastError;
    /// The hold that the ledger already tells of.
    std::optional<std::pair<Requester, platform::Instant>> notedHold;

    /// The entry to be shown at that moment; null when all lie in the future.
    const AnsweredEntry* entryAt(platform::Instant moment) const {
        const AnsweredEntry* current = nullptr;
        for (const AnsweredEntry& entry : entries) {
            if (entry.date <= moment && (current == nullptr || entry.date >= current->date)) current = &entry;
        }
        return current;
    }

    std::optional<platform::Instant> nextEntryAfter(platform::Instant moment) const {
        std::optional<platform::Instant> next;
        for (const AnsweredEntry& entry : entries) {
            if (entry.date > moment && (!next || entry.date < *next)) next = entry.date;
        }
        return next;
    }
};

WidgetSchedule::WidgetSchedule(Surroundings surroundings, ReloadMode mode)
    : surroundings_(std::move(surroundings)), mode_(mode) {
    for (int i = 0; i < workerCount; ++i) threads_.emplace_back([this] { reloadWhatIsReady(); });
    threads_.emplace_back([this] { showPlaceholders(); });
    threads_.emplace_back([this] { showEntries(); });
}

WidgetSchedule::~WidgetSchedule() {
    stopAsking();
    for (std::thread& thread : threads_) thread.join();
}

void WidgetSchedule::stopAsking() {
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    wake_.notify_all();
}

Moment WidgetSchedule::now() const { return {surroundings_.clock.now(), std::chrono::steady_clock::now()}; }

void WidgetSchedule::place(int id, std::string kind, platform::WidgetFamily family) {
    {
        const std::lock_guard lock(mutex_);
        const auto widget = std::make_shared<Widget>(id, std::move(kind), family, mode_);
        widget->plan.ask(Requester::placement, now());
        widgets_.emplace(id, widget);
    }
    wake_.notify_all();
}

void WidgetSchedule::remove(int id) {
    const std::lock_guard lock(mutex_);
    const auto found = widgets_.find(id);
    if (found == widgets_.end()) return;
    found->second->isRemoved = true;
    widgets_.erase(found);
}

void WidgetSchedule::reload(std::optional<std::string_view> kind, Requester requester) {
    {
        const std::lock_guard lock(mutex_);
        for (const auto& [id, widget] : widgets_) {
            if (!kind || widget->kind == *kind) widget->plan.ask(requester, now());
        }
    }
    wake_.notify_all();
}

void WidgetSchedule::reload(int id, Requester requester) {
    {
        const std::lock_guard lock(mutex_);
        const auto found = widgets_.find(id);
        if (found != widgets_.end()) found->second->plan.ask(requester, now());
    }
    wake_.notify_all();
}

void WidgetSchedule::forget(std::string_view kind) {
    std::vector<int> forgotten;
    {
        const std::lock_guard lock(mutex_);
        for (const auto& [id, widget] : widgets_) {
            if (widget->kind != kind) continue;
            ++widget->generation;
            widget->entries.clear();
            widget->picture.reset();
            widget->needsPlaceholder = true;
            widget->plan.ask(Requester::app, now());
            forgotten.push_back(id);
        }
    }
    wake_.notify_all();
    for (const int id : forgotten) surroundings_.changed(id);
}

ReloadMode WidgetSchedule::mode() const {
    const std::lock_guard lock(mutex_);
    return mode_;
}

void WidgetSchedule::setMode(ReloadMode mode) {
    {
        const std::lock_guard lock(mutex_);
        mode_ = mode;
        cameFree_.reset();
        for (const auto& [id, widget] : widgets_) {
            widget->plan.setMode(mode);
            widget->notedHold.reset();
        }
    }
    wake_.notify_all();
}

void WidgetSchedule::setClock(std::optional<platform::Instant> instant, double rate) {
    {
        const std::lock_guard lock(mutex_);
        if (instant) {
            surroundings_.clock.set(*instant, rate);
        } else {
            surroundings_.clock.followSystem();
        }
        clockRate_ = instant ? rate : 1.0;
        cameFree_.reset();
    }
    // After our own, so that no entry of the extension's is ahead of our time. A child that cannot be told
    // now is started anew later and is then told by its keeper.
    static_cast<void>(surroundings_.extension.setClock(instant, rate));
    {
        const std::lock_guard lock(mutex_);
        for (const auto& [id, widget] : widgets_) {
            widget->plan.clockMoved(now());
            widget->plan.ask(Requester::clock, now());
        }
    }
    wake_.notify_all();
}

double WidgetSchedule::clockRate() const {
    const std::lock_guard lock(mutex_);
    return clockRate_;
}

std::optional<WidgetState> WidgetSchedule::state(int id) const {
    const std::lock_guard lock(mutex_);
    const auto found = widgets_.find(id);
    if (found == widgets_.end()) return std::nullopt;
    return stateOf(*found->second);
}

std::vector<WidgetState> WidgetSchedule::states() const {
    const std::lock_guard lock(mutex_);
    std::vector<WidgetState> states;
    for (const auto& [id, widget] : widgets_) states.push_back(stateOf(*widget));
    return states;
}

WidgetState WidgetSchedule::stateOf(const Widget& widget) const {
    return {.id = widget.id,
            .kind = widget.kind,
            .family = widget.family,
            .picture = widget.picture,
            .policy = widget.policy,
            .next = widget.plan.next(now()),
            .isRunning = widget.plan.isRunning(),
            .failures = widget.plan.failures(),
            .lastError = widget.lastError};
}

void WidgetSchedule::wait(std::unique_lock<std::mutex>& lock, const Pause& pause) {
    if (pause.duration()) {
        wake_.wait_for(lock, *pause.duration());
    } else {
        wake_.wait(lock);
    }
}

void WidgetSchedule::reloadWhatIsReady() {
    std::unique_lock lock(mutex_);
    while (!isEnding_) {
        const Moment moment = now();
        Pause pause(moment, clockRate_);
        const std::shared_ptr<Widget> widget = nextReload(moment, pause);
        if (!widget) {
            wait(lock, pause);
            continue;
        }
        if (++busyWorkers_ == workerCount) allBusySince_ = moment.real;
        reload(widget, lock);
        const Moment end = now();
        if (busyWorkers_-- == workerCount && end.real - allBusySince_ >= notableWait) cameFree_ = end;
    }
}

void WidgetSchedule::showPlaceholders() {
    std::unique_lock lock(mutex_);
    while (!isEnding_) {
        const std::shared_ptr<Widget> widget = nextWithoutPicture();
        if (widget) {
            showPlaceholder(widget, lock);
        } else {
            wake_.wait(lock);
        }
    }
}

void WidgetSchedule::showEntries() {
    std::unique_lock lock(mutex_);
    while (!isEnding_) {
        const Moment moment = now();
        Pause pause(moment, clockRate_);
        std::vector<int> changed;
        for (const auto& [id, widget] : widgets_) {
            if (showEntryOf(*widget, moment)) changed.push_back(id);
            if (const auto entry = widget->nextEntryAfter(moment.shown)) pause.untilShown(*entry);
        }
        if (changed.empty()) {
            wait(lock, pause);
            continue;
        }
        lock.unlock();
        for (const int id : changed) surroundings_.changed(id);
        lock.lock();
    }
}

std::shared_ptr<WidgetSchedule::Widget> WidgetSchedule::nextReload(const Moment& now, Pause& pause) {
    std::shared_ptr<Widget> first;
    std::pair<platform::Instant, std::chrono::steady_clock::time_point> firstReady;
    for (const auto& [id, widget] : widgets_) {
        const std::optional<NextReload> next = widget->plan.next(now);
        if (!next) continue;
        if (!next->isReady(now)) {
            noteHold(*widget, *next, now);
            pause.until(next->at);
            continue;
        }
        // Together they may have been too much for it.
        if (widget->plan.failures() > 0 && next->requester != Requester::person && isKindBusy(widget->kind))
            continue;
        // The real clock tells those apart that became ready while the shown one stood still.
        const std::pair ready{next->at.shown, next->at.real};
        if (first && ready >= firstReady) continue;
        first = widget;
        firstReady = ready;
    }
    return first;
}

bool WidgetSchedule::isKindBusy(std::string_view kind) const {
    return std::ranges::any_of(widgets_, [kind](const auto& each) {
        return each.second->kind == kind && each.second->plan.isRunning();
    });
}

std::shared_ptr<WidgetSchedule::Widget> WidgetSchedule::nextWithoutPicture() const {
    for (const auto& [id, widget] : widgets_) {
        if (widget->needsPlaceholder && !widget->picture) return widget;
    }
    return nullptr;
}

Hold WidgetSchedule::holdOf(const NextReload& next) const {
    if (next.hold != Hold::none) return next.hold;
    return cameFree_ && next.isReady(*cameFree_) ? Hold::busy : Hold::none;
}

void WidgetSchedule::noteHold(Widget& widget, const NextReload& next, const Moment& now) {
    const std::pair hold{next.requester, next.due};
    if (next.hold == Hold::none || widget.notedHold == hold) return;
    widget.notedHold = hold;
    surroundings_.ledger.add({.widget = widget.id,
                              .kind = widget.kind,
                              .family = widget.family,
                              .requester = next.requester,
                              .due = next.due,
                              .decided = now.shown,
                              .result = LedgerEntry::Result::held,
                              .reason = reason(next.hold, mode_) + "; " + endOfHold(next, now)});
}

bool WidgetSchedule::showEntryOf(Widget& widget, const Moment& now) {
    const AnsweredEntry* entry = widget.entryAt(now.shown);
    if (entry == nullptr || (widget.picture && widget.picture->entryDate == entry->date)) return false;
    return show(widget, *entry, false);
}

bool WidgetSchedule::show(Widget& widget, const AnsweredEntry& entry, bool isPlaceholder) {
    if (!entry.view) return false;
    DrawnWidget drawn{*entry.view, widget.kind, widget.family, isPlaceholder};
    const bool isNew = !widget.picture || widget.picture->widget != drawn;
    auto picture = std::make_shared<ShownPicture>(ShownPicture{
        .version = isNew ? ++lastVersion_ : widget.picture->version,
        .widget = std::move(drawn),
        .entryJson = entry.json,
        .entryDate = entry.date,
        .since = surroundings_.clock.now(),
    });
    widget.picture = std::move(picture);
    return isNew;
}

void WidgetSchedule::showPlaceholder(const std::shared_ptr<Widget>& widget,
                                     std::unique_lock<std::mutex>& lock) {
    const int generation = widget->generation;
    widget->needsPlaceholder = false;
    lock.unlock();
    const auto answer = surroundings_.extension.ask({.kind = widget->kind,
                                                     .family = widget->family,
                                                     .request = EntryRequest::placeholder,
                                                     .wantsEntries = true,
                                                     .wantsViews = true},
                                                    placeholderLimit);
    lock.lock();
    if (generation != widget->generation || widget->isRemoved || widget->picture || !answer ||
        answer->entries.empty())
        return;
    if (!show(*widget, answer->entries.front(), true)) return;
    lock.unlock();
    surroundings_.changed(widget->id);
    lock.lock();
}

void WidgetSchedule::reload(const std::shared_ptr<Widget>& widget, std::unique_lock<std::mutex>& lock) {
    const Moment start = now();
    const NextReload next = widget->plan.next(start).value();
    widget->plan.start(start);
    widget->notedHold.reset();
    const int generation = widget->generation;
    const Hold hold = holdOf(next);
    const std::uint64_t number = surroundings_.ledger.add({.widget = widget->id,
                                                           .kind = widget->kind,
                                                           .family = widget->family,
                                                           .requester = next.requester,
                                                           .due = next.due,
                                                           .decided = start.shown,
                                                           .reason = pastReason(hold, mode_)});
    lock.unlock();
    surroundings_.changed(widget->id);
    const auto answer = surroundings_.extension.ask({.kind = widget->kind,
                                                     .family = widget->family,
                                                     .request = EntryRequest::timeline,
                                                     .wantsEntries = true,
                                                     .wantsViews = true},
                                                    timelineLimit);
    const long peak = surroundings_.extension.statistics().peakRssKiB;
    lock.lock();

    LedgerEntry::Result result = LedgerEntry::Result::failed;
    std::string trouble;
    if (generation != widget->generation || widget->isRemoved) {
        // Whoever forgot the pictures has asked anew; this answer is another user's.
        widget->plan.answered(platform::TimelineReloadPolicy::atEnd(), 1, start.shown, now());
        result = LedgerEntry::Result::dropped;
    } else if (!answer || answer->entries.empty()) {
        trouble = answer ? "the timeline has no entry" : answer.error().message;
        widget->plan.failed(now());
    } else {
        const auto last = std::ranges::max(answer->entries, {}, &AnsweredEntry::date).date;
        const auto policy = answer->policy.value_or(platform::TimelineReloadPolicy::atEnd());
        widget->entries = answer->entries;
        widget->policy = policy;
        widget->plan.answered(policy, answer->entries.size(), last, now());
        const AnsweredEntry* entry = widget->entryAt(surroundings_.clock.now());
        const bool isNew = entry != nullptr && show(*widget, *entry, false);
        result = isNew ? LedgerEntry::Result::shown : LedgerEntry::Result::unchanged;
    }
    widget->lastError = trouble;
    surroundings_.ledger.finish(number, result, std::move(trouble), millisecondsSince(start.real), peak);
    const bool isRemoved = widget->isRemoved;
    lock.unlock();
    wake_.notify_all();
    if (!isRemoved) surroundings_.changed(widget->id);
    lock.lock();
}

}  // namespace host
