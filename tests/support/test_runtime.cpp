#include "tests/support/test_runtime.h"

#include <algorithm>
#include <stdexcept>

namespace tests {

platform::RuntimeOptions TestSurroundings::runtimeOptions(const TestRuntimeOptions& options) const {
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
    : platform::Runtime(TestSurroundings::runtimeOptions(options)) {}

bool TestRuntime::logged(std::string_view text) const {
    const std::lock_guard lock(log_->mutex);
    return std::ranges::any_of(log_->lines,
                               [&](const std::string& line) { return line.find(text) != std::string::npos; });
}

}  // namespace tests
