#include "extension/theme/theme_type.h"

#include "extension/app/settings/reload_times.h"
#include "extension/app/settings/store_keys.h"
#include "extension/theme/hex_codec.h"
#include "platform/base/diagnostics.h"

namespace extension {
namespace {

/// The zone that decides, whatever the device's own.
platform::Calendar calendarOfIndia() {
    const auto zone = platform::timeZoneForAbbreviation("IST");
    if (!zone) platform::fatalError("there is no time zone IST");
    return platform::Calendar(*zone);
}

}  // namespace

ThemeType selectedThemeType(const platform::Runtime& runtime) {
    const auto defaults = sharedDefaults(runtime);
    if (!defaults) return ThemeType::dark;
    const auto stored = (*defaults)->object(keys::themeType);
    return stored ? themeTypeOf(platform::coercedInteger(*stored)) : ThemeType::dark;
}

ThemeType automaticThemeType(const platform::Runtime& runtime) {
    const platform::Calendar calendar = calendarOfIndia();
    const platform::Instant now = runtime.now();
    const auto morning = calendar.timeOnDay(now, dayBegins);
    const auto evening = calendar.timeOnDay(now, dayEnds);
    if (!morning || !evening) platform::fatalError("no 07:00 and 19:00 of today in India");
    return now < *morning || *evening < now ? ThemeType::dark : ThemeType::light;
}

ThemeType effectiveThemeType(const platform::Runtime& runtime) {
    const ThemeType selected = selectedThemeType(runtime);
    return selected == ThemeType::automatic ? automaticThemeType(runtime) : selected;
}

EntryColors entryColors(const platform::Runtime& runtime) {
    const bool isDark = effectiveThemeType(runtime) == ThemeType::dark;
    return {.isDark = isDark,
            .background = colorFromHexString(isDark ? "#1A1A22" : "#ffffff"),
            .text = colorFromHexString(isDark ? "#ffffff" : "#000000"),
            .dateTime = colorFromHexString(isDark ? "#b4b4b4" : "#000000")};
}

}  // namespace extension
