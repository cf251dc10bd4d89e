#pragma once

// Colours as "#RRGGBB" text, and back.

#include <optional>
#include <string>
#include <string_view>
#include "platform/base/color.h"

namespace extension {

/// "#2dc300", "2DC300" or "  #2dc300\n" as an opaque colour. The platform's gray for an absent text and
/// for any other length ("#FFF", "#FF9D00AA"). Digits count up to the first character that is not one:
/// "12G456" is 0x12. Selector `colorFromHexString:`.
platform::Color colorFromHexString(std::optional<std::string_view> text);

/// The same with an alpha of 0 to 1; gray stays opaque. Selector `colorFromHexStringAndOpacity:alpha:`.
platform::Color colorFromHexStringAndOpacity(std::optional<std::string_view> text, double alpha);

/// "#2DC300": upper case, without alpha; "#ffffff" for a colour without components. Fatal for a colour
/// with fewer than three components, such as the platform's gray.
std::string hexString(const platform::Color& color);

}  // namespace extension
