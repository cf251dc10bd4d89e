#pragma once

// Messages on a descriptor: a varint length, then the message, one after the other.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include "platform/base/result.h"

namespace platform {

/// The longest message that either side sends or takes, in bytes.
inline constexpr std::size_t maximumMessageSize = 16U << 20;

/// The prefix of a message of `size` bytes. Fails (domain "WireError") when that is too long.
Result<std::string> frameLength(std::size_t size);

/// Takes a stream in pieces of any size and gives its messages. One thread at a time.
class FrameReader {
public:
    void append(std::string_view bytes);

    /// The next whole message; nothing while more bytes are needed. A length that is no varint or
    /// beyond the limit is an error (domain "WireError") that stays: the stream has lost its step.
    Result<std::optional<std::string>> next();

    /// Whether part of a message has come.
    bool isInsideMessage() const { return start_ < buffer_.size(); }

private:
    std::string buffer_;
    std::size_t start_ = 0;
};

/// Reads what is there, waiting for the first byte; empty at the end of the stream. Fails with the system's
/// number as code (domain "SystemError").
Result<std::string> readSome(int descriptor);

/// Writes all of `bytes`, waiting as long as it takes. The process must not die of SIGPIPE.
Result<void> writeAll(int descriptor, std::string_view bytes);

}  // namespace platform
