#pragma once

// Everything that a process would otherwise take from its environment.

#include <filesystem>
#include <memory>
#include "platform/base/clock.h"
#include "platform/base/diagnostics.h"
#include "platform/base/locale.h"
#include "platform/base/uuid.h"
#include "platform/settings/bundle_information.h"
#include "platform/settings/user_defaults.h"
#include "platform/text/calendar.h"
#include "platform/text/number_formatter.h"
#include "platform/url/url_session.h"
#include "platform/view/screen.h"
#include "platform/widget/widget_center.h"

namespace platform {

/// What a `Runtime` is built from; the clock follows the system unless `now` is set.
struct RuntimeOptions {
    std::filesystem::path dataDirectory = {};
    BundleInformation bundle = {};
    std::optional<Instant> now = {};
    int osVersion = 18;
    Screen screen = {};
    Locale locale = {};
    TimeZone timeZone = {};
    DebugLog::Sink log = {};
    /// Fixes the sequence of identifiers.
    std::optional<std::uint64_t> idSeed = {};
    /// When absent, no host shows our widgets, and asking which ones are placed is an error.
    std::shared_ptr<WidgetCenter> widgetCenter = {};
    /// Set by a simulation; when absent, requests go to the network.
    std::shared_ptr<URLCarrier> carrier = {};
};

/// What a process runs in. `main()` builds one, and services keep a reference to it; tests build their own.
/// The expensive parts (number formatter, settings store, URL loader) are made when they
/// are first used. Any thread.
class Runtime {
public:
    explicit Runtime(RuntimeOptions options);
    ~Runtime();

    Clock& clock() const;
    Instant now() const { return clock().now(); }
    const Locale& locale() const;
    const TimeZone& timeZone() const;
    /// The user's calendar, in the device's zone.
    const Calendar& calendar() const;
    const NumberFormatter& numberFormatter() const;
    const BundleInformation& bundle() const;
    int osVersion() const;
    const Screen& screen() const;
    const std::filesystem::path& dataDirectory() const;
    URLLoader& urls() const;
    IdSource& ids() const;
    DebugLog& log() const;
    WidgetCenter& widgetCenter() const;

    /// The suite's store, opened when it is first used, then kept. A suite that could not be opened is tried
    /// again each time. That failure, and damage found later, is logged once.
    Result<std::shared_ptr<UserDefaults>> defaults(std::string_view suiteName) const;

    /// The runtime that `main()` has made current. Only shared instances and class-level operations call it,
    /// in functions of one line. Fatal before `makeCurrent`.
    static const Runtime& process();
    /// Makes this the process's runtime; it must outlive everything that uses it.
    void makeCurrent() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace platform
