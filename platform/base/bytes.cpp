#include "platform/base/bytes.h"

#include <array>
#include <cstdint>

namespace platform {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<std::int8_t, 256> makeReverseAlphabet() {
    std::array<std::int8_t, 256> reverse{};
    for (auto& value : reverse) value = -1;
    for (std::size_t i = 0; i < alphabet.size(); ++i)
        reverse[static_cast<unsigned char>(alphabet[i])] = static_cast<std::int8_t>(i);
    return reverse;
}

constexpr std::array<std::int8_t, 256> reverseAlphabet = makeReverseAlphabet();

}  // namespace

std::string base64Encoded(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        for (std::size_t k = 0; k < 4; ++k) {
            const bool isPadding = i + k > bytes.size();
            text += isPadding ? '=' : alphabet[group >> (18 - 6 * k) & 0x3F];
        }
    }
    return text;
}

std::optional<std::string> base64Decoded(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    for (std::size_t i = 0; i < text.size(); i += 4) {
        const bool isLast = i + 4 == text.size();
        std::size_t padding = 0;
        if (isLast && text[i + 3] == '=') padding = text[i + 2] == '=' ? 2 : 1;
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            const bool isPadding = k >= 4 - padding;
            const int value = isPadding ? 0 : reverseAlphabet[static_cast<unsigned char>(text[i + k])];
            if (value < 0) return std::nullopt;
            group = group << 6 | static_cast<std::uint32_t>(value);
        }
        for (std::size_t k = 0; k < 3 - padding; ++k)
            bytes += static_cast<char>(group >> (16 - 8 * k) & 0xFF);
    }
    return bytes;
}

}  // namespace platform
