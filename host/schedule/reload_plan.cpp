#include "host/schedule/reload_plan.h"
#include <algorithm>
#include <array>

namespace host {

using platform::Instant;

std::string_view description(ReloadMode mode) { return mode == ReloadMode::live ? "live" : "phone"; }

std::string_view description(Requester requester) {
    static constexpr std::array names{"placement", "policy", "app", "person", "clock"};
    return names.at(static_cast<std::size_t>(requester));
}

std::string reason(Hold hold, ReloadMode mode) {
    switch (hold) {
        case Hold::none: return "";
        case Hold::floor: return mode == ReloadMode::live ? "at least 5 s apart" : "at least 15 min apart";
        case Hold::budget: return "the budget of 60 a day is given out over the day";
        case Hold::backOff: return "waiting after a failure";
        case Hold::busy: return "the extension was busy";
    }
    return "";
}

std::string pastReason(Hold hold, ReloadMode mode) {
    switch (hold) {
        case Hold::none: return "";
        case Hold::floor: return "kept " + reason(hold, mode);
        case Hold::budget: return "had waited for its share of 60 a day";
        case Hold::backOff: return "had waited after a failure";
        case Hold::busy: return reason(hold, mode);
    }
    return "";
}

void ReloadPlan::ask(Requester requester, const Moment& now) {
    // A person's word weighs most: nothing holds it.
    if (!request_ || requester == Requester::person) request_ = Request{requester, now, isRunning_};
}

void ReloadPlan::clockMoved() {
    lastStart_.reset();
    takenUntil_.reset();
}

std::optional<NextReload> ReloadPlan::next(const Moment& now) const {
    if (isRunning_) return std::nullopt;
    if (request_) {
        const auto& [requester, asked, cameDuringAnother] = *request_;
        return NextReload{requester,
                          asked.shown,
                          {std::min(asked.shown, now.shown), asked.real},
                          cameDuringAnother ? Hold::busy : Hold::none};
    }
    if (failures_ > 0) {
        return NextReload{
            Requester::policy, failedAt_, {std::min(failedAt_, now.shown), backOffEnd_}, Hold::backOff};
    }
    if (!policyDue_) return std::nullopt;

    NextReload next{Requester::policy, *policyDue_, {*policyDue_, {}}, Hold::none};
    const auto holdUntil = [&next](Instant moment, Hold hold) {
        if (moment <= next.at.shown) return;
        next.at.shown = moment;
        next.hold = hold;
    };
    const std::chrono::seconds floor = mode_ == ReloadMode::live ? liveFloor : phoneFloor;
    if (lastStart_) holdUntil(*lastStart_ + floor, Hold::floor);
    if (mode_ == ReloadMode::phone && takenUntil_) holdUntil(*takenUntil_ - phoneSavings, Hold::budget);
    return next;
}

void ReloadPlan::start(const Moment& now) {
    const bool isCharged = mode_ == ReloadMode::phone && !request_ && failures_ == 0;
    isRunning_ = true;
    request_.reset();
    lastStart_ = now.shown;
    if (isCharged) takenUntil_ = std::max(takenUntil_.value_or(now.shown), now.shown) + phoneShare;
}

void ReloadPlan::answered(const platform::TimelineReloadPolicy& policy, std::size_t entries, Instant last,
                          const Moment& now) {
    isRunning_ = false;
    failures_ = 0;
    if (policy.kind == platform::TimelineReloadPolicy::Kind::after) {
        policyDue_ = policy.date;
    } else {
        policyDue_ = entries > 1 ? std::max(last, now.shown) : now.shown + singleEntryStay;
    }
}

void ReloadPlan::failed(const Moment& now) {
    isRunning_ = false;
    const auto pause =
        std::min<std::chrono::seconds>(std::chrono::seconds(1 << std::min(failures_, 9)), longestBackOff);
    failedAt_ = now.shown;
    backOffEnd_ = now.real + pause;
    ++failures_;
}

}  // namespace host
