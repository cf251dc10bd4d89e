#pragma once

// The theme as the phone app chooses, applies and asks for it.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include "extension/app/settings/observable.h"
#include "extension/app/settings/process_state.h"
#include "extension/app/settings/store_keys.h"
#include "extension/theme/theme.h"
#include "extension/theme/theme_type.h"
#include "platform/base/color.h"

namespace extension {

/// Chooses and applies themes. The choice and all colours stand in the store shared with the phone app,
/// written together so that nobody ever reads half a palette; the current `Theme` is kept in the process's
/// state. Any thread.
class ThemeService {
public:
    /// `state` must outlive the service.
    explicit ThemeService(ProcessState& state) : state_(state) {}

    /// The stored choice as a number from 0 to 3.
    std::int64_t selectedThemeType() const;
    /// Stores the choice (4 and more as 0), writes its palette and makes it the current theme.
    platform::Result<void> setSelectedThemeType(std::int64_t number);
    /// Dark when nothing was ever set; otherwise applies the stored choice again, so that an automatic one
    /// follows the clock of this moment.
    platform::Result<void> setDefaultThemeIfNotSet();

    /// 1 or 0, by the clock in India.
    std::int64_t themeForAutoMode() const;
    /// 0 or 1: what is on display.
    std::int64_t displayTheme() const;
    /// As `displayTheme`, but 3 stays 3.
    std::int64_t finalSelectedThemeType() const;
    /// "light" or "dark".
    std::string_view displayThemeKey() const;

    /// The palette that is in force; read from the store when it is first used.
    std::shared_ptr<const Theme> currentTheme();

    /// One of two hexadecimal texts as a colour: the first when the theme is dark. 3 takes the second.
    platform::Color themeColor(std::optional<std::string_view> darkHex,
                               std::optional<std::string_view> lightHex) const;

    /// Whether widgets are to be reloaded after a change of theme.
    platform::Result<void> setReloadsWidgets(bool reload);
    bool reloadsWidgets() const;

private:
    /// Makes the colours that the store holds now the current theme.
    void readCurrentTheme();

    ProcessState& state_;
};

/// The operations by the names that the phone app knows.
class ThemeManager {
public:
    // The reverse of what the stored 0 and 1 look like: the phone app depends on both.
    static constexpr int lightThemeIdentifier = 0;
    static constexpr int darkThemeIdentifier = 1;
    static constexpr int autoThemeIdentifier = 2;
    static constexpr std::string_view currentAutoThemeTypeKey = keys::autoThemeType;

    static std::int64_t getCurrentSelectedThemeType();
    /// Selector `setCurrentSelectedThemeTypeWithType:`.
    static void setCurrentSelectedThemeTypeWithType(std::int64_t type);
    static void setDefaultThemeIfNotSet();
    static std::int64_t currentThemeForAutoMode();
    static std::int64_t currentDisplayTheme();
    static std::int64_t currentFinalSelectedThemeType();
    static std::string_view currentDisplayThemeKey();
    static std::string_view currentFinalDisplayThemeKey();
    static std::shared_ptr<const Theme> currentTheme();
    /// Selector `getThemeColorFromHexString:lightHex:`.
    static platform::Color getThemeColorFromHexString(std::optional<std::string_view> hex,
                                                      std::optional<std::string_view> lightHex);
    /// Selector `getColorHexValueWithColor:`; fatal for a colour with one or two components.
    static std::string getColorHexValueWithColor(const platform::Color& color);
    /// Selector `setReloadWidgetExtensionWithReload:`.
    static void setReloadWidgetExtensionWithReload(bool reload);
    static bool getReloadWidgetExtension();

    /// For the phone app's views, which set it and are told; choosing a theme leaves it as it is.
    Observable<std::int64_t> currentSelectedThemeType{0};
};

}  // namespace extension
