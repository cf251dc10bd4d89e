#pragma once

// Waiting for answers that come on another thread.

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>
#include "platform/widget/timeline.h"

namespace tests {

inline constexpr std::chrono::seconds patience{30};

/// A box for one answer. `taker()` is the completion to hand out; a second call of it throws.
template <typename T>
class Awaited {
public:
    auto taker() {
        return [promise = promise_](T value) { promise->set_value(std::move(value)); };
    }

    /// Waits for the answer; throws when there is none for very long.
    T value() {
        if (future_.wait_for(patience) != std::future_status::ready) {
            throw std::runtime_error("no answer");
        }
        return future_.get();
    }

    bool isThere() const { return future_.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }

private:
    std::shared_ptr<std::promise<T>> promise_ = std::make_shared<std::promise<T>>();
    std::future<T> future_ = promise_->get_future();
};

/// What `provider` (a value or an lvalue) answers when it is asked for a timeline. `meanwhile` is called
/// between the question and the answer.
template <typename Provider>
auto timelineOf(Provider&& provider, const auto& meanwhile) {
    Awaited<platform::Timeline<typename std::remove_reference_t<Provider>::Entry>> timeline;
    provider.getTimeline({}, timeline.taker());
    meanwhile();
    return timeline.value();
}

template <typename Provider>
auto timelineOf(Provider&& provider) {
    return timelineOf(provider, [] {});
}

template <typename Provider>
auto snapshotOf(Provider&& provider) {
    Awaited<typename std::remove_reference_t<Provider>::Entry> entry;
    provider.getSnapshot({}, entry.taker());
    return entry.value();
}

}  // namespace tests
