#pragma once

// Light, dark or by the clock: the user's choice in the store, what it means at this moment, and the colours
// that a timeline entry of this moment takes.

#include <cstdint>
#include "platform/base/color.h"
#include "platform/runtime/runtime.h"

namespace extension {

/// The stored numbers.
enum class ThemeType : std::int64_t {
    dark = 0,
    light = 1,
    /// Light by day and dark by night, in India.
    automatic = 2,
    /// Can be chosen, but has no palette: the colours in the store stay as they are.
    unpainted = 3,
};

/// The theme of a number; dark for every number that has none.
constexpr ThemeType themeTypeOf(std::int64_t number) {
    return number >= 0 && number <= 3 ? static_cast<ThemeType>(number) : ThemeType::dark;
}

/// The stored choice; dark when there is none or the store cannot be read.
ThemeType selectedThemeType(const platform::Runtime& runtime);

/// Light from 07:00:00 up to and including 19:00:00 of the present day in India, whatever the device's
/// own zone, else dark. Fatal when that zone is not known.
ThemeType automaticThemeType(const platform::Runtime& runtime);

/// The stored choice with automatic resolved by the clock: dark, light or unpainted.
ThemeType effectiveThemeType(const platform::Runtime& runtime);

struct EntryColors {
    bool isDark = true;
    platform::Color background;
    platform::Color text;
    platform::Color dateTime;
};

/// For an entry that is made now: by the stored choice, and by the clock in India when the choice is
/// automatic. A store that is empty or cannot be read gives the dark colours. Any thread.
EntryColors entryColors(const platform::Runtime& runtime);

}  // namespace extension
