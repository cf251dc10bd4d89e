#include "extension/theme/entry_theme.h"

#include "extension/theme/hex_codec.h"
#include "extension/theme/theme_type.h"

namespace extension {

EntryColors entryColors(const platform::Runtime& runtime) {
    const bool isDark = effectiveThemeType(runtime) == ThemeType::dark;
    return {.isDark = isDark,
            .background = colorFromHexString(isDark ? "#1A1A22" : "#ffffff"),
            .text = colorFromHexString(isDark ? "#ffffff" : "#000000"),
            .dateTime = colorFromHexString(isDark ? "#b4b4b4" : "#000000")};
}

}  // namespace extension
