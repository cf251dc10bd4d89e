// What the page asks for.

#include <algorithm>
#include <csignal>
#include <map>
#include <nlohmann/json.hpp>
#include "companion/chosen_assets.h"
#include "companion/user_choices.h"
#include "host/home/home_screen.h"
#include "host/home/page_answers.h"

namespace host {

namespace {

using nlohmann::json;
using platform::PropertyList;
using platform::Result;

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

PropertyList::Dictionary recordOf(const json& asset) {
    PropertyList::Dictionary record;
    for (const auto& [key, value] : asset.items()) record.emplace(key, value.get<std::string>());
    return record;
}

}  // namespace

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
    Placement placement = std::move(*found);
    placements_.erase(found);
    const int index = std::clamp(numberOf(request, "index", 0), 0, static_cast<int>(placements_.size()));
    placements_.insert(placements_.begin() + index, std::move(placement));
    return save();
}

Result<void> HomeScreen::reload(const json& request) {
    const int id = numberOf(request, "id", 0);
    if (id == 0) {
        schedule_->reload(std::optional<std::string_view>(), Requester::person);
    } else {
        schedule_->reload(id, Requester::person);
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
    std::map<std::string, std::pair<const companion::AssetKind*, PropertyList>> known;
    for (const json& asset : json::parse(catalogue_)) {
        const auto kind = std::ranges::find(companion::assetKinds, asset["type"].get<std::string>(),
                                            &companion::AssetKind::type);
        if (kind != std::end(companion::assetKinds))
            known[asset["priceIdentifier"]] = {kind, recordOf(asset)};
    }
    for (const companion::AssetKind& kind : companion::assetKinds) {
        for (const PropertyList& record : (*before).*(kind.list))
            known[companion::keyOf(record)] = {&kind, record};
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
    schedule_->reload(std::optional<std::string_view>(), Requester::person);
    return {};
}

Result<void> HomeScreen::setNews(const json& request) {
    const std::string address = textOf(request, "address");
    auto done =
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
    schedule_->setClock(moment, speed);
    return {};
}

Result<void> HomeScreen::setFault(const json& request) {
    const std::string fault = textOf(request, "fault");
    if (const auto done = askDemo("/demo/fault", fault); !done) return tl::unexpected(done.error());
    {
        const std::lock_guard lock(mutex_);
        fault_ = fault;
    }
    schedule_->reload(std::optional<std::string_view>(), Requester::person);
    return {};
}

Result<void> HomeScreen::kill(const json&) {
    const int process = extension_->processId();
    if (process <= 0) return refusal("the extension is not running");
    ::kill(process, SIGKILL);
    noteLog("the extension was killed from the home screen");
    // Somebody who kills it wants to see what follows: the next question starts it anew.
    schedule_->reload(std::optional<std::string_view>(), Requester::app);
    return {};
}

}  // namespace host
