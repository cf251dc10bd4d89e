#pragma once

// From moments on two clocks to a time that a thread can sleep.

#include <algorithm>
#include <chrono>
#include <optional>
#include "host/schedule/reload_plan.h"

namespace host {

/// How long to wait for the earliest of several moments.
class Pause {
public:
    /// `clockRate`: of the shown clock, beside the real one; 0 when it stands still.
    Pause(const Moment& now, double clockRate) : now_(now), clockRate_(clockRate) {}

    /// Absent: until something happens.
    std::optional<std::chrono::nanoseconds> duration() const { return duration_; }

    void untilShown(platform::Instant moment) {
        if (clockRate_ <= 0.0) return;
        const auto rest = static_cast<double>((moment - now_.shown).count()) / clockRate_;
        add(std::chrono::nanoseconds(static_cast<long long>(rest)));
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
        const auto bounded = std::clamp<std::chrono::nanoseconds>(duration, std::chrono::milliseconds(1),
                                                                  std::chrono::hours(1));
        duration_ = std::min(duration_.value_or(bounded), bounded);
    }

    Moment now_;
    double clockRate_;
    std::optional<std::chrono::nanoseconds> duration_;
};

}  // namespace host
