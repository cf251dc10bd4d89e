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
#include "extension/theme/hex_codec.h"
#include "extension/theme/theme.h"
#include "extension/theme/theme_type.h"
#include "platform/base/color.h"

namespace extension {

/// The operations by the names that the phone app knows. The choice and all colours are in the store shared
/// with the phone app, written together so that nobody ever reads half a palette; the current `Theme` is kept
/// in the state, which is the process's own unless a caller names another. Any thread.
class ThemeManager {
public:
    // The reverse of what the stored 0 and 1 look like: the phone app depends on both.
    static constexpr int lightThemeIdentifier = 0;
    static constexpr int darkThemeIdentifier = 1;
    static constexpr int autoThemeIdentifier = 2;
    static constexpr std::string_view currentAutoThemeTypeKey = keys::autoThemeType;

    /// The stored choice as a number from 0 to 3.
    static std::int64_t getCurrentSelectedThemeType(ProcessState& state = ProcessState::shared());
    /// Stores the choice (4 and more as 0), writes its palette and makes it the current theme. Selector
    /// `setCurrentSelectedThemeTypeWithType:`.
    static platform::Result<void> setCurrentSelectedThemeTypeWithType(
        std::int64_t type, ProcessState& state = ProcessState::shared());
    /// Dark when nothing was ever set; otherwise applies the stored choice again, so that an automatic one
    /// follows the clock of this moment.
    static platform::Result<void> setDefaultThemeIfNotSet(ProcessState& state = ProcessState::shared());
    /// 1 or 0, by the clock in India.
    static std::int64_t currentThemeForAutoMode(ProcessState& state = ProcessState::shared());
    /// 0 or 1: what is on display.
    static std::int64_t currentDisplayTheme(ProcessState& state = ProcessState::shared());
    /// As `currentDisplayTheme`, but 3 stays 3.
    static std::int64_t currentFinalSelectedThemeType(ProcessState& state = ProcessState::shared());
    /// "light" or "dark".
    static std::string_view currentDisplayThemeKey(ProcessState& state = ProcessState::shared());
    static std::string_view currentFinalDisplayThemeKey(ProcessState& state = ProcessState::shared());
    /// The palette that is in force; read from the store when it is first used.
    static std::shared_ptr<const Theme> currentTheme(ProcessState& state = ProcessState::shared());
    /// One of two hexadecimal texts as a colour: the first when the theme is dark. 3 takes the second.
    /// Selector `getThemeColorFromHexString:lightHex:`.
    static platform::Color getThemeColorFromHexString(std::optional<std::string_view> hex,
                                                      std::optional<std::string_view> lightHex,
                                                      ProcessState& state = ProcessState::shared());
    /// Selector `getColorHexValueWithColor:`; fatal for a colour with one or two components.
    static std::string getColorHexValueWithColor(const platform::Color& color) { return hexString(color); }
    /// Whether widgets are to be reloaded after a change of theme. Selector
    /// `setReloadWidgetExtensionWithReload:`.
    static platform::Result<void> setReloadWidgetExtensionWithReload(
        bool reload, ProcessState& state = ProcessState::shared());
    static bool getReloadWidgetExtension(ProcessState& state = ProcessState::shared());

    /// For the phone app's views, which set it and are told; choosing a theme leaves it as it is.
    Observable<std::int64_t> currentSelectedThemeType{0};
};

/// Green for up ("1", "+1", "OPEN"), red for down ("-1", "CLOSED"), amber "#FF9D00" for "PRE" and "AFTER",
/// and the text colour for every other text, in the current theme of the state. Exact comparison. Selector
/// `getTheDirectionColor`, of a text.
platform::Color getTheDirectionColor(std::string_view code, ProcessState& state = ProcessState::shared());

}  // namespace extension
