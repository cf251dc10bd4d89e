#include "extension/theme/hex_codec.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include "platform/base/diagnostics.h"
#include "platform/text/letter_case.h"

namespace extension {
namespace {

using platform::Color;

/// Unicode's white space and line breaks.
constexpr std::string_view blanks[] = {" ",      "\t",     "\n",     "\v",     "\f",     "\r",     "\u0085",
                                       "\u00A0", "\u1680", "\u2000", "\u2001", "\u2002", "\u2003", "\u2004",
                                       "\u2005", "\u2006", "\u2007", "\u2008", "\u2009", "\u200A", "\u2028",
                                       "\u2029", "\u202F", "\u205F", "\u3000"};

/// The length of the blank that `text` starts with, or ends with; 0 for none.
std::size_t blankAt(std::string_view text, bool isAtEnd) {
    const auto* const found = std::ranges::find_if(blanks, [&](std::string_view blank) {
        return isAtEnd ? text.ends_with(blank) : text.starts_with(blank);
    });
    return found == std::end(blanks) ? 0 : found->size();
}

std::string_view withoutBlanks(std::string_view text) {
    while (const std::size_t size = blankAt(text, false)) text.remove_prefix(size);
    while (const std::size_t size = blankAt(text, true)) text.remove_suffix(size);
    return text;
}

/// Counts UTF-8 characters: the bytes that do not continue one.
std::size_t characterCount(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count_if(
        text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}

long channel(double component) { return std::lround(static_cast<float>(component * 255.0)); }

}  // namespace

Color colorFromHexString(std::optional<std::string_view> text) {
    return colorFromHexStringAndOpacity(text, 1.0);
}

Color colorFromHexStringAndOpacity(std::optional<std::string_view> text, double alpha) {
    if (!text) return Color::gray();
    // Upper case comes first, as it may be longer: one "ß" counts as two characters.
    const std::string upper = platform::upperCased(withoutBlanks(*text));
    std::string_view digits = upper;
    if (digits.starts_with('#')) digits.remove_prefix(1);
    if (characterCount(digits) != 6) return Color::gray();

    // Stops at the first character that is not a digit, and leaves 0 when there was no digit before it.
    std::uint32_t number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
    return Color::rgb((number >> 16 & 0xFF) / 255.0, (number >> 8 & 0xFF) / 255.0, (number & 0xFF) / 255.0,
                      alpha);
}

std::string hexString(const Color& color) {
    const auto components = color.components();
    if (components.empty()) return "#ffffff";
    if (components.size() < 3)
        platform::fatalError("the hex text of a colour with fewer than three components");

    // A component may be outside of 0 to 1, which makes the text longer.
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "#%02lX%02lX%02lX",
                  static_cast<unsigned long>(channel(components[0])),
                  static_cast<unsigned long>(channel(components[1])),
                  static_cast<unsigned long>(channel(components[2])));
    return text.data();
}

}  // namespace extension
