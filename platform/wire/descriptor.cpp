#include "platform/wire/descriptor.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace platform {
namespace {

tl::unexpected<Error> systemFailure() {
    return failure("SystemError", errno, std::generic_category().message(errno));
}

}  // namespace

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
