#include "platform/base/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include "platform/base/file_descriptor.h"

namespace platform {
namespace {

tl::unexpected<Error> fileError(std::string_view action, const std::filesystem::path& path, int code) {
    return failure(
        "FileError", code,
        "cannot " + std::string(action) + " " + path.string() + ": " + std::generic_category().message(code));
}

bool writeWhole(int descriptor, std::string_view content) {
    while (!content.empty()) {
        const ssize_t count = ::write(descriptor, content.data(), content.size());
        if (count < 0 && errno != EINTR) return false;
        if (count > 0) content.remove_prefix(static_cast<std::size_t>(count));
    }
    return ::fsync(descriptor) == 0;
}

}  // namespace

Result<std::string> readFile(const std::filesystem::path& path, std::size_t limit) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status = {};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0) return fileError("read", path, errno);
    if (!S_ISREG(status.st_mode))
        return failure("FileError", EINVAL, path.string() + " is not a regular file");
    std::string content;
    for (;;) {
        const std::size_t size = content.size();
        content.resize(size + 65536);
        const ssize_t count = ::read(file.number(), content.data() + size, 65536);
        content.resize(size + static_cast<std::size_t>(count > 0 ? count : 0));
        if (count < 0 && errno != EINTR) return fileError("read", path, errno);
        if (count == 0) return content;
        if (content.size() > limit)
            return failure("FileError", EFBIG,
                           path.string() + " is longer than " + std::to_string(limit) + " bytes");
    }
}

Result<void> writeFile(const std::filesystem::path& path, std::string_view content) {
    const std::string draft = path.string() + ".new";
    ::unlink(draft.c_str());
    FileDescriptor file(::open(draft.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file.isOpen()) return fileError("write", path, errno);
    if (!writeWhole(file.number(), content) || std::rename(draft.c_str(), path.c_str()) != 0) {
        const int error = errno;
        ::unlink(draft.c_str());
        return fileError("write", path, error);
    }
    syncFolder(path.has_parent_path() ? path.parent_path() : ".");
    return {};
}

void syncFolder(const std::filesystem::path& folder) {
    const FileDescriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.isOpen()) ::fsync(directory.number());
}

}  // namespace platform
