#pragma once

// The demo service as a child process of the home screen.

#include <sys/types.h>
#include <filesystem>
#include <memory>
#include <string>
#include "platform/base/result.h"

namespace host {

/// Runs from its making to its end, and ends with this process in any case.
class DemoChild {
public:
    /// Waits, at most five seconds, until it listens. Error domain "DemoError".
    static platform::Result<std::unique_ptr<DemoChild>> start(const std::filesystem::path& program);
    ~DemoChild();
    DemoChild(const DemoChild&) = delete;
    DemoChild& operator=(const DemoChild&) = delete;

    /// "http://127.0.0.1:PORT".
    const std::string& origin() const { return origin_; }

private:
    DemoChild(pid_t process, std::string origin) : process_(process), origin_(std::move(origin)) {}

    pid_t process_;
    std::string origin_;
};

}  // namespace host
