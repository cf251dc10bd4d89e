#include "host/home/page_state.h"
#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>
#include "companion/deep_link.h"
#include "companion/user_choices.h"
#include "host/paint/widget_outline.h"
#include "platform/json/json_document.h"

namespace host {
namespace {

using nlohmann::ordered_json;
using platform::PropertyList;

constexpr int galleryScale = 3;

bool isWithin(const Rect& inner, const Rect& outer) {
    const double middleX = inner.x + inner.width / 2;
    const double middleY = inner.y + inner.height / 2;
    return middleX >= outer.x && middleX <= outer.x + outer.width && middleY >= outer.y &&
           middleY <= outer.y + outer.height;
}

/// The texts inside a tap area, as a screen reader would say them.
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

ordered_json nextJson(const std::optional<NextReload>& next, ReloadMode mode) {
    if (!next) return nullptr;
    return {{"due", platform::formatInstant(next->due)},
            {"at", platform::formatInstant(next->at.shown)},
            {"requester", description(next->requester)},
            {"hold", reason(next->hold, mode)}};
}

/// What a widget of that family looks like from outside.
ordered_json shapeJson(platform::WidgetFamily family, const platform::Screen& screen) {
    const platform::Size size = screen.widgetSize(family);
    return {{"family", platform::description(family)},
            {"width", size.width},
            {"height", size.height},
            {"outline", widgetOutline(size)}};
}

/// Bytes that are not UTF-8 are replaced.
std::string dumped(const ordered_json& value) {
    return value.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

}  // namespace

ordered_json policyJson(const std::optional<platform::TimelineReloadPolicy>& policy) {
    if (!policy) return nullptr;
    if (policy->kind == platform::TimelineReloadPolicy::Kind::atEnd) return "atEnd";
    return {{"after", platform::formatInstant(policy->date)}};
}

ordered_json pictureJson(const ShownPicture& picture, const DisplayList& list) {
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

std::string PageState::displayName(const std::string& kind) const {
    const auto listing = std::ranges::find(home_.gallery(), kind, &WidgetListing::kind);
    return listing == home_.gallery().end() ? kind : listing->displayName;
}

ordered_json PageState::cachedPictureJson(int id, const std::shared_ptr<const ShownPicture>& picture) {
    if (!picture) return nullptr;
    {
        const std::lock_guard lock(mutex_);
        const auto cached = pictures_.find(id);
        if (cached != pictures_.end() && cached->second.picture == picture) return *cached->second.json;
    }
    const auto json = std::make_shared<const ordered_json>(
        pictureJson(*picture, home_.renderer().displayList(picture->widget, galleryScale)));
    const std::lock_guard lock(mutex_);
    pictures_[id] = {picture, json};
    return *json;
}

ordered_json PageState::widgetJson(const WidgetState& state, const GridPlace& place, ReloadMode mode) {
    ordered_json json = shapeJson(state.family, home_.runtime().screen());
    json.update({{"id", state.id},
                 {"kind", state.kind},
                 {"displayName", displayName(state.kind)},
                 {"page", place.page},
                 {"column", place.column},
                 {"row", place.row},
                 {"picture", cachedPictureJson(state.id, state.picture)},
                 {"policy", policyJson(state.policy)},
                 {"next", nextJson(state.next, mode)},
                 {"isRunning", state.isRunning},
                 {"failures", state.failures},
                 {"lastError", state.lastError}});
    return json;
}

ordered_json PageState::widgetsJson() {
    std::map<int, WidgetState> states;
    for (WidgetState& state : home_.schedule().states()) states.emplace(state.id, std::move(state));
    {
        const std::lock_guard lock(mutex_);
        std::erase_if(pictures_, [&](const auto& cached) { return !states.contains(cached.first); });
    }
    const std::vector<Placement> placements = home_.placements();
    const std::vector<GridPlace> places = packed(placements);
    ordered_json widgets = ordered_json::array();
    for (std::size_t i = 0; i < placements.size(); ++i) {
        const auto found = states.find(placements[i].id);
        if (found != states.end())
            widgets.push_back(widgetJson(found->second, places[i], home_.schedule().mode()));
    }
    return widgets;
}

ordered_json PageState::phoneAppJson() const {
    const auto session = companion::session(home_.runtime());
    std::string name;
    if (session && *session) {
        const auto user = std::ranges::find_if(home_.users(), [&](const companion::DemoUser& each) {
            return each.session.userId == (*session)->userId;
        });
        name = user == home_.users().end() ? "somebody" : user->name;
    }
    const auto chosen = companion::chosenAssets(home_.runtime());
    ordered_json assets = ordered_json::array();
    for (const auto& [type, list] : companion::assetKinds) {
        if (!chosen) break;
        for (const PropertyList& record : (*chosen).*list)
            assets.push_back(
                {{"type", type}, {"key", companion::keyOf(record)}, {"title", companion::titleOf(record)}});
    }
    const auto feed = companion::newsFeedAddress(home_.runtime());
    ordered_json app{{"theme", home_.phoneApp().theme()},
                     {"user", name},
                     {"assets", assets},
                     {"news", feed && *feed ? **feed : ""}};
    if (!chosen) app["error"] = "The settings store cannot be used: " + chosen.error().message;
    return app;
}

std::string PageState::state() {
    return dumped(
        {{"widgets", widgetsJson()},
         {"app", phoneAppJson()},
         {"mode", description(home_.schedule().mode())},
         {"clock", {{"now", platform::formatInstant(home_.now())}, {"rate", home_.schedule().clockRate()}}},
         {"extension",
          {{"process", home_.extension().processId()},
           {"peakRssKiB", home_.extension().statistics().peakRssKiB}}},
         {"hasDemo", home_.hasDemo()},
         {"environment", home_.environment()},
         {"fault", home_.fault()}});
}

std::string PageState::choices() const {
    ordered_json kinds = ordered_json::array();
    for (const WidgetListing& widget : home_.gallery()) {
        ordered_json families = ordered_json::array();
        for (const auto family : widget.families)
            families.push_back(shapeJson(family, home_.runtime().screen()));
        kinds.push_back({{"kind", widget.kind},
                         {"displayName", widget.displayName},
                         {"description", widget.description},
                         {"families", families}});
    }
    ordered_json users = ordered_json::array();
    for (const companion::DemoUser& user : home_.users())
        users.push_back({{"name", user.name}, {"description", user.description}});
    ordered_json assets = ordered_json::array();
    for (const companion::DemoAsset& asset : home_.assets())
        assets.push_back({{"type", asset.type}, {"key", asset.key}, {"title", asset.title}});
    return dumped({{"gallery", kinds}, {"users", users}, {"assets", assets}});
}

std::string PageState::ledger(std::uint64_t after) const {
    ordered_json entries = ordered_json::array();
    for (const LedgerEntry& entry : home_.ledger().entries(after)) entries.push_back(ledgerJson(entry));
    return dumped(entries);
}

std::optional<std::string> PageState::inspection(int id) const {
    const std::optional<WidgetState> state = home_.schedule().state(id);
    if (!state) return std::nullopt;
    ordered_json inspection{{"id", id},
                            {"policy", policyJson(state->policy)},
                            {"next", nextJson(state->next, home_.schedule().mode())},
                            {"lastError", state->lastError}};
    if (state->picture) {
        inspection["entry"] = platform::parsedJson(state->picture->entryJson).value_or(nullptr);
        inspection["tree"] =
            platform::parsedJson(home_.renderer().laidOutText(state->picture->widget)).value_or(nullptr);
    }
    inspection["log"] = home_.log();
    return dumped(inspection);
}

std::string PageState::day() {
    std::vector<std::string> pictures;
    ordered_json list = ordered_json::array();
    for (const DayRow& row : home_.day()) {
        ordered_json looks = ordered_json::array();
        for (const DayLook& look : row.looks) {
            looks.push_back({{"from", platform::formatInstant(look.from)},
                             {"cause", look.cause},
                             {"picture", pictures.size()}});
            pictures.push_back(home_.renderer().png(look.widget, 1).value_or(""));
        }
        list.push_back({{"displayName", displayName(row.kind)},
                        {"family", platform::description(row.family)},
                        {"questions", row.questions},
                        {"error", row.error},
                        {"looks", looks}});
    }
    const std::lock_guard lock(mutex_);
    dayPictures_ = std::move(pictures);
    return dumped(list);
}

std::optional<std::string> PageState::dayPicture(std::size_t number) const {
    const std::lock_guard lock(mutex_);
    if (number >= dayPictures_.size()) return std::nullopt;
    return dayPictures_[number];
}

}  // namespace host
