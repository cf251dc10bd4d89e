#include "platform/wire/framing.h"

#include <unistd.h>
#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>

namespace platform {
namespace {

/// A length within the limit needs no more bytes.
constexpr std::size_t maximumVarintSize = 4;

void appendVarint(std::string& out, std::uint64_t value) {
    while (value >= 0x80U) {
        out.push_back(static_cast<char>((value & 0x7FU) | 0x80U));
        value >>= 7U;
    }
    out.push_back(static_cast<char>(value));
}

struct Varint {
    std::uint64_t value = 0;
    std::size_t size = 0;
};

/// Nothing while its last byte has not come.
Result<std::optional<Varint>> readVarint(std::string_view bytes) {
    Varint varint;
    for (const char byte : bytes.substr(0, maximumVarintSize)) {
        const auto bits = static_cast<std::uint64_t>(static_cast<unsigned char>(byte));
        varint.value |= (bits & 0x7FU) << (7U * varint.size);
        ++varint.size;
        if ((bits & 0x80U) == 0) return varint;
    }
    if (bytes.size() >= maximumVarintSize)
        return failure("WireError", 2, "a message has no length that we take");
    return std::nullopt;
}

tl::unexpected<Error> tooLong(std::uint64_t size) {
    return failure("WireError", 1, "a message of " + std::to_string(size) + " bytes is too long");
}

tl::unexpected<Error> systemFailure() {
    return failure("SystemError", errno, std::generic_category().message(errno));
}

}  // namespace

Result<std::string> frameLength(std::size_t size) {
    if (size > maximumMessageSize) return tooLong(size);
    std::string length;
    appendVarint(length, size);
    return length;
}

void FrameReader::append(std::string_view bytes) {
    buffer_.erase(0, start_);
    start_ = 0;
    buffer_.append(bytes);
}

Result<std::optional<std::string>> FrameReader::next() {
    const std::string_view rest = std::string_view(buffer_).substr(start_);
    const std::optional<Varint> length = TRY(readVarint(rest));
    if (!length) return std::nullopt;
    const auto [size, prefix] = *length;
    if (size > maximumMessageSize) return tooLong(size);
    if (rest.size() - prefix < size) return std::nullopt;
    start_ += prefix + size;
    return std::string(rest.substr(prefix, size));
}

Result<std::string> readSome(int descriptor) {
    std::array<char, 16384> buffer{};
    for (;;) {
        const ssize_t count = read(descriptor, buffer.data(), buffer.size());
        if (count >= 0) return std::string(buffer.data(), static_cast<std::size_t>(count));
        if (errno != EINTR) return systemFailure();
    }
}

Result<void> writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            return systemFailure();
        }
    }
    return {};
}

}  // namespace platform
