#pragma once

// The demo service as a child process of the home screen.

#include <filesystem>
#include <memory>
#include <string>
#include "platform/base/result.h"

namespace host {

/// Runs until it is destroyed, and dies with the thread that started it in any case.
class DemoChild {
public:
    /// Waits, at most five seconds, until the service listens. Error domain "DemoError".
    static platform::Result<std::unique_ptr<DemoChild>> start(const std::filesystem::path& program);
    ~DemoChild();
    DemoChild(const DemoChild&) = delete;
    DemoChild& operator=(const DemoChild&) = delete;

    /// "http://127.0.0.1:PORT".
    const std::string& origin() const { return origin_; }

private:
    explicit DemoChild(int process) : process_(process) {}

    int process_;
    std::string origin_;
};

}  // namespace host
