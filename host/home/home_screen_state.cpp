// What the page is told.

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include "companion/chosen_assets.h"
#include "companion/deep_link.h"
#include "companion/user_choices.h"
#include "host/home/home_screen.h"
#include "host/home/page_answers.h"
#include "platform/view/view_json.h"

namespace host {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;
using platform::PropertyList;
using platform::WidgetFamily;

constexpr int galleryScale = 3;

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

ordered_json linkJson(const std::string& url, const Rect& frame, const std::string& name) {
    const companion::DeepLink link = companion::parseDeepLink(url);
    ordered_json parameters = ordered_json::array();
    for (const auto& [key, value] : link.parameters) parameters.push_back({{"name", key}, {"value", value}});
    return {{"url", url},
            {"name", name.empty() ? link.destination : name},
            {"destination", link.destination},
            {"parameters", parameters},
            {"frame", {{"x", frame.x}, {"y", frame.y}, {"width", frame.width}, {"height", frame.height}}}};
}

ordered_json describedPicture(const ShownPicture& picture, WidgetRenderer& renderer) {
    const DisplayList list = renderer.displayList(picture.widget, galleryScale);
    ordered_json links = ordered_json::array();
    const Rect whole{0, 0, list.size.width, list.size.height};
    if (list.widgetURL) links.push_back(linkJson(*list.widgetURL, whole, nameOf(whole, list)));
    for (const LinkArea& area : list.links) {
        if (area.frame.width > 0 && area.frame.height > 0)
            links.push_back(linkJson(area.url, area.frame, nameOf(area.frame, list)));
    }
    return {{"version", picture.version},
            {"isPlaceholder", picture.widget.isRedacted},
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
            {"requester", description(next->requester)},
            {"hold", reason(next->hold, mode)}};
}

}  // namespace

std::string HomeScreen::displayName(const std::string& kind) const {
    const auto listing = std::ranges::find(gallery_, kind, &WidgetListing::kind);
    return listing == gallery_.end() ? kind : listing->displayName;
}

ordered_json HomeScreen::pictureJson(int id, const std::shared_ptr<const ShownPicture>& picture) {
    if (!picture) return nullptr;
    {
        const std::lock_guard lock(cachedPicturesMutex_);
        const auto told = cachedPictures_.find(id);
        if (told != cachedPictures_.end() && told->second.picture == picture) return *told->second.json;
    }
    const auto made = std::make_shared<const ordered_json>(describedPicture(*picture, renderer_));
    const std::lock_guard lock(cachedPicturesMutex_);
    cachedPictures_[id] = {picture, made};
    return *made;
}

ordered_json HomeScreen::widgetsJson() {
    std::map<int, WidgetState> states;
    for (WidgetState& state : schedule_->states()) states.emplace(state.id, std::move(state));
    {
        const std::lock_guard lock(cachedPicturesMutex_);
        std::erase_if(cachedPictures_, [&](const auto& told) { return !states.contains(told.first); });
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
        widgets.push_back({{"id", state.id},
                           {"kind", state.kind},
                           {"displayName", displayName(state.kind)},
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
    for (const auto& [type, list] : companion::assetKinds) {
        if (!chosen) break;
        for (const PropertyList& record : (*chosen).*list)
            assets.push_back(
                {{"type", type}, {"key", companion::keyOf(record)}, {"title", companion::titleOf(record)}});
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
        inspection["tree"] =
            ordered_json::parse(renderer_.laidOutText(state->picture->widget), nullptr, false);
    }
    const std::lock_guard lock(mutex_);
    inspection["log"] = std::vector<std::string>(log_.begin(), log_.end());
    return dumped(inspection);
}

}  // namespace host
