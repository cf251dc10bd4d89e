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

/// The number that the whole text is ("-12"; no blanks, no leading "+"), if `Number` can hold it.
template <typename Number, typename... Base>
std::optional<Number> parsedNumber(std::string_view text, Base... base) {
    Number number{};
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number, base...);
    return error == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

/// `text` with its percent escapes decoded; a "%" that no two digits follow stays.
inline std::string percentDecoded(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool mayBeEscape = text[i] == '%' && i + 2 < text.size();
        const int high = mayBeEscape ? hexDigit(text[i + 1]) : -1;
        const int low = mayBeEscape ? hexDigit(text[i + 2]) : -1;
        const bool isEscape = high >= 0 && low >= 0;
        decoded += isEscape ? static_cast<char>(high * 16 + low) : text[i];
        if (isEscape) i += 2;
    }
    return decoded;
}

}  // namespace platform
