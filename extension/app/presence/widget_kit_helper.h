#pragma once

// Asks the home screen which of our widgets it has, and to reload them.

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include "extension/app/settings/process_state.h"

namespace extension {

/// The operations and properties by the names that the phone app knows, misspelt ones included. The presence
/// flags are in the state, which is the process's own unless a caller names another. Any thread.
class WidgetKitHelper {
public:
    static bool isWigetAdded(ProcessState& state = ProcessState::shared()) {
        return state.presence->get().isWigetAdded;
    }
    static void setIsWigetAdded(bool value, ProcessState& state = ProcessState::shared()) {
        state.presence->update([&](WidgetPresence& presence) { presence.isWigetAdded = value; });
    }
    static std::string widgetFamily(ProcessState& state = ProcessState::shared()) {
        return state.presence->get().widgetFamily;
    }
    static void setWidgetFamily(std::string_view value, ProcessState& state = ProcessState::shared()) {
        state.presence->update([&](WidgetPresence& presence) { presence.widgetFamily = value; });
    }
    static bool isNewsWidgetAdded(ProcessState& state = ProcessState::shared()) {
        return state.presence->get().isNewsWidgetAdded;
    }
    static void setIsNewsWidgetAdded(bool value, ProcessState& state = ProcessState::shared()) {
        state.presence->update([&](WidgetPresence& presence) { presence.isNewsWidgetAdded = value; });
    }
    static std::string newsWidgetFamily(ProcessState& state = ProcessState::shared()) {
        return state.presence->get().newsWidgetFamily;
    }
    static void setNewsWidgetFamily(std::string_view value, ProcessState& state = ProcessState::shared()) {
        state.presence->update([&](WidgetPresence& presence) { presence.newsWidgetFamily = value; });
    }
    static bool isPortfolioWigetAdded(ProcessState& state = ProcessState::shared()) {
        return state.presence->get().isPortfolioWigetAdded;
    }
    static void setIsPortfolioWigetAdded(bool value, ProcessState& state = ProcessState::shared()) {
        state.presence->update([&](WidgetPresence& presence) { presence.isPortfolioWigetAdded = value; });
    }
    static std::string portfolioWidgetFamily(ProcessState& state = ProcessState::shared()) {
        return state.presence->get().portfolioWidgetFamily;
    }
    static void setPortfolioWidgetFamily(std::string_view value,
                                         ProcessState& state = ProcessState::shared()) {
        state.presence->update([&](WidgetPresence& presence) { presence.portfolioWidgetFamily = value; });
    }

    /// Asks the home screen what is placed and notes the answer in the presence flags, then calls
    /// `completion` (if any) on the thread of the answer. A flag once set stays set; an error changes
    /// nothing. Returns at once; neither `state` nor its runtime need outlive the answer.
    static void getCurrentConfigurations(ProcessState& state = ProcessState::shared(),
                                         std::function<void()> completion = nullptr);
    /// Has the widgets of that kind reloaded, or all of them when there is no kind. Selector
    /// `reloadAllWidgets:`.
    static void reloadAllWidgets(std::optional<std::string_view> kind,
                                 ProcessState& state = ProcessState::shared());
    /// Drops the saved portfolio rows, so that the widget fetches afresh.
    static platform::Result<void> updatePortfolioArrayUserDefaults(
        ProcessState& state = ProcessState::shared());
};

}  // namespace extension
