#pragma once

// Asks the home screen which of our widgets it has, and to reload them.

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include "extension/app/settings/process_state.h"

namespace extension {

/// Asks the home screen what is placed and notes the answer in the state's presence flags, then calls
/// `completion` (if any) on the thread of the answer. A flag once set stays set; an error changes nothing.
/// Returns at once; `state` and its runtime need not outlive the answer.
void queryPlacedWidgets(ProcessState& state, std::function<void()> completion = nullptr);

/// Asks for a reload of the widgets of that kind, or of all widgets without a kind.
void reloadWidgets(const platform::Runtime& runtime, std::optional<std::string_view> kind);

/// Drops the saved portfolio rows, so that the widget fetches new ones.
platform::Result<void> removeSavedPortfolioRows(const platform::Runtime& runtime);

/// The operations and properties by the names that the phone app knows, misspelt ones included.
class WidgetKitHelper {
public:
    static bool isWigetAdded();
    static void setIsWigetAdded(bool value);
    static std::string widgetFamily();
    static void setWidgetFamily(std::string value);
    static bool isNewsWidgetAdded();
    static void setIsNewsWidgetAdded(bool value);
    static std::string newsWidgetFamily();
    static void setNewsWidgetFamily(std::string value);
    static bool isPortfolioWigetAdded();
    static void setIsPortfolioWigetAdded(bool value);
    static std::string portfolioWidgetFamily();
    static void setPortfolioWidgetFamily(std::string value);

    static void getCurrentConfigurations();
    /// Selector `reloadAllWidgets:`.
    static void reloadAllWidgets(std::optional<std::string_view> kind);
    static void updatePortfolioArrayUserDefaults();
};

}  // namespace extension
