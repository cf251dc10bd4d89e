#pragma once

// Letters, digits and blanks of ASCII, whatever the locale.

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

constexpr char asciiLowerCased(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// Leaves every byte that is not an ASCII letter as it is.
inline std::string asciiLowerCased(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](char letter) { return asciiLowerCased(letter); });
    return lower;
}

constexpr bool equalsIgnoringAsciiCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(
        a, b, [](char first, char second) { return asciiLowerCased(first) == asciiLowerCased(second); });
}

/// `text` without the blanks at both ends.
constexpr std::string_view trimmed(std::string_view text, std::string_view blanks = " \t\r\n") {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// The value of a hexadecimal digit in either case; -1 for any other character.
constexpr int hexDigit(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    const char lower = asciiLowerCased(digit);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// The whole text as a number ("-12"; no blanks, no leading "+"); nothing when `Number` cannot hold it.
template <typename Number, typename... Base>
std::optional<Number> parsedNumber(std::string_view text, Base... base) {
    Number number{};
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number, base...);
    return error == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

}  // namespace platform
