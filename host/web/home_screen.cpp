#include "host/web/home_screen.h"
#include <algorithm>
#include <csignal>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include "companion/user_choices.h"
#include "host/web/day_strip.h"
#include "host/web/deep_link.h"
#include "platform/settings/property_list.h"
#include "platform/view/view_json.h"

namespace host {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;
using platform::PropertyList;
using platform::Result;
using platform::WidgetFamily;

constexpr std::size_t longestLog = 300;
constexpr int galleryScale = 3;

tl::unexpected<platform::Error> refusal(std::string message) {
    return platform::failure("HomeScreenError", 1, std::move(message));
}

std::string dumped(const ordered_json& value) {
    return value.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

std::string textOf(const json& request, const char* key) {
    const auto found = request.find(key);
    return found != request.end() && found->is_string() ? found->get<std::string>() : "";
}

int numberOf(const json& request, const char* key, int otherwise) {
    const auto found = request.find(key);
    const bool isSmall = found != request.end() && found->is_number_integer() &&
                         found->get<double>() > -1e6 && found->get<double>() < 1e6;
    return isSmall ? found->get<int>() : otherwise;
}

bool isWithin(const Rect& inner, const Rect& outer) {
    const double middleX = inner.x + inner.width / 2;
    const double middleY = inner.y + inner.height / 2;
    return middleX >= outer.x && middleX <= outer.x + outer.width && middleY >= outer.y &&
           middleY <= outer.y + outer.height;
}

/// The texts that stand in a tap area, as a screen reader would say them.
std::string nameOf(const Rect& area, const DisplayList& list) {
    std::string name;
    for (const DisplayItem& item : list.items) {
        const auto* text = std::get_if<TextItem>(&item.content);
        if (text == nullptr || item.opacity == 0.0 || !isWithin(item.frame, area)) continue;
        if (!name.empty()) name += ", ";
        for (const platform::TextRun& run : text->runs) name += run.text;
    }
    return name;
}

ordered_json linkJson(const std::string& url, const Rect& frame, std::string name) {
    const DeepLink link = takenApart(url);
    ordered_json parameters = ordered_json::array();
    for (const auto& [key, value] : link.parameters) parameters.push_back({{"name", key}, {"value", value}});
    return {{"url", url},
            {"name", name.empty() ? link.destination : std::move(name)},
            {"destination", link.destination},
            {"parameters", parameters},
            {"frame", {{"x", frame.x}, {"y", frame.y}, {"width", frame.width}, {"height", frame.height}}}};
}

ordered_json describedPicture(const ShownPicture& picture, PictureStudio& studio) {
    const DisplayList list = studio.displayList(picture.sitter, galleryScale);
    ordered_json links = ordered_json::array();
    const Rect whole{0, 0, list.size.width, list.size.height};
    if (list.widgetURL) links.push_back(linkJson(*list.widgetURL, whole, nameOf(whole, list)));
    for (const LinkArea& area : list.links) {
        if (area.frame.width > 0 && area.frame.height > 0)
            links.push_back(linkJson(area.url, area.frame, nameOf(area.frame, list)));
    }
    return {{"version", picture.version},
            {"isPlaceholder", picture.sitter.isRedacted},
            {"since", platform::formatInstant(picture.since)},
            {"text", nameOf(whole, list)},
            {"links", links}};
}

ordered_json policyJson(const std::optional<platform::TimelineReloadPolicy>& policy) {
    if (!policy) return nullptr;
    if (policy->kind == platform::TimelineReloadPolicy::Kind::atEnd) return "atEnd";
    return {{"after", platform::formatInstant(policy->date)}};
}

ordered_json nextJson(const std::optional<NextReload>& next, ReloadMode mode) {
    if (!next) return nullptr;
    return {{"due", platform::formatInstant(next->due)},
            {"at", platform::formatInstant(next->at.shown)},
            {"asker", description(next->asker)},
            {"hold", reason(next->hold, mode)}};
}

PropertyList::Dictionary recordOf(const json& asset) {
    PropertyList::Dictionary record;
    for (const auto& [key, value] : asset.items()) record.emplace(key, value.get<std::string>());
    return record;
}

/// The asset's price identifier, or its title when it has none: what the page knows it by.
std::string keyOf(const PropertyList& record) {
    const auto* fields = record.dictionary();
    if (fields == nullptr) return "";
    for (const char* name : {"priceIdentifier", "title"}) {
        const auto found = fields->find(name);
        if (found != fields->end() && found->second.text() != nullptr) return *found->second.text();
    }
    return "";
}

std::string titleOf(const PropertyList& record) {
    const auto* fields = record.dictionary();
    if (fields == nullptr) return "";
    const auto found = fields->find("title");
    return found != fields->end() && found->second.text() != nullptr ? *found->second.text() : keyOf(record);
}

struct Shelf {
    const char* type;
    PropertyList::Array companion::ChosenAssets::* list;
};

constexpr Shelf shelves[] = {{"indices", &companion::ChosenAssets::indices},
                             {"stock", &companion::ChosenAssets::stocks},
                             {"future", &companion::ChosenAssets::futures},
                             {"crypto", &companion::ChosenAssets::cryptos}};

}  // namespace

/// The phone app's way to us, without a detour through a socket.
class HomeScreen::Center final : public platform::WidgetCenter {
public:
    explicit Center(HomeScreen& home) : home_(home) {}

    void reloadTimelines(std::string_view ofKind) override {
        home_.noticeUser();
        home_.schedule_->reload(ofKind, Asker::app);
    }
    void reloadAllTimelines() override {
        home_.noticeUser();
        home_.schedule_->reload(std::optional<std::string_view>(), Asker::app);
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
    : options_(std::move(options)), studio_(std::move(painter), options_.runtime.osVersion) {
    if (options_.runtime.bundle.text("ENVIRONMENT") == "staging") environment_ = "staging";
    options_.runtime.widgetCenter = std::make_shared<Center>(*this);
    runtime_ = std::make_unique<platform::Runtime>(options_.runtime);
    phoneApp_ = std::make_unique<companion::PhoneApp>(*runtime_);
    if (options_.runtime.now) clock_.set(*options_.runtime.now, 0.0);
    extension_ = std::make_unique<ExtensionProcess>(
        ExtensionOptions{.program = options_.extensionProgram,
                         .arguments = options_.extensionArguments,
                         .log = [this](std::string line) { noteLog(std::move(line)); }});
    schedule_ = std::make_unique<WidgetSchedule>(
        WidgetSchedule::Surroundings{*extension_, studio_, clock_, ledger_, [this](int) { changed(); }},
        ReloadMode::live);
    if (options_.runtime.now) schedule_->setClock(options_.runtime.now, 0.0);
}

HomeScreen::~HomeScreen() {
    whenChanged(nullptr);
    // Answers under way end with the child rather than after their limits.
    schedule_->stopAsking();
    extension_->end();
    schedule_.reset();
    std::error_code ignored;
    std::filesystem::remove(options_.infoPlist, ignored);
}

void HomeScreen::whenChanged(std::function<void()> listener) {
    const std::lock_guard lock(mutex_);
    listener_ = std::move(listener);
}

void HomeScreen::changed() {
    std::function<void()> listener;
    {
        const std::lock_guard lock(mutex_);
        listener = listener_;
    }
    if (listener) listener();
}

void HomeScreen::noteLog(std::string line) {
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

ordered_json HomeScreen::pictureJson(int id, const std::shared_ptr<const ShownPicture>& picture) {
    if (!picture) return nullptr;
    {
        const std::lock_guard lock(toldMutex_);
        const auto told = told_.find(id);
        if (told != told_.end() && told->second.picture == picture) return *told->second.json;
    }
    const auto made = std::make_shared<const ordered_json>(describedPicture(*picture, studio_));
    const std::lock_guard lock(toldMutex_);
    told_[id] = {picture, made};
    return *made;
}

ordered_json HomeScreen::widgetsJson() {
    std::map<int, WidgetState> states;
    for (WidgetState& state : schedule_->states()) states.emplace(state.id, std::move(state));
    {
        const std::lock_guard lock(toldMutex_);
        std::erase_if(told_, [&](const auto& told) { return !states.contains(told.first); });
    }
    std::vector<Placement> placements;
    {
        const std::lock_guard lock(mutex_);
        placements = placements_;
    }
    const std::vector<GridPlace> places = packed(placements);
    const ReloadMode mode = schedule_->mode();
    ordered_json widgets = ordered_json::array();
    for (std::size_t i = 0; i < placements.size(); ++i) {
        const auto found = states.find(placements[i].id);
        if (found == states.end()) continue;
        const WidgetState& state = found->second;
        const platform::Size size = platform::widgetSize(state.family);
        const auto listing = std::ranges::find(gallery_, state.kind, &WidgetListing::kind);
        widgets.push_back({{"id", state.id},
                           {"kind", state.kind},
                           {"displayName", listing == gallery_.end() ? state.kind : listing->displayName},
                           {"family", platform::description(state.family)},
                           {"width", size.width},
                           {"height", size.height},
                           {"page", places[i].page},
                           {"column", places[i].column},
                           {"row", places[i].row},
                           {"picture", pictureJson(state.id, state.picture)},
                           {"policy", policyJson(state.policy)},
                           {"next", nextJson(state.next, mode)},
                           {"isRunning", state.isRunning},
                           {"failures", state.failures},
                           {"lastError", state.lastError}});
    }
    return widgets;
}

ordered_json HomeScreen::phoneAppJson() {
    ordered_json app;
    const auto theme = phoneApp_->call("ThemeManager", "getCurrentSelectedThemeType", {});
    app["theme"] = theme.value_or(ordered_json(0));
    const auto session = companion::session(*runtime_);
    std::string name;
    if (session && *session) {
        name = "somebody";
        for (const json& user : json::parse(users_)) {
            if (user["userId"] == (*session)->userId) name = user["name"];
        }
    }
    app["user"] = name;
    const auto chosen = companion::chosenAssets(*runtime_);
    ordered_json assets = ordered_json::array();
    for (const auto& [type, list] : shelves) {
        if (!chosen) break;
        for (const PropertyList& record : (*chosen).*list)
            assets.push_back({{"type", type}, {"key", keyOf(record)}, {"title", titleOf(record)}});
    }
    app["assets"] = assets;
    const auto feed = companion::newsFeedAddress(*runtime_);
    app["news"] = feed && *feed ? **feed : "";
    if (!chosen) app["error"] = "The settings store cannot be used: " + chosen.error().message;
    return app;
}

std::string HomeScreen::stateText() {
    const ExtensionStatistics statistics = extension_->statistics();
    ordered_json state{
        {"widgets", widgetsJson()}, {"app", phoneAppJson()}, {"mode", description(schedule_->mode())}};
    const double rate = schedule_->clockRate();
    state["clock"] = {{"now", platform::formatInstant(clock_.now())}, {"rate", rate}};
    state["extension"] = {{"process", extension_->processId()}, {"peakRssKiB", statistics.peakRssKiB}};
    state["hasDemo"] = options_.demoOrigin.has_value();
    const std::lock_guard lock(mutex_);
    state["environment"] = environment_;
    state["fault"] = fault_;
    return dumped(state);
}

std::string HomeScreen::choicesText() const {
    ordered_json kinds = ordered_json::array();
    for (const WidgetListing& widget : gallery_) {
        ordered_json families = ordered_json::array();
        for (const WidgetFamily family : widget.families) families.push_back(platform::description(family));
        kinds.push_back({{"kind", widget.kind},
                         {"displayName", widget.displayName},
                         {"description", widget.description},
                         {"families", families}});
    }
    ordered_json users = ordered_json::array();
    for (const json& user : json::parse(users_))
        users.push_back({{"name", user["name"]}, {"description", user["description"]}});
    ordered_json assets = ordered_json::array();
    for (const json& asset : json::parse(catalogue_))
        assets.push_back(
            {{"type", asset["type"]}, {"key", asset["priceIdentifier"]}, {"title", asset["title"]}});
    return dumped({{"gallery", kinds}, {"users", users}, {"assets", assets}});
}

std::string HomeScreen::ledgerText(std::uint64_t after) const {
    ordered_json entries = ordered_json::array();
    for (const LedgerEntry& entry : ledger_.entries(after)) entries.push_back(ledgerJson(entry));
    return dumped(entries);
}

std::optional<std::string> HomeScreen::inspectionText(int id) {
    const std::optional<WidgetState> state = schedule_->state(id);
    if (!state) return std::nullopt;
    ordered_json inspection{{"id", id},
                            {"policy", policyJson(state->policy)},
                            {"next", nextJson(state->next, schedule_->mode())},
                            {"lastError", state->lastError}};
    if (state->picture) {
        inspection["entry"] = ordered_json::parse(state->picture->entryJson, nullptr, false);
        inspection["tree"] = ordered_json::parse(studio_.laidOutText(state->picture->sitter), nullptr, false);
    }
    const std::lock_guard lock(mutex_);
    inspection["log"] = std::vector<std::string>(log_.begin(), log_.end());
    return dumped(inspection);
}

Result<std::string> HomeScreen::picture(int id, int scale) {
    const std::optional<WidgetState> state = schedule_->state(id);
    if (!state || !state->picture) return refusal("there is no picture yet");
    return studio_.png(state->picture->sitter, scale);
}

Result<std::string> HomeScreen::preview(const std::string& kind, WidgetFamily family, int scale) {
    const EntryQuestion question{.kind = kind,
                                 .family = family,
                                 .request = EntryRequest::snapshot,
                                 .isPreview = true,
                                 .wantsViews = true};
    auto answer = extension_->ask(question, WidgetSchedule::snapshotLimit);
    const bool isRedacted = !answer;
    if (!answer) {
        EntryQuestion simple = question;
        simple.request = EntryRequest::placeholder;
        answer = extension_->ask(simple, WidgetSchedule::placeholderLimit);
    }
    if (!answer) return tl::unexpected(answer.error());
    if (answer->entries.empty() || !answer->entries.front().view) return refusal("there is nothing to draw");
    return studio_.png({*answer->entries.front().view, kind, family, isRedacted}, scale);
}

std::string HomeScreen::dayText() {
    const std::lock_guard one(dayMutex_);
    ExtensionProcess extension(
        {.program = options_.extensionProgram, .arguments = options_.extensionArguments, .log = {}});
    const auto rows = lookThroughDay(extension, gallery_, clock_.now(), runtime_->calendar());
    std::vector<std::string> pictures;
    ordered_json list = ordered_json::array();
    for (const DayRow& row : rows) {
        ordered_json looks = ordered_json::array();
        for (const DayLook& look : row.looks) {
            looks.push_back({{"from", platform::formatInstant(look.from)},
                             {"cause", look.cause},
                             {"picture", pictures.size()}});
            pictures.push_back(studio_.png(look.sitter, 1).value_or(""));
        }
        list.push_back({{"kind", row.kind},
                        {"family", platform::description(row.family)},
                        {"questions", row.questions},
                        {"error", row.error},
                        {"looks", looks}});
    }
    const std::lock_guard lock(mutex_);
    dayPictures_ = std::move(pictures);
    return dumped(list);
}

std::optional<std::string> HomeScreen::dayPicture(std::size_t number) const {
    const std::lock_guard lock(mutex_);
    if (number >= dayPictures_.size()) return std::nullopt;
    return dayPictures_[number];
}

Result<void> HomeScreen::act(const json& request) {
    using Handler = Result<void> (HomeScreen::*)(const json&);
    static const std::map<std::string, Handler, std::less<>> handlers{
        {"place", &HomeScreen::place},      {"remove", &HomeScreen::remove},
        {"move", &HomeScreen::move},        {"reload", &HomeScreen::reload},
        {"theme", &HomeScreen::setTheme},   {"user", &HomeScreen::setUser},
        {"assets", &HomeScreen::setAssets}, {"environment", &HomeScreen::setEnvironment},
        {"news", &HomeScreen::setNews},     {"mode", &HomeScreen::setMode},
        {"clock", &HomeScreen::setClock},   {"fault", &HomeScreen::setFault},
        {"kill", &HomeScreen::kill},
    };
    const auto handler = handlers.find(textOf(request, "action"));
    if (handler == handlers.end()) return refusal("there is no such action");
    const Result<void> done = (this->*handler->second)(request);
    changed();
    return done;
}

Result<void> HomeScreen::place(const json& request) {
    const auto family = platform::widgetFamily(textOf(request, "family"));
    const auto listing = std::ranges::find(gallery_, textOf(request, "kind"), &WidgetListing::kind);
    if (!family || listing == gallery_.end() ||
        std::ranges::find(listing->families, *family) == listing->families.end())
        return refusal("there is no such widget");
    const std::lock_guard lock(mutex_);
    if (placements_.size() >= 60) return refusal("the home screen is full");
    placements_.push_back({++lastId_, listing->kind, *family});
    schedule_->place(lastId_, listing->kind, *family);
    return save();
}

Result<void> HomeScreen::remove(const json& request) {
    const int id = numberOf(request, "id", 0);
    const std::lock_guard lock(mutex_);
    if (std::erase_if(placements_, [id](const Placement& placement) { return placement.id == id; }) == 0)
        return refusal("there is no such widget");
    schedule_->remove(id);
    return save();
}

Result<void> HomeScreen::move(const json& request) {
    const std::lock_guard lock(mutex_);
    const auto found = std::ranges::find(placements_, numberOf(request, "id", 0), &Placement::id);
    if (found == placements_.end()) return refusal("there is no such widget");
    const Placement placement = *found;
    placements_.erase(found);
    const int index = std::clamp(numberOf(request, "index", 0), 0, static_cast<int>(placements_.size()));
    placements_.insert(placements_.begin() + index, placement);
    return save();
}

Result<void> HomeScreen::reload(const json& request) {
    const int id = numberOf(request, "id", 0);
    if (id == 0) {
        schedule_->reload(std::optional<std::string_view>(), Asker::person);
    } else {
        schedule_->reload(id, Asker::person);
    }
    return {};
}

Result<void> HomeScreen::setTheme(const json& request) {
    const std::string theme = std::to_string(numberOf(request, "theme", 0));
    for (const auto& [selector, argument] :
         {std::pair<const char*, std::string>{"setCurrentSelectedThemeTypeWithType:", theme},
          {"setReloadWidgetExtensionWithReload:", "true"}}) {
        if (const auto done = phoneApp_->call("ThemeManager", selector, {argument}); !done)
            return tl::unexpected(done.error());
    }
    const auto reloaded = phoneApp_->call("WidgetKitHelper", "reloadAllWidgets:", {"null"});
    if (!reloaded) return tl::unexpected(reloaded.error());
    return {};
}

Result<void> HomeScreen::setUser(const json& request) {
    const std::string name = textOf(request, "user");
    std::optional<companion::Session> session;
    for (const json& user : json::parse(users_)) {
        if (user["name"] == name)
            session = companion::Session{user["token"], user["userId"], user["userPortfolio"]};
    }
    if (!session && !name.empty()) return refusal("nobody of that name is known");
    if (const auto done = companion::setSession(*runtime_, session); !done) return done;
    for (const auto& [selector, arguments] :
         {std::pair<const char*, std::vector<std::string>>{"updatePortfolioArrayUserDefaults", {}},
          {"reloadAllWidgets:", {"PortfolioWidget"}}}) {
        if (const auto done = phoneApp_->call("WidgetKitHelper", selector, arguments); !done)
            return tl::unexpected(done.error());
    }
    return {};
}

Result<void> HomeScreen::setAssets(const json& request) {
    const auto found = request.find("keys");
    if (found == request.end() || !found->is_array() || found->size() > 200)
        return refusal("no list of assets");
    const auto before = companion::chosenAssets(*runtime_);
    if (!before) return tl::unexpected(before.error());

    // What the user has keeps its own record; what is new takes the catalogue's.
    std::map<std::string, std::pair<const Shelf*, PropertyList>> known;
    for (const json& asset : json::parse(catalogue_)) {
        const auto shelf = std::ranges::find(shelves, asset["type"].get<std::string>(), &Shelf::type);
        if (shelf != std::end(shelves)) known[asset["priceIdentifier"]] = {shelf, recordOf(asset)};
    }
    for (const Shelf& shelf : shelves) {
        for (const PropertyList& record : (*before).*(shelf.list)) known[keyOf(record)] = {&shelf, record};
    }
    companion::ChosenAssets chosen;
    for (const json& key : *found) {
        const auto record = key.is_string() ? known.find(key.get<std::string>()) : known.end();
        if (record == known.end()) return refusal("there is no such asset");
        (chosen.*(record->second.first->list)).push_back(record->second.second);
    }
    if (const auto done = companion::setChosenAssets(*runtime_, chosen); !done) return done;
    const auto reloaded = phoneApp_->call("WidgetKitHelper", "reloadAllWidgets:", {"PerchWidget"});
    if (!reloaded) return tl::unexpected(reloaded.error());
    return {};
}

Result<void> HomeScreen::setEnvironment(const json& request) {
    const std::string environment = textOf(request, "environment");
    if (environment != "prod" && environment != "staging") return refusal("there is no such environment");
    if (const auto written = writeInformation(environment); !written) return written;
    {
        const std::lock_guard lock(mutex_);
        environment_ = environment;
    }
    // The flag is read once per process: a new child reads the new one.
    extension_->end();
    schedule_->reload(std::optional<std::string_view>(), Asker::person);
    return {};
}

Result<void> HomeScreen::setNews(const json& request) {
    const std::string address = textOf(request, "address");
    const auto done =
        companion::setNewsFeedAddress(*runtime_, address.empty() ? std::nullopt : std::optional(address));
    if (!done) return done;
    const auto reloaded = phoneApp_->call("WidgetKitHelper", "reloadAllWidgets:", {"NewsWidget"});
    if (!reloaded) return tl::unexpected(reloaded.error());
    return {};
}

Result<void> HomeScreen::setMode(const json& request) {
    const std::string mode = textOf(request, "mode");
    if (mode != "live" && mode != "phone") return refusal("there is no such mode");
    schedule_->setMode(mode == "live" ? ReloadMode::live : ReloadMode::phone);
    return {};
}

Result<void> HomeScreen::setClock(const json& request) {
    const auto rate = request.find("rate");
    const std::string instant = textOf(request, "instant");
    if (instant.empty() && rate == request.end()) {
        schedule_->setClock(std::nullopt, 1.0);
        return {};
    }
    const auto moment = instant.empty() ? clock_.now() : platform::parseInstant(instant);
    const double speed = rate != request.end() && rate->is_number() ? rate->get<double>() : 0.0;
    if (!moment || !(speed >= 0.0 && speed <= 3600.0)) return refusal("that is no time to set");
    schedule_->setClock(*moment, speed);
    return {};
}

Result<void> HomeScreen::setFault(const json& request) {
    const std::string fault = textOf(request, "fault");
    if (const auto done = askDemo("/demo/fault", fault); !done) return tl::unexpected(done.error());
    {
        const std::lock_guard lock(mutex_);
        fault_ = fault;
    }
    schedule_->reload(std::optional<std::string_view>(), Asker::person);
    return {};
}

Result<void> HomeScreen::kill(const json&) {
    const int process = extension_->processId();
    if (process <= 0) return refusal("the extension is not running");
    ::kill(process, SIGKILL);
    noteLog("the extension was killed from the home screen");
    // Somebody who kills it wants to see what follows: the next question starts it anew.
    schedule_->reload(std::optional<std::string_view>(), Asker::app);
    return {};
}

std::string HomeScreen::answerProcess(std::string_view question) {
    if (question == "placed") {
        std::string answer = "ok\n";
        const std::lock_guard lock(mutex_);
        for (const Placement& placement : placements_)
            answer += placement.kind + " " + std::string(platform::description(placement.family)) + "\n";
        return answer;
    }
    if (question == "reload" || question.starts_with("reload ")) {
        noticeUser();
        schedule_->reload(question == "reload" ? std::nullopt : std::optional(question.substr(7)),
                          Asker::app);
        changed();
        return "ok\n";
    }
    if (question.starts_with("user ")) {
        const std::string_view name = question.substr(5);
        const auto done = setUser({{"user", name == "none" ? "" : name}});
        changed();
        return done ? "ok\n" : "error\n" + done.error().message;
    }
    if (question.starts_with("why ")) {
        const std::string_view kind = question.substr(4);
        if (std::ranges::find(gallery_, kind, &WidgetListing::kind) == gallery_.end())
            return "error\nthere is no such widget";
        std::vector<LedgerEntry> entries = ledger_.entries(0, kind);
        std::string answer = "ok\n";
        const std::size_t first = entries.size() > 20 ? entries.size() - 20 : 0;
        for (std::size_t i = first; i < entries.size(); ++i) answer += ledgerLine(entries[i]) + "\n";
        return answer;
    }
    return "error\nthe question makes no sense";
}

}  // namespace host
