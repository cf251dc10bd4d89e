#pragma once

// Key names that the phone app reads here, and two texts that it leaves here for as long as the process
// lives.

#include <optional>
#include <string>
#include <string_view>
#include "extension/app/settings/process_state.h"
#include "extension/app/settings/store_keys.h"

namespace extension {

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
