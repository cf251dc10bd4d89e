#include "platform/runtime/runtime.h"

#include <atomic>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include "platform/base/diagnostics.h"

namespace platform {
namespace {

/// Used when no host runs.
class NoWidgetCenter final : public WidgetCenter {
public:
    void reloadTimelines(std::string_view) override {}
    void reloadAllTimelines() override {}
    void getCurrentConfigurations(
        std::function<void(Result<std::vector<PlacedWidget>>)> completion) override {
        completion(failure("WidgetCenterError", 1, "no widget host is running"));
    }
};

std::atomic<const Runtime*> current = nullptr;

/// Ends `owner`'s time as the process's runtime.
struct CurrentRuntimeGuard {
    const Runtime* owner;
    ~CurrentRuntimeGuard() { current.compare_exchange_strong(owner, nullptr); }
};

}  // namespace

struct Runtime::State {
    State(const Runtime* owner, RuntimeOptions options)
        : currentGuard{owner},
          locale(std::move(options.locale)),
          timeZone(std::move(options.timeZone)),
          calendar(timeZone),
          bundle(std::move(options.bundle)),
          osVersion(options.osVersion),
          screen(options.screen),
          dataDirectory(std::move(options.dataDirectory)),
          ids(options.idSeed ? IdSource(*options.idSeed) : IdSource()),
          log(std::make_shared<DebugLog>(std::move(options.log))),
          widgetCenter(options.widgetCenter ? std::move(options.widgetCenter)
                                            : std::make_shared<NoWidgetCenter>()),
          carrier(std::move(options.carrier)) {
        if (options.now) clock.set(*options.now, 0.0);
    }

    // Declared first, so that it is destroyed last: a running completion may ask for the process's runtime.
    CurrentRuntimeGuard currentGuard;

    Clock clock;
    Locale locale;
    TimeZone timeZone;
    Calendar calendar;
    BundleInformation bundle;
    int osVersion;
    Screen screen;
    std::filesystem::path dataDirectory;
    IdSource ids;
    // Shared with the suites' stores, which may outlive this.
    std::shared_ptr<DebugLog> log;
    std::shared_ptr<WidgetCenter> widgetCenter;

    std::once_flag formatterOnce;
    std::unique_ptr<const NumberFormatter> formatter;

    std::mutex suitesMutex;
    std::map<std::string, std::shared_ptr<UserDefaults>, std::less<>> suites;
    std::set<std::string, std::less<>> complainedSuites;

    std::shared_ptr<URLCarrier> carrier;

    // Declared last, so that it is destroyed first: a running completion may use everything above.
    std::once_flag loaderOnce;
    std::unique_ptr<URLLoader> loader;
};

Runtime::Runtime(RuntimeOptions options) : state_(std::make_unique<State>(this, std::move(options))) {}

Runtime::~Runtime() = default;

Clock& Runtime::clock() const { return state_->clock; }
const Locale& Runtime::locale() const { return state_->locale; }
const TimeZone& Runtime::timeZone() const { return state_->timeZone; }
const Calendar& Runtime::calendar() const { return state_->calendar; }
const BundleInformation& Runtime::bundle() const { return state_->bundle; }
int Runtime::osVersion() const { return state_->osVersion; }
const Screen& Runtime::screen() const { return state_->screen; }
const std::filesystem::path& Runtime::dataDirectory() const { return state_->dataDirectory; }
IdSource& Runtime::ids() const { return state_->ids; }
DebugLog& Runtime::log() const { return *state_->log; }
WidgetCenter& Runtime::widgetCenter() const { return *state_->widgetCenter; }

const NumberFormatter& Runtime::numberFormatter() const {
    std::call_once(state_->formatterOnce,
                   [this] { state_->formatter = std::make_unique<NumberFormatter>(state_->locale); });
    return *state_->formatter;
}

URLLoader& Runtime::urls() const {
    std::call_once(state_->loaderOnce, [this] {
        state_->loader = std::make_unique<URLLoader>(acceptLanguage(state_->locale), state_->carrier);
    });
    return *state_->loader;
}

Result<std::shared_ptr<UserDefaults>> Runtime::defaults(std::string_view suiteName) const {
    const std::lock_guard lock(state_->suitesMutex);
    if (const auto found = state_->suites.find(suiteName); found != state_->suites.end())
        return found->second;
    Result<std::shared_ptr<UserDefaults>> opened =
        UserDefaults::open(state_->dataDirectory, suiteName,
                           [log = state_->log](const Error& error) { log->write(error.message); });
    if (opened) {
        state_->suites.emplace(suiteName, *opened);
    } else if (state_->complainedSuites.emplace(suiteName).second) {
        state_->log->write(opened.error().message);
    }
    return opened;
}

const Runtime& Runtime::process() {
    const Runtime* runtime = current.load(std::memory_order_acquire);
    if (runtime == nullptr) fatalError("this process has no runtime yet");
    return *runtime;
}

void Runtime::makeCurrent() const { current.store(this, std::memory_order_release); }

}  // namespace platform
