#include "platform/base/uuid.h"

#include "platform/base/ascii.h"

namespace platform {
namespace {

constexpr bool isDashBefore(std::size_t byte) { return byte == 4 || byte == 6 || byte == 8 || byte == 10; }

}  // namespace

std::string UUID::text() const {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (isDashBefore(i)) text += '-';
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 0xF];
    }
    return text;
}

std::optional<UUID> UUID::parse(std::string_view text) {
    if (text.size() != 36) return std::nullopt;
    UUID uuid;
    std::size_t at = 0;
    for (std::size_t i = 0; i < uuid.bytes.size(); ++i) {
        if (isDashBefore(i) && text[at++] != '-') return std::nullopt;
        const int high = hexDigit(text[at++]);
        const int low = hexDigit(text[at++]);
        if (high < 0 || low < 0) return std::nullopt;
        uuid.bytes[i] = static_cast<std::uint8_t>(high << 4 | low);
    }
    return uuid;
}

IdSource::IdSource() {
    std::random_device device;
    std::seed_seq seed{device(), device(), device(), device(), device(), device(), device(), device()};
    generator_.seed(seed);
}

IdSource::IdSource(std::uint64_t seed) : generator_(seed) {}

UUID IdSource::next() {
    UUID uuid;
    {
        const std::lock_guard lock(mutex_);
        for (std::size_t half = 0; half < 2; ++half) {
            std::uint64_t bits = generator_();
            for (std::size_t i = 0; i < 8; ++i, bits >>= 8)
                uuid.bytes[half * 8 + i] = static_cast<std::uint8_t>(bits & 0xFF);
        }
    }
    uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0F) | 0x40);
    uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3F) | 0x80);
    return uuid;
}

}  // namespace platform
