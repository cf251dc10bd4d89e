#include "tests/support/test_runtime.h"

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <utility>

namespace tests {

struct TestRuntimeParts::Log {
    mutable std::mutex mutex;
    std::vector<std::string> lines;
};

std::shared_ptr<TestRuntimeParts::Log> TestRuntimeParts::makeLog() { return std::make_shared<Log>(); }

platform::RuntimeOptions TestRuntimeParts::runtimeOptions(const TestRuntimeOptions& options) const {
    const auto now = platform::parseInstant(options.now);
    if (!now) throw std::invalid_argument("no instant: " + options.now);

    platform::RuntimeOptions made;
    made.dataDirectory = options.dataDirectory.value_or(directory_.path());
    made.bundle.entries = options.information;
    if (!options.apiHost.empty()) made.bundle.entries.insert_or_assign("ProductionAPIHost", options.apiHost);
    if (!options.webHost.empty()) made.bundle.entries.insert_or_assign("ProductionWebHost", options.webHost);
    made.now = *now;
    made.osVersion = options.osVersion;
    made.locale = options.locale;
    made.timeZone = options.timeZone;
    made.idSeed = options.idSeed;
    made.widgetCenter = options.widgetCenter;
    made.log = [log = log_](std::string_view line) {
        const std::lock_guard lock(log->mutex);
        log->lines.emplace_back(line);
    };
    return made;
}

TestRuntime::TestRuntime(const TestRuntimeOptions& options)
    : platform::Runtime(TestRuntimeParts::runtimeOptions(options)) {}

std::vector<std::string> TestRuntime::logLines() const {
    const std::lock_guard lock(log_->mutex);
    return log_->lines;
}

bool TestRuntime::logged(std::string_view text) const {
    return std::ranges::any_of(logLines(),
                               [&](const std::string& line) { return line.find(text) != std::string::npos; });
}

}  // namespace tests
