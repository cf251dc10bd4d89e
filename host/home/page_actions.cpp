#include "host/home/page_actions.h"
#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include "companion/user_choices.h"

namespace host {
namespace {

using json = nlohmann::ordered_json;
using platform::Result;

std::string textOf(const json& request, const char* key) {
    const auto found = request.find(key);
    return found != request.end() && found->is_string() ? found->get<std::string>() : "";
}

int numberOf(const json& request, const char* key) {
    const auto found = request.find(key);
    const bool isSmall = found != request.end() && found->is_number_integer() &&
                         found->get<double>() > -1e6 && found->get<double>() < 1e6;
    return isSmall ? found->get<int>() : 0;
}

Result<void> place(HomeScreen& home, const json& request) {
    const auto family = platform::widgetFamily(textOf(request, "family"));
    if (!family) return refusal("unknown widget family \"" + textOf(request, "family") + "\"");
    return home.place(textOf(request, "kind"), *family);
}

Result<void> remove(HomeScreen& home, const json& request) { return home.remove(numberOf(request, "id")); }

Result<void> move(HomeScreen& home, const json& request) {
    return home.move(numberOf(request, "id"), numberOf(request, "index"));
}

Result<void> reload(HomeScreen& home, const json& request) {
    const int id = numberOf(request, "id");
    if (id == 0) {
        home.schedule().reload(std::nullopt, Requester::person);
    } else {
        home.schedule().reload(id, Requester::person);
    }
    return {};
}

Result<void> setTheme(HomeScreen& home, const json& request) {
    return home.phoneApp().setTheme(numberOf(request, "theme"));
}

Result<void> setUser(HomeScreen& home, const json& request) { return signIn(home, textOf(request, "user")); }

Result<void> setAssets(HomeScreen& home, const json& request) {
    const auto found = request.find("keys");
    if (found == request.end() || !found->is_array() || found->size() > 200)
        return refusal("a list of at most 200 assets is needed");
    const auto before = TRY(companion::chosenAssets(home.runtime()));

    // An asset that the user has keeps its record; a new one takes the catalogue's.
    std::map<std::string, std::pair<companion::AssetList, platform::PropertyList>> known;
    for (const companion::AssetKind& kind : companion::assetKinds) {
        for (const companion::DemoAsset& asset : home.assets()) {
            if (asset.type == kind.type) known[asset.key] = {kind.list, asset.record};
        }
    }
    for (const companion::AssetKind& kind : companion::assetKinds) {
        for (const platform::PropertyList& record : (before).*kind.list)
            known[companion::keyOf(record)] = {kind.list, record};
    }
    companion::ChosenAssets chosen;
    for (const json& key : *found) {
        const auto asset = key.is_string() ? known.find(key.get<std::string>()) : known.end();
        if (asset == known.end()) return refusal("unknown asset " + key.dump());
        (chosen.*asset->second.first).push_back(asset->second.second);
    }
    return home.phoneApp().chooseAssets(chosen);
}

Result<void> setEnvironment(HomeScreen& home, const json& request) {
    const std::string environment = textOf(request, "environment");
    if (environment != "prod" && environment != "staging")
        return refusal("unknown environment \"" + environment + "\"; choose prod or staging");
    return home.setEnvironment(environment);
}

Result<void> setNews(HomeScreen& home, const json& request) {
    const std::string address = textOf(request, "address");
    return home.phoneApp().setNewsFeed(address.empty() ? std::nullopt : std::optional(address));
}

Result<void> setMode(HomeScreen& home, const json& request) {
    const std::string mode = textOf(request, "mode");
    if (mode != "live" && mode != "phone")
        return refusal("unknown mode \"" + mode + "\"; choose live or phone");
    home.schedule().setMode(mode == "live" ? ReloadMode::live : ReloadMode::phone);
    return {};
}

Result<void> setClock(HomeScreen& home, const json& request) {
    const auto rate = request.find("rate");
    const std::string instant = textOf(request, "instant");
    if (instant.empty() && rate == request.end()) {
        home.schedule().setClock(std::nullopt, 1.0);
        return {};
    }
    const auto moment = instant.empty() ? home.now() : platform::parseInstant(instant);
    const double speed = rate != request.end() && rate->is_number() ? rate->get<double>() : 0.0;
    if (!moment) return refusal("\"" + instant + "\" is not a time such as 2026-11-22T09:00:00Z");
    if (!(speed >= 0.0 && speed <= 3600.0)) return refusal("the clock runs at 0 to 3600 times its speed");
    home.schedule().setClock(moment, speed);
    return {};
}

Result<void> setFault(HomeScreen& home, const json& request) {
    return home.setFault(textOf(request, "fault"));
}

Result<void> kill(HomeScreen& home, const json&) { return home.killExtension(); }

}  // namespace

Result<void> signIn(HomeScreen& home, const std::string& name) {
    if (name.empty()) return home.phoneApp().signIn(std::nullopt);
    const auto user = std::ranges::find(home.users(), name, &companion::DemoUser::name);
    if (user == home.users().end()) return refusal("unknown user \"" + name + "\"");
    return home.phoneApp().signIn(user->session);
}

Result<void> act(HomeScreen& home, const json& request) {
    using Handler = Result<void> (*)(HomeScreen&, const json&);
    static const std::map<std::string, Handler, std::less<>> handlers{
        {"place", place},    {"remove", remove}, {"move", move},        {"reload", reload},
        {"theme", setTheme}, {"user", setUser},  {"assets", setAssets}, {"environment", setEnvironment},
        {"news", setNews},   {"mode", setMode},  {"clock", setClock},   {"fault", setFault},
        {"kill", kill}};
    const auto handler = handlers.find(textOf(request, "action"));
    if (handler == handlers.end()) return refusal("unknown action \"" + textOf(request, "action") + "\"");
    const Result<void> done = handler->second(home, request);
    home.changed();
    return done;
}

}  // namespace host
