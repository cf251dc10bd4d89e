#pragma once

// Runs tasks one after another on a thread of their own.

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace platform {

/// Any thread may add tasks. Tasks must not throw.
class SerialQueue {
public:
    SerialQueue() : thread_([this] { work(); }) {}
    /// Waits for the running task; tasks that have not begun are dropped.
    ~SerialQueue() {
        {
            const std::lock_guard lock(mutex_);
            isEnding_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }

    void add(std::function<void()> task) {
        {
            const std::lock_guard lock(mutex_);
            tasks_.push_back(std::move(task));
        }
        changed_.notify_all();
    }

    /// Waits until every task has run. A task must not call it.
    void finish() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return tasks_.empty() && !isBusy_; });
    }

private:
    void work() {
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait(lock, [this] { return isEnding_ || !tasks_.empty(); });
            if (isEnding_) return;
            {
                const std::function<void()> task = std::move(tasks_.front());
                tasks_.pop_front();
                isBusy_ = true;
                lock.unlock();
                task();
            }
            lock.lock();
            isBusy_ = false;
            changed_.notify_all();
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> tasks_;
    bool isBusy_ = false;
    bool isEnding_ = false;
    // Last, so that it starts after everything else is ready.
    std::thread thread_;
};

}  // namespace platform
