#pragma once

// Ends the process when something happens that must not.

#include <string_view>

namespace platform {

/// Writes "fatal error: " and `message` as one line to standard error and ends the process with
/// SIGABRT. Only for the few failures that the widgets' contract calls fatal.
[[noreturn]] void fatalError(std::string_view message);

/// From now on `handler` is called instead, for a program that simulates processes. It must not return: it
/// leaves by an exception.
void handleFatalErrors(void (*handler)(std::string_view message));

}  // namespace platform
