#pragma once

// A value that tells others when it is set.

#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace extension {

/// Any thread.
template <typename T>
class Observable {
public:
    using Observer = std::function<void(const T&)>;

    /// Observes until it is destroyed or told to stop. It may outlive the value.
    class Observation {
    public:
        explicit Observation(std::shared_ptr<const Observer> observer) : observer_(std::move(observer)) {}
        Observation(Observation&&) noexcept = default;
        Observation& operator=(Observation&&) noexcept = default;

        void stopObserving() { observer_.reset(); }

    private:
        std::shared_ptr<const Observer> observer_;
    };

    explicit Observable(T value) : value_(std::move(value)) {}

    T get() const {
        const std::lock_guard lock(mutex_);
        return value_;
    }

    /// Calls every observer on this thread, also when the value stays the same.
    void set(const T& value) {
        std::vector<std::weak_ptr<const Observer>> observers;
        {
            const std::lock_guard lock(mutex_);
            value_ = value;
            std::erase_if(observers_, [](const auto& observer) { return observer.expired(); });
            observers = observers_;
        }
        for (const auto& each : observers) {
            if (const auto observer = each.lock()) (*observer)(value);
        }
    }

    [[nodiscard]] Observation observe(Observer observer) {
        auto shared = std::make_shared<const Observer>(std::move(observer));
        const std::lock_guard lock(mutex_);
        observers_.push_back(shared);
        return Observation(std::move(shared));
    }

private:
    mutable std::mutex mutex_;
    T value_;
    std::vector<std::weak_ptr<const Observer>> observers_;
};

}  // namespace extension
