#include "platform/base/diagnostics.h"
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include "platform/base/terminal_text.h"

namespace platform {
namespace {

void (*fatalErrorHandler)(std::string_view message) = nullptr;

}  // namespace

void handleFatalErrors(void (*handler)(std::string_view message)) { fatalErrorHandler = handler; }

void fatalError(std::string_view message) {
    if (fatalErrorHandler != nullptr) fatalErrorHandler(message);
    const std::string line = "fatal error: " + terminalText(message) + "\n";
    std::fputs(line.c_str(), stderr);
    std::fflush(stderr);
    std::abort();
}

DebugLog::DebugLog(Sink sink) : sink_(std::move(sink)) {}

void DebugLog::write(std::string_view line) {
    if (!sink_) return;
    const std::lock_guard lock(mutex_);
    sink_(line);
}

DebugLog::Sink DebugLog::standardError() {
    return [](std::string_view line) {
        const std::string text = "debug: " + terminalText(line) + "\n";
        std::fputs(text.c_str(), stderr);
    };
}

}  // namespace platform
