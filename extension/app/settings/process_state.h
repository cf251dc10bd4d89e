#pragma once

// What a process keeps in memory between its requests. None of it is stored.

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include "platform/runtime/runtime.h"

namespace extension {

class Theme;

/// A value that any thread may read and replace.
template <typename T>
class Guarded {
public:
    T get() const {
        const std::lock_guard lock(mutex_);
        return value_;
    }
    void set(T value) {
        const std::lock_guard lock(mutex_);
        value_ = std::move(value);
    }
    /// Calls `change` with the value while nobody else can touch it; answers what `change` answers.
    template <typename Change>
    auto update(Change&& change) {
        const std::lock_guard lock(mutex_);
        return std::forward<Change>(change)(value_);
    }

private:
    mutable std::mutex mutex_;
    T value_{};
};

/// Which widgets were on the home screen when it was last asked, and the size of the first of each kind
/// ("systemSmall"; empty when the home screen did not say). What was seen once stays true.
struct WidgetPresence {
    bool isWigetAdded = false;
    std::string widgetFamily;
    bool isNewsWidgetAdded = false;
    std::string newsWidgetFamily;
    bool isPortfolioWigetAdded = false;
    std::string portfolioWidgetFamily;

    bool operator==(const WidgetPresence&) const = default;
};

/// The process-wide values of the classes that are published to the phone app. A process has one; a test
/// makes its own. `runtime` must outlive it.
struct ProcessState {
    explicit ProcessState(const platform::Runtime& ownRuntime) : runtime(ownRuntime) {}
    ProcessState(const ProcessState&) = delete;
    ProcessState& operator=(const ProcessState&) = delete;

    const platform::Runtime& runtime;

    Guarded<std::optional<std::string>> appleEmailId;
    Guarded<std::optional<std::string>> storylyURL;
    /// Shared with queries under way, since an answer may come when this object is gone.
    const std::shared_ptr<Guarded<WidgetPresence>> presence = std::make_shared<Guarded<WidgetPresence>>();
    /// Null until it is first read.
    Guarded<std::shared_ptr<const Theme>> currentTheme;

    /// The one of this process, made when it is first used. Only one-line doors call it.
    static ProcessState& shared() {
        static ProcessState state(platform::Runtime::process());
        return state;
    }
};

}  // namespace extension
