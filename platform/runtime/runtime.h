#pragma once

// Everything that a process would otherwise take from the air.

#include <filesystem>
#include <memory>
#include "platform/base/clock.h"
#include "platform/base/debug_log.h"
#include "platform/base/locale.h"
#include "platform/base/uuid.h"
#include "platform/settings/bundle_information.h"
#include "platform/settings/user_defaults.h"
#include "platform/text/calendar.h"
#include "platform/text/number_formatter.h"
#include "platform/url/url_session.h"
#include "platform/widget/widget_center.h"

namespace platform {

/// How `Runtime` is built; what is not given comes from the system.
struct RuntimeOptions {
    std::filesystem::path dataDirectory = {};
    BundleInformation bundle = {};
    std::optional<Instant> now = {};
    int osVersion = 18;
    Locale locale = {};
    TimeZone timeZone = {};
    DebugLog::Sink log = {};
    /// Fixes the sequence of identifiers.
    std::optional<std::uint64_t> idSeed = {};
    /// Absent: nobody hosts our widgets, and the query of what is placed reports an error.
    std::shared_ptr<WidgetCenter> widgetCenter = {};
};

/// What a process runs in. `main()` builds one, and services keep a reference to it; tests build their own.
/// The expensive parts (number formatter, settings store, URL loader) are made with their
/// first use. Any thread.
class Runtime {
public:
    explicit Runtime(RuntimeOptions options);
    ~Runtime();
    Runtime(const Runtime&) = delete;
    Runtime& operator=(const Runtime&) = delete;

    Clock& clock() const;
    Instant now() const { return clock().now(); }
    const Locale& locale() const;
    const TimeZone& timeZone() const;
    /// The user's calendar, in the device's zone.
    const Calendar& calendar() const;
    const NumberFormatter& numberFormatter() const;
    const BundleInformation& bundle() const;
    int osVersion() const;
    const std::filesystem::path& dataDirectory() const;
    URLLoader& urls() const;
    IdSource& ids() const;
    DebugLog& log() const;
    WidgetCenter& widgetCenter() const;

    /// The suite's store, opened with the first use and kept; a suite that could not be opened is tried
    /// anew each time. That, and damage found later, is said once in the log.
    Result<std::shared_ptr<UserDefaults>> defaults(std::string_view suiteName) const;

    /// The one that `main()` has made current. Only the one-line doors of shared instances and
    /// class-level operations call it; it is fatal before `makeCurrent`.
    static const Runtime& process();
    /// Makes this one the process's; it must outlive all that uses it.
    void makeCurrent() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace platform
