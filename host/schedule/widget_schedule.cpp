#include "host/schedule/widget_schedule.h"
#include <algorithm>
#include <utility>

namespace host {
namespace {

constexpr std::chrono::seconds longestSleep{10};

}  // namespace

WidgetSchedule::WidgetSchedule(ExtensionProcess& extension, platform::Clock& clock, Ledger& ledger,
                               ReloadMode mode, std::function<void(int id)> changed)
    : extension_(extension),
      clock_(clock),
      changed_(std::move(changed)),
      keeper_(ledger, mode),
      thread_([this] { run(); }) {}

WidgetSchedule::~WidgetSchedule() {
    stopAsking();
    thread_.join();
}

Moment WidgetSchedule::now() const { return {clock_.now(), std::chrono::steady_clock::now()}; }

void WidgetSchedule::run() {
    std::unique_lock lock(mutex_);
    while (!isEnding_) {
        hasNews_ = false;
        const TimelineKeeper::Steps steps = keeper_.advance(now());
        unanswered_ += steps.questions.size();
        const auto hasWork = [this] { return hasNews_ || isEnding_; };
        if (!steps.questions.empty() || !steps.changed.empty()) {
            lock.unlock();
            for (const TimelineQuestion& question : steps.questions) ask(question);
            for (const int id : steps.changed) changed_(id);
            lock.lock();
        } else if (steps.pause) {
            // The system's clock may be set meanwhile, which wakes nobody.
            wake_.wait_for(lock, std::min<std::chrono::nanoseconds>(*steps.pause, longestSleep), hasWork);
        } else {
            wake_.wait(lock, hasWork);
        }
    }
    wake_.wait(lock, [this] { return unanswered_ == 0; });
}

void WidgetSchedule::ask(const TimelineQuestion& question) {
    extension_.ask(question.question, answerLimit(question.question.request),
                   [this, number = question.number](platform::Result<EntryAnswer> answer) {
                       const long peak = extension_.statistics().peakRssKiB;
                       change([&] {
                           --unanswered_;
                           keeper_.answered(number, std::move(answer), peak, now());
                       });
                   });
}

template <typename Change>
void WidgetSchedule::change(const Change& what) {
    const std::lock_guard lock(mutex_);
    what();
    hasNews_ = true;
    // With the lock held: the schedule may be gone as soon as it sees the last answer.
    wake_.notify_all();
}

void WidgetSchedule::stopAsking() {
    change([&] { isEnding_ = true; });
}

void WidgetSchedule::place(int id, std::string kind, platform::WidgetFamily family) {
    change([&] { keeper_.place(id, std::move(kind), family, now()); });
}

void WidgetSchedule::remove(int id) {
    change([&] { keeper_.remove(id); });
}

void WidgetSchedule::reload(int id, Requester requester) {
    change([&] { keeper_.reload(id, requester, now()); });
}

void WidgetSchedule::reload(std::optional<std::string_view> kind, Requester requester) {
    change([&] { keeper_.reload(kind, requester, now()); });
}

void WidgetSchedule::forget(std::string_view kind) {
    change([&] { keeper_.forget(kind, now()); });
}

ReloadMode WidgetSchedule::mode() const {
    const std::lock_guard lock(mutex_);
    return keeper_.mode();
}

void WidgetSchedule::setMode(ReloadMode mode) {
    change([&] { keeper_.setMode(mode); });
}

void WidgetSchedule::setClock(std::optional<platform::Instant> instant, double rate) {
    change([&] {
        if (instant) {
            clock_.set(*instant, rate);
        } else {
            clock_.followSystem();
        }
        clockRate_ = instant ? rate : 1.0;
        // After our own clock, so that no entry is ahead of our time. A child that does not take it now is
        // soon ended, and the next one is told when it starts.
        static_cast<void>(extension_.setClock(instant, rate));
        keeper_.clockSet(clockRate_, now());
    });
}

double WidgetSchedule::clockRate() const {
    const std::lock_guard lock(mutex_);
    return clockRate_;
}

std::optional<WidgetState> WidgetSchedule::state(int id) const {
    for (WidgetState& state : states()) {
        if (state.id == id) return std::move(state);
    }
    return std::nullopt;
}

std::vector<WidgetState> WidgetSchedule::states() const {
    const std::lock_guard lock(mutex_);
    return keeper_.states(now());
}

}  // namespace host
