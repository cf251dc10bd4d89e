#pragma once

// The settings store that the phone app and its widgets share: its suite and its keys. Also the key names
// that the phone app reads by class, and two texts that it leaves here for as long as the process lives.

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include "extension/app/settings/process_state.h"
#include "platform/base/result.h"
#include "platform/runtime/runtime.h"
#include "platform/settings/user_defaults.h"

namespace extension {

namespace keys {

// The suite, and two key names. The phone app reads the three under exactly these names.
inline constexpr std::string_view GROUP_TODAY_EXTENSION = "group.shareWithTodayExtension";
inline constexpr std::string_view refresh_rate = "refresh_rate";
inline constexpr std::string_view reloadWidgetOnThemeChange = "reloadWidgetOnThemeChange";

// The chosen assets: arrays of dictionaries.
inline constexpr std::string_view futureWidget = "FUTURE_WIDGET";
inline constexpr std::string_view indicesWidget = "INDICES_WIDGET";
inline constexpr std::string_view stockWidget = "STOCK_WIDGET";
inline constexpr std::string_view cryptoWidget = "CRYPTO_WIDGET";
inline constexpr std::string_view firstTimeAppInstalledForWidget = "firstTimeAppInstalledForWidget";

// The session, the address of the user's portfolio, and the rows of the last answer.
inline constexpr std::string_view token = "token";
inline constexpr std::string_view userId = "userId";
inline constexpr std::string_view userPortfolio = "userPortfolio";
inline constexpr std::string_view portfolioArray = "portfolioArray";

// An archived dictionary, and its entry that replaces the news feed's address.
inline constexpr std::string_view extraLinks = "extra_links";
inline constexpr std::string_view newsWidgetApiUrl = "newsWidgetApiUrl";

inline constexpr std::string_view themeType = "ThemeType";
inline constexpr std::string_view autoThemeType = "AutoThemeType";
inline constexpr std::string_view isThemeTypeSet = "IsThemeTypeSet";

}  // namespace keys

/// The store shared with the phone app. Any thread.
inline platform::Result<std::shared_ptr<platform::UserDefaults>> sharedDefaults(
    const platform::Runtime& runtime) {
    return runtime.defaults(keys::GROUP_TODAY_EXTENSION);
}

class KeyConstants {
public:
    static constexpr std::string_view GROUP_TODAY_EXTENSION = keys::GROUP_TODAY_EXTENSION;
    static constexpr std::string_view refresh_rate = keys::refresh_rate;
    static constexpr std::string_view reloadWidgetOnThemeChange = keys::reloadWidgetOnThemeChange;

    // In memory only, absent until they are set. Any thread.
    static std::optional<std::string> appleEmailId(ProcessState& state = ProcessState::shared()) {
        return state.appleEmailId.get();
    }
    static void setAppleEmailId(std::optional<std::string_view> value,
                                ProcessState& state = ProcessState::shared()) {
        state.appleEmailId.set(std::optional<std::string>(value));
    }
    static std::optional<std::string> storylyURL(ProcessState& state = ProcessState::shared()) {
        return state.storylyURL.get();
    }
    static void setStorylyURL(std::optional<std::string_view> value,
                              ProcessState& state = ProcessState::shared()) {
        state.storylyURL.set(std::optional<std::string>(value));
    }
};

}  // namespace extension
