#pragma once

// A folder of a test's own.

#include <filesystem>

namespace tests {

/// An empty folder (mode 0700) below the system's place for temporary files; removed with everything
/// in it when the value goes.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

}  // namespace tests
