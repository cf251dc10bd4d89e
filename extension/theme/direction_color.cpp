#include "extension/theme/direction_color.h"

#include "extension/theme/hex_codec.h"
#include "extension/theme/theme_manager.h"

namespace extension {

platform::Color getTheDirectionColor(std::string_view code, const Theme& theme) {
    if (code == "1" || code == "+1" || code == "OPEN") return theme.positiveDirectionColor();
    if (code == "-1" || code == "CLOSED") return theme.negativeDirectionColor();
    if (code == "PRE" || code == "AFTER") return colorFromHexString("#FF9D00");
    return theme.textColor();
}

platform::Color getTheDirectionColor(std::string_view code, ProcessState& state) {
    return getTheDirectionColor(code, *ThemeManager::currentTheme(state));
}

}  // namespace extension
