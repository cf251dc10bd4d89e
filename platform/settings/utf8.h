#pragma once

// UTF-8, one code point at a time.

#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// The code point at `position`, which then moves past it. Nothing when the bytes there are not UTF-8, as
/// with overlong forms and surrogates; `position` stays.
std::optional<char32_t> nextCodePoint(std::string_view text, std::size_t& position);

/// `codePoint` is a Unicode scalar value.
void appendUtf8(std::string& text, char32_t codePoint);

bool isUtf8(std::string_view text);

}  // namespace platform
