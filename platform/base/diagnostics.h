#pragma once

// The debug log, and the end of a process when something happens that must not. Widgets show neither.

#include <functional>
#include <mutex>
#include <string>
#include <string_view>

namespace platform {

/// Takes plain text lines. A log without a sink drops them. Any thread.
///
/// Never write a user's token, user id or portfolio address here.
class DebugLog {
public:
    using Sink = std::function<void(std::string_view line)>;

    DebugLog() = default;
    explicit DebugLog(Sink sink);

    bool isEnabled() const { return static_cast<bool>(sink_); }
    void write(std::string_view line);

    /// A sink that prefixes each line with "debug: " and writes it to standard error.
    static Sink standardError();

private:
    std::mutex mutex_;
    Sink sink_;
};

/// Writes "fatal error: " and `message` as one line to standard error and ends the process with
/// SIGABRT. Only for the few failures that the widgets' contract calls fatal.
[[noreturn]] void fatalError(std::string_view message);

/// From now on `handler` is called instead, for a program that simulates processes. It must not return: it
/// leaves by an exception.
void handleFatalErrors(void (*handler)(std::string_view message));

}  // namespace platform
