#include "host/home/home_screen.h"
#include <algorithm>
#include <fstream>
#include "companion/user_choices.h"
#include "host/home/page_answers.h"
#include "platform/settings/property_list.h"

namespace host {

namespace {

using platform::PropertyList;
using platform::Result;
using platform::WidgetFamily;

constexpr std::size_t longestLog = 300;

}  // namespace

/// The phone app's way to us, without a detour through a socket.
class HomeScreen::Center final : public platform::WidgetCenter {
public:
    explicit Center(HomeScreen& home) : home_(home) {}

    void reloadTimelines(std::string_view ofKind) override {
        home_.noticeUser();
        home_.schedule_->reload(ofKind, Requester::app);
    }
    void reloadAllTimelines() override {
        home_.noticeUser();
        home_.schedule_->reload(std::optional<std::string_view>(), Requester::app);
    }
    void getCurrentConfigurations(
        std::function<void(Result<std::vector<platform::PlacedWidget>>)> completion) override {
        std::vector<platform::PlacedWidget> placed;
        {
            const std::lock_guard lock(home_.mutex_);
            for (const Placement& placement : home_.placements_)
                placed.push_back({placement.kind, placement.family});
        }
        completion(std::move(placed));
    }

private:
    HomeScreen& home_;
};

Result<std::unique_ptr<HomeScreen>> HomeScreen::start(HomeScreenOptions options) {
    auto painter = Painter::make(options.resources);
    if (!painter) return tl::unexpected(painter.error());
    std::unique_ptr<HomeScreen> home(new HomeScreen(std::move(options), std::move(*painter)));
    if (const auto written = home->writeInformation(home->environment_); !written)
        return tl::unexpected(written.error());
    // Before the extension opens the store: two that create it at once would wait for each other.
    home->noticeUser();
    const auto gallery = home->extension_->gallery(std::chrono::seconds(10));
    if (!gallery) return tl::unexpected(gallery.error());
    home->gallery_ = *gallery;
    home->loadDemoLists();
    home->placeSaved();
    return home;
}

HomeScreen::HomeScreen(HomeScreenOptions options, std::unique_ptr<Painter> painter)
    : options_(std::move(options)), renderer_(std::move(painter), options_.runtime.osVersion) {
    if (options_.runtime.bundle.text("ENVIRONMENT") == "staging") environment_ = "staging";
    options_.runtime.widgetCenter = std::make_shared<Center>(*this);
    runtime_ = std::make_unique<platform::Runtime>(options_.runtime);
    phoneApp_ = std::make_unique<companion::PhoneApp>(*runtime_);
    if (options_.runtime.now) clock_.set(*options_.runtime.now, 0.0);
    extension_ = std::make_unique<ExtensionProcess>(
        ExtensionOptions{.program = options_.extensionProgram,
                         .arguments = options_.extensionArguments,
                         .log = [this](std::string line) { noteLog(std::move(line)); }});
    dayExtension_ = std::make_unique<ExtensionProcess>(ExtensionOptions{
        .program = options_.extensionProgram, .arguments = options_.extensionArguments, .log = {}});
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

void HomeScreen::placeSaved() {
    const auto saved = loadPlacements(options_.runtime.dataDirectory / "home-screen.json");
    if (!saved) noteLog("the saved home screen cannot be read: " + saved.error().message);
    std::vector<Placement> placements = saved.value_or(std::vector<Placement>());
    std::error_code error;
    if (placements.empty() &&
        !std::filesystem::exists(options_.runtime.dataDirectory / "home-screen.json", error)) {
        placements = {{1, "PerchWidget", WidgetFamily::systemMedium},
                      {2, "PortfolioWidget", WidgetFamily::systemSmall},
                      {3, "PerchWidget", WidgetFamily::systemSmall},
                      {4, "PortfolioWidget", WidgetFamily::systemMedium},
                      {5, "NewsWidget", WidgetFamily::systemLarge},
                      {6, "PerchWidget", WidgetFamily::systemLarge}};
    }
    const std::lock_guard lock(mutex_);
    for (const Placement& placement : placements) {
        schedule_->place(placement.id, placement.kind, placement.family);
        lastId_ = std::max(lastId_, placement.id);
    }
    placements_ = std::move(placements);
}

// Called with the lock held.
Result<void> HomeScreen::save() {
    return savePlacements(options_.runtime.dataDirectory / "home-screen.json", placements_);
}

Result<void> HomeScreen::writeInformation(const std::string& environment) {
    PropertyList::Dictionary entries = options_.runtime.bundle.entries;
    entries["ENVIRONMENT"] = environment;
    if (options_.demoOrigin) {
        for (const char* name :
             {"ProductionAPIHost", "StagingAPIHost", "ProductionWebHost", "StagingWebHost"})
            entries[name] = *options_.demoOrigin;
    }
    const Result<std::string> text = platform::xmlPropertyList(entries);
    if (!text) return tl::unexpected(text.error());
    std::ofstream file(options_.infoPlist, std::ios::binary | std::ios::trunc);
    file << *text;
    file.close();
    if (!file) return refusal("cannot write " + options_.infoPlist.string());
    return {};
}

Result<std::string> HomeScreen::askDemo(const std::string& path, std::optional<std::string> content) {
    if (!options_.demoOrigin) return refusal("the demo service is not in use");
    const auto url = platform::URL::parse(*options_.demoOrigin + path);
    platform::URLRequest request{.url = url.value()};
    if (content) {
        request.method = "POST";
        request.body = platform::Bytes(*content);
    }
    const auto answer =
        runtime_->urls().load(std::move(request), std::chrono::steady_clock::now() + std::chrono::seconds(5));
    if (!answer) return refusal("the demo service does not answer");
    if (answer->statusCode != 200) return refusal("the demo service refused");
    return std::string(answer->body.value_or(platform::Bytes()).view());
}

void HomeScreen::loadDemoLists() {
    if (!options_.demoOrigin) return;
    users_ = askDemo("/demo/users").value_or("[]");
    catalogue_ = askDemo("/demo/catalogue").value_or("[]");
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

}  // namespace host
