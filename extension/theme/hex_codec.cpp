#include "extension/theme/hex_codec.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include "platform/base/fatal.h"

namespace extension {
namespace {

using platform::Color;

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\n\r\v\f";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// UTF-8 characters: bytes that continue none.
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
    std::string_view digits = trimmed(*text);
    if (digits.starts_with('#')) digits.remove_prefix(1);
    if (characterCount(digits) != 6) return Color::gray();

    // Stops at the first character that is no digit and leaves 0 when there was none before it.
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

    // A component may lie outside of 0 to 1, and its text is then longer.
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "#%02lX%02lX%02lX",
                  static_cast<unsigned long>(channel(components[0])),
                  static_cast<unsigned long>(channel(components[1])),
                  static_cast<unsigned long>(channel(components[2])));
    return text.data();
}

}  // namespace extension
