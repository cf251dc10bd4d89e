#pragma once

// Virtual time on one thread, and chance from a seed.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <random>
#include <utility>

namespace simulation {

using SteadyTime = std::chrono::steady_clock::time_point;

/// Runs work at its moment. Work at the same moment runs in the order in which it was given.
class Executor {
public:
    SteadyTime now() const { return now_; }

    void at(SteadyTime moment, std::function<void()> work) {
        work_.emplace(std::pair(std::max(moment, now_), ++count_), std::move(work));
    }
    void after(std::chrono::nanoseconds delay, std::function<void()> work) {
        at(now_ + delay, std::move(work));
    }

    /// Called whenever time has passed, before the work of the new moment.
    void whenTimePasses(std::function<void()> listener) { listener_ = std::move(listener); }

    /// False when nothing is left to do before `end`; it is then `end`.
    bool runNext(SteadyTime end) {
        if (work_.empty() || work_.begin()->first.first > end) {
            now_ = end;
            listener_();
            return false;
        }
        if (now_ != work_.begin()->first.first) {
            now_ = work_.begin()->first.first;
            listener_();
        }
        const std::function<void()> work = std::move(work_.begin()->second);
        work_.erase(work_.begin());
        work();
        return true;
    }
    std::size_t waiting() const { return work_.size(); }
    void clear() { work_.clear(); }

private:
    // Not at the epoch, which some code takes for "never".
    SteadyTime now_{std::chrono::hours(1000)};
    std::map<std::pair<SteadyTime, std::uint64_t>, std::function<void()>> work_;
    std::uint64_t count_ = 0;
    std::function<void()> listener_;
};

/// The same numbers on every machine.
class Random {
public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}

    std::uint64_t below(std::uint64_t limit) { return engine_() % limit; }
    bool happens(double probability) { return static_cast<double>(engine_() >> 11) * 0x1p-53 < probability; }
    /// Mostly short, sometimes ten times as long.
    std::chrono::milliseconds around(std::chrono::milliseconds usual) {
        const auto most = static_cast<std::uint64_t>(usual.count() * (happens(0.1) ? 20 : 2)) + 1;
        return std::chrono::milliseconds(below(most));
    }
    template <typename List>
    const auto& oneOf(const List& list) {
        return *std::next(std::begin(list), static_cast<std::ptrdiff_t>(below(std::size(list))));
    }

private:
    std::mt19937_64 engine_;
};

}  // namespace simulation
