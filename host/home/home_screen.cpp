#include "host/home/home_screen.h"
#include <algorithm>
#include <csignal>
#include <utility>
#include "companion/user_choices.h"
#include "platform/base/files.h"
#include "platform/settings/property_list.h"

namespace host {
namespace {

using platform::Result;
using platform::WidgetFamily;

constexpr std::size_t longestLog = 300;
constexpr std::chrono::seconds dayLimit{20};

}  // namespace

/// The phone app's way to the home screen, without a detour through a socket.
class HomeScreen::Center final : public platform::WidgetCenter {
public:
    explicit Center(HomeScreen& home) : home_(home) {}

    void reloadTimelines(std::string_view ofKind) override { home_.reloadForApp(ofKind); }
    void reloadAllTimelines() override { home_.reloadForApp(std::nullopt); }
    void getCurrentConfigurations(
        std::function<void(Result<std::vector<platform::PlacedWidget>>)> completion) override {
        std::vector<platform::PlacedWidget> placed;
        for (const Placement& each : home_.placements()) placed.push_back({each.kind, each.family});
        completion(std::move(placed));
    }

private:
    HomeScreen& home_;
};

Result<std::unique_ptr<HomeScreen>> HomeScreen::start(HomeScreenOptions options) {
    auto painter = TRY(Painter::make(options.resources));
    std::unique_ptr<HomeScreen> home(new HomeScreen(std::move(options), std::move(painter)));
    TRY(home->writeInformation(home->environment_));
    // Before the extension opens the store: two that create it at once would wait for each other.
    home->noticeUser();
    auto gallery = TRY(home->extension_->gallery(std::chrono::seconds(10)));
    home->gallery_ = std::move(gallery);
    if (home->demo_) {
        home->users_ = home->demo_->users().value_or(std::vector<companion::DemoUser>());
        home->assets_ = home->demo_->assets().value_or(std::vector<companion::DemoAsset>());
    }
    home->placeSaved();
    return home;
}

HomeScreen::HomeScreen(HomeScreenOptions options, std::unique_ptr<Painter> painter)
    : options_(std::move(options)),
      placements_(options_.runtime.dataDirectory / "home-screen.json"),
      renderer_(std::move(painter), options_.runtime.screen, options_.runtime.osVersion) {
    if (options_.runtime.bundle.text("ENVIRONMENT") == "staging") environment_ = "staging";
    options_.runtime.widgetCenter = std::make_shared<Center>(*this);
    runtime_ = std::make_unique<platform::Runtime>(options_.runtime);
    phoneApp_ = std::make_unique<companion::PhoneApp>(*runtime_);
    if (options_.demoOrigin) demo_.emplace(*runtime_, *options_.demoOrigin);
    options_.extension.log = nullptr;
    dayExtension_ = std::make_unique<ExtensionProcess>(options_.extension);
    options_.extension.log = [this](std::string line) { noteLog(std::move(line)); };
    extension_ = std::make_unique<ExtensionProcess>(options_.extension);
    schedule_ = std::make_unique<WidgetSchedule>(*extension_, clock_, ledger_, ReloadMode::live,
                                                 [this](int) { changed(); });
    if (options_.runtime.now) schedule_->setClock(options_.runtime.now, 0.0);
}

HomeScreen::~HomeScreen() {
    whenChanged(nullptr);
    stop();
    schedule_.reset();
    std::error_code ignored;
    std::filesystem::remove(options_.infoPlist, ignored);
}

void HomeScreen::stop() {
    schedule_->stopAsking();
    extension_->close();
    dayExtension_->close();
}

void HomeScreen::whenChanged(std::function<void()> listener) {
    const std::lock_guard lock(listenerMutex_);
    listener_ = std::move(listener);
}

void HomeScreen::changed() {
    const std::shared_lock lock(listenerMutex_);
    if (listener_) listener_();
}

void HomeScreen::noteLog(std::string line) {
    if (options_.log) options_.log(line);
    const std::lock_guard lock(mutex_);
    log_.push_back(platform::formatInstant(clock_.now()) + "  " + std::move(line));
    if (log_.size() > longestLog) log_.pop_front();
}

std::vector<std::string> HomeScreen::log() const {
    const std::lock_guard lock(mutex_);
    return {log_.begin(), log_.end()};
}

std::string HomeScreen::environment() const {
    const std::lock_guard lock(mutex_);
    return environment_;
}

std::string HomeScreen::fault() const {
    const std::lock_guard lock(mutex_);
    return fault_;
}

void HomeScreen::placeSaved() {
    const auto loaded = placements_.load({{1, "PerchWidget", WidgetFamily::systemMedium},
                                          {2, "PortfolioWidget", WidgetFamily::systemSmall},
                                          {3, "PerchWidget", WidgetFamily::systemSmall},
                                          {4, "PortfolioWidget", WidgetFamily::systemMedium},
                                          {5, "NewsWidget", WidgetFamily::systemLarge},
                                          {6, "PerchWidget", WidgetFamily::systemLarge}});
    if (!loaded) noteLog("the saved home screen cannot be used: " + loaded.error().message);
    for (const Placement& each : placements_.all()) schedule_->place(each.id, each.kind, each.family);
}

Result<void> HomeScreen::writeInformation(const std::string& environment) {
    platform::PropertyList::Dictionary entries = options_.runtime.bundle.entries;
    entries["ENVIRONMENT"] = environment;
    if (options_.demoOrigin) {
        for (const char* name :
             {"ProductionAPIHost", "StagingAPIHost", "ProductionWebHost", "StagingWebHost"})
            entries[name] = *options_.demoOrigin;
    }
    return platform::xmlPropertyList(entries).and_then(
        [this](const std::string& text) { return platform::writeFile(options_.infoPlist, text); });
}

void HomeScreen::noticeUser() {
    const auto session = companion::session(*runtime_);
    const std::string user = session && *session ? (*session)->userId : "";
    {
        const std::lock_guard lock(mutex_);
        const bool isSame = !knownUser_ || *knownUser_ == user;
        knownUser_ = user;
        if (isSame) return;
    }
    schedule_->forget("PortfolioWidget");
}

void HomeScreen::reloadForApp(std::optional<std::string_view> kind) {
    noticeUser();
    schedule_->reload(kind, Requester::app);
}

Result<std::string> HomeScreen::picture(int id, int scale) {
    const std::optional<WidgetState> state = schedule_->state(id);
    if (!state || !state->picture) return refusal("there is no picture yet");
    return renderer_.png(state->picture->widget, scale);
}

Result<std::string> HomeScreen::preview(const std::string& kind, WidgetFamily family, EntryRequest request,
                                        int scale) {
    const auto answer = TRY(extension_->ask(
        {.kind = kind, .family = family, .request = request, .isPreview = true, .wantsViews = true},
        answerLimit(request)));
    if (answer.entries.empty() || !answer.entries.front().view)
        return refusal("the extension sent nothing to draw");
    return renderer_.png({*answer.entries.front().view, kind, family, request == EntryRequest::placeholder},
                         scale);
}

std::vector<DayRow> HomeScreen::day() {
    const auto limit = std::chrono::steady_clock::now() + dayLimit;
    const std::lock_guard lock(dayMutex_);
    std::vector<DayRow> rows =
        lookThroughDay(*dayExtension_, gallery_, clock_.now(), runtime_->calendar(), limit);
    dayExtension_->end();
    return rows;
}

Result<void> HomeScreen::place(const std::string& kind, WidgetFamily family) {
    const auto listing = std::ranges::find(gallery_, kind, &WidgetListing::kind);
    if (listing == gallery_.end() || std::ranges::find(listing->families, family) == listing->families.end())
        return refusal("the extension has no such widget");
    return placements_.add(kind, family).map([this](const Placement& placed) {
        schedule_->place(placed.id, placed.kind, placed.family);
    });
}

Result<void> HomeScreen::remove(int id) {
    return placements_.remove(id).map([&] { schedule_->remove(id); });
}

Result<void> HomeScreen::setEnvironment(const std::string& environment) {
    TRY(writeInformation(environment));
    {
        const std::lock_guard lock(mutex_);
        environment_ = environment;
    }
    // A process reads its environment once, so the next one must be new.
    extension_->end();
    schedule_->reload(std::nullopt, Requester::person);
    return {};
}

Result<void> HomeScreen::setFault(const std::string& fault) {
    if (!demo_) return refusal("the demo service is not in use");
    TRY(demo_->setFault(fault));
    {
        const std::lock_guard lock(mutex_);
        fault_ = fault;
    }
    schedule_->reload(std::nullopt, Requester::person);
    return {};
}

Result<void> HomeScreen::killExtension() {
    const int process = extension_->processId();
    if (process <= 0) return refusal("the extension is not running");
    ::kill(process, SIGKILL);
    noteLog("the extension was killed from the home screen");
    // Whoever kills it wants to see what follows: the next question starts a new one.
    schedule_->reload(std::nullopt, Requester::app);
    return {};
}

}  // namespace host
