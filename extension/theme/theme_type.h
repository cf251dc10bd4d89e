#pragma once

// Light, dark or by the clock: the user's choice in the store, and what it means at this moment.

#include <cstdint>
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

}  // namespace extension
