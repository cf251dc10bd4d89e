#pragma once

// Green for up, red for down: the colour of a direction or of a market's state.

#include <string_view>
#include "extension/app/settings/process_state.h"
#include "extension/theme/theme.h"
#include "platform/base/color.h"

namespace extension {

/// "1", "+1" and "OPEN" are up, "-1" and "CLOSED" down, "PRE" and "AFTER" amber ("#FF9D00"), and every
/// other text is the text colour. Exact comparison.
platform::Color getTheDirectionColor(std::string_view code, const Theme& theme);
/// In the current theme of the state, which is the process's own unless a caller names another. Selector
/// `getTheDirectionColor`, of a text.
platform::Color getTheDirectionColor(std::string_view code, ProcessState& state = ProcessState::shared());

}  // namespace extension
