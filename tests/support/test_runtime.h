#pragma once

// The runtime of a test: everything set by hand, nothing shared with another test.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include "platform/base/clock.h"
#include "platform/base/locale.h"
#include "platform/runtime/runtime.h"
#include "platform/settings/property_list.h"
#include "tests/support/temporary_directory.h"

namespace tests {

struct TestRuntimeOptions {
    /// Origins of the production service; what is empty is not in the information dictionary.
    std::string apiHost = {};
    std::string webHost = {};
    /// Further entries of the information dictionary ("ENVIRONMENT", "StagingWebHost", ...).
    platform::PropertyList::Dictionary information = {};
    /// Where the clock stands: a Sunday noon in India.
    std::string now = "2026-11-22T06:30:00.000Z";
    platform::Locale locale = {"en_IN"};
    platform::TimeZone timeZone = {"Asia/Kolkata"};
    int osVersion = 18;
    std::uint64_t idSeed = 1;
    std::shared_ptr<platform::WidgetCenter> widgetCenter = nullptr;
    /// Instead of a folder of its own, for a second process's view of the same store.
    std::optional<std::filesystem::path> dataDirectory = std::nullopt;
};

/// What a TestRuntime needs before its Runtime can be built.
class TestRuntimeParts {
protected:
    platform::RuntimeOptions runtimeOptions(const TestRuntimeOptions& options) const;

    TemporaryDirectory directory_;
    struct Log;
    std::shared_ptr<Log> log_ = makeLog();

private:
    static std::shared_ptr<Log> makeLog();
};

/// A Runtime with an empty store in a folder of its own, a clock that stands still, a fixed sequence
/// of identifiers and a log that is kept: `const TestRuntime runtime{{.apiHost = service.origin()}};`
class TestRuntime : private TestRuntimeParts, public platform::Runtime {
public:
    explicit TestRuntime(const TestRuntimeOptions& options = {});

    /// The lines of the debug log so far.
    std::vector<std::string> logLines() const;
    /// Whether any of them holds `text`.
    bool logged(std::string_view text) const;
};

}  // namespace tests
