#pragma once

// Text of unknown origin on its way to a terminal.

#include <array>
#include <cstdio>
#include <string>
#include <string_view>

namespace platform {

/// Writes control characters as "\u001b", so that a terminal shows them instead of obeying them. Inside a
/// JSON text that means the same. Line breaks stay if `keepsLineBreaks`.
inline std::string terminalText(std::string_view text, bool keepsLineBreaks = false) {
    std::string shown;
    shown.reserve(text.size());
    const auto show = [&shown](unsigned character) {
        std::array<char, 8> escaped{};
        std::snprintf(escaped.data(), escaped.size(), "\\u%04x", character);
        shown += escaped.data();
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        // U+0080 to U+009F take two bytes in UTF-8.
        const bool isSecondSet =
            byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (isSecondSet) {
            show(static_cast<unsigned char>(text[++i]));
        } else if ((byte < 0x20 && !(keepsLineBreaks && byte == '\n')) || byte == 0x7F) {
            show(byte);
        } else {
            shown += text[i];
        }
    }
    return shown;
}

}  // namespace platform
