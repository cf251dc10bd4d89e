#pragma once

// A file descriptor that closes itself.

#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace platform {

class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) : number_(number) {}
    ~FileDescriptor() { reset(); }
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            reset();
            number_ = std::exchange(other.number_, -1);
        }
        return *this;
    }

    /// -1 when there is none.
    int number() const { return number_; }
    bool isOpen() const { return number_ >= 0; }

    void reset() {
        if (isOpen()) ::close(std::exchange(number_, -1));
    }

private:
    int number_ = -1;
};

/// Takes over `number` and moves it above 2, since dup2 in a child process would overwrite it.
inline FileDescriptor aboveStandard(int number) {
    FileDescriptor original(number);
    if (number > STDERR_FILENO || number < 0) return original;
    return FileDescriptor(fcntl(number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

}  // namespace platform
