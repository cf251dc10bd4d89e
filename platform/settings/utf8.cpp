#include "platform/settings/utf8.h"

namespace platform {
namespace {

struct Lead {
    int length = 0;
    char32_t bits = 0;
    char32_t smallest = 0;
};

Lead readLead(unsigned char byte) {
    if (byte < 0x80) return {1, byte, 0};
    if (byte >= 0xC2 && byte < 0xE0) return {2, byte & 0x1FU, 0x80};
    if (byte >= 0xE0 && byte < 0xF0) return {3, byte & 0x0FU, 0x800};
    if (byte >= 0xF0 && byte < 0xF5) return {4, byte & 0x07U, 0x10000};
    return {};
}

char continuation(char32_t codePoint, int shift) {
    return static_cast<char>(0x80 | (codePoint >> shift & 0x3F));
}

}  // namespace

std::optional<char32_t> nextCodePoint(std::string_view text, std::size_t& position) {
    const Lead lead = readLead(static_cast<unsigned char>(text[position]));
    const auto length = static_cast<std::size_t>(lead.length);
    if (length == 0 || text.size() - position < length) return std::nullopt;
    char32_t codePoint = lead.bits;
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[position + i]);
        if ((byte & 0xC0) != 0x80) return std::nullopt;
        codePoint = codePoint << 6 | (byte & 0x3FU);
    }
    const bool isSurrogate = codePoint >= 0xD800 && codePoint < 0xE000;
    if (codePoint < lead.smallest || codePoint > 0x10FFFF || isSurrogate) return std::nullopt;
    position += length;
    return codePoint;
}

void appendUtf8(std::string& text, char32_t codePoint) {
    if (codePoint < 0x80) {
        text += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        text += static_cast<char>(0xC0 | codePoint >> 6);
        text += continuation(codePoint, 0);
    } else if (codePoint < 0x10000) {
        text += static_cast<char>(0xE0 | codePoint >> 12);
        text += continuation(codePoint, 6);
        text += continuation(codePoint, 0);
    } else {
        text += static_cast<char>(0xF0 | codePoint >> 18);
        text += continuation(codePoint, 12);
        text += continuation(codePoint, 6);
        text += continuation(codePoint, 0);
    }
}

bool isUtf8(std::string_view text) {
    for (std::size_t position = 0; position < text.size();) {
        if (!nextCodePoint(text, position)) return false;
    }
    return true;
}

}  // namespace platform
