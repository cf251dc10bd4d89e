#include "extension/theme/entry_theme.h"

#include "extension/theme/theme_type.h"

namespace extension {

bool isDarkTheme(const platform::Runtime& runtime) { return effectiveThemeType(runtime) == ThemeType::dark; }

}  // namespace extension
