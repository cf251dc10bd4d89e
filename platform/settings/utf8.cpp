#include "platform/settings/utf8.h"

#include <unicode/utf8.h>

#include <array>

namespace platform {

std::optional<char32_t> nextCodePoint(std::string_view text, std::size_t& position) {
    std::size_t after = position;
    UChar32 codePoint = 0;
    // NOLINTNEXTLINE(bugprone-inc-dec-in-conditions): the macro is the library's.
    U8_NEXT(text.data(), after, text.size(), codePoint);
    if (codePoint < 0) return std::nullopt;
    position = after;
    return static_cast<char32_t>(codePoint);
}

void appendUtf8(std::string& text, char32_t codePoint) {
    std::array<char, U8_MAX_LENGTH> bytes{};
    std::size_t length = 0;
    U8_APPEND_UNSAFE(bytes.data(), length, codePoint);
    text.append(bytes.data(), length);
}

bool isUtf8(std::string_view text) {
    for (std::size_t position = 0; position < text.size();) {
        if (!nextCodePoint(text, position)) return false;
    }
    return true;
}

}  // namespace platform
