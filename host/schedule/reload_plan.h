#pragma once

// When one placed widget may be asked for its next timeline: the host's rules, free of clocks and threads.

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include "platform/base/clock.h"
#include "platform/widget/timeline.h"

namespace host {

/// *Live* honours the asked date, but for a floor; *phone* gives a widget as few reloads as a phone does.
enum class ReloadMode { live, phone };

/// Who asks for a reload.
enum class Requester {
    placement,  // it was just placed
    policy,     // its own timeline
    app,        // the phone app
    person,     // somebody at the home screen
    clock,      // the time was set
};

/// What keeps a reload from happening when it is due.
enum class Hold { none, floor, budget, backOff, busy };

std::string_view description(ReloadMode mode);
std::string_view description(Requester requester);
/// A reason for people, while it holds: "waiting after a failure".
std::string reason(Hold hold, ReloadMode mode);
/// The same once it is over: "had waited after a failure".
std::string pastReason(Hold hold, ReloadMode mode);

/// One moment on two clocks: the one that the widgets see, which people may stop and set, and the real
/// one, by which failures are counted.
struct Moment {
    platform::Instant shown;
    std::chrono::steady_clock::time_point real;
};

struct NextReload {
    Requester requester = Requester::policy;
    /// When it was asked for.
    platform::Instant due;
    /// When it may happen, on both clocks: the later of the two counts.
    Moment at;
    Hold hold = Hold::none;

    bool isReady(const Moment& now) const { return at.shown <= now.shown && at.real <= now.real; }
};

/// The reloads of one placed widget: what it asked for, what it was granted. Not for several threads.
class ReloadPlan {
public:
    static constexpr std::chrono::seconds liveFloor{5};
    static constexpr std::chrono::minutes phoneFloor{15};
    /// A phone gives the day's budget out over the day: a reload every half hour, of which those of six
    /// hours may be saved up. So no day of 24 hours has more than 60.
    static constexpr std::chrono::minutes phoneShare{30};
    static constexpr std::chrono::hours phoneSavings{6};
    static_assert((std::chrono::hours(24) + phoneSavings) / phoneShare == 60);
    /// After which a timeline of one entry that asks to be renewed at its end is renewed.
    static constexpr std::chrono::minutes singleEntryStay{15};
    static constexpr std::chrono::seconds longestBackOff{300};

    explicit ReloadPlan(ReloadMode mode) : mode_(mode) {}

    ReloadMode mode() const { return mode_; }
    void setMode(ReloadMode mode) { mode_ = mode; }

    /// Several requests before the next start are one. One that comes while an answer is awaited is kept for
    /// afterwards: the answer may rest on what is no longer true.
    void ask(Requester requester, const Moment& now);
    /// The time was set: the floor and the budget count from now on.
    void clockMoved();

    /// Nothing while an answer is awaited, or when nobody asks. Only the timeline's own requests are held and
    /// cost budget; in live mode there is no budget. The hold is still named when it is over, so that the
    /// ledger can say what was waited for.
    std::optional<NextReload> next(const Moment& now) const;

    /// The reload that `next` described begins.
    void start(const Moment& now);
    /// It ended well. `entries` counts the timeline's entries, of which `last` is the latest date.
    void answered(const platform::TimelineReloadPolicy& policy, std::size_t entries, platform::Instant last,
                  const Moment& now);
    /// The extension died, was too late or made no sense. 1, 2, 4 up to 300 s of real time pass before the
    /// timeline is asked for again, unless somebody else asks.
    void failed(const Moment& now);

    bool isRunning() const { return isRunning_; }
    int failures() const { return failures_; }

private:
    ReloadMode mode_;
    bool isRunning_ = false;
    int failures_ = 0;
    platform::Instant failedAt_;
    std::chrono::steady_clock::time_point backOffEnd_;
    struct Request {
        Requester requester;
        Moment at;
        bool cameDuringAnother;
    };
    std::optional<Request> request_;
    std::optional<platform::Instant> policyDue_;
    std::optional<platform::Instant> lastStart_;
    /// The end of the latest share that was taken; ahead of the time while saved ones are used.
    std::optional<platform::Instant> takenUntil_;
};

}  // namespace host
