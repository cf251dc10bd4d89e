#include "host/home/placements.h"
#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <tuple>
#include <utility>
#include "platform/base/files.h"
#include "platform/json/json_document.h"

namespace host {
namespace {

constexpr int columns = 2;
constexpr int rows = 3;
constexpr std::size_t mostPlacements = 60;
constexpr std::size_t longestFile = 64U << 10;

tl::unexpected<platform::Error> placementError(const std::string& message) {
    return platform::failure("PlacementError", 1, message);
}

tl::unexpected<platform::Error> unknownPlacement() {
    return placementError("that widget is not on the home screen any more");
}

using Unit = std::tuple<int, int, int>;

/// The units that a widget covers there; empty when it does not fit on the page.
std::vector<Unit> unitsAt(const GridPlace& place, platform::WidgetFamily family) {
    const int width = family == platform::WidgetFamily::systemSmall ? 1 : 2;
    const int height = family == platform::WidgetFamily::systemLarge ? 2 : 1;
    if (place.column + width > columns || place.row + height > rows) return {};
    std::vector<Unit> units;
    for (int column = 0; column < width; ++column) {
        for (int row = 0; row < height; ++row)
            units.emplace_back(place.page, place.row + row, place.column + column);
    }
    return units;
}

GridPlace firstFree(int page, platform::WidgetFamily family, const std::set<Unit>& taken) {
    for (GridPlace place{page, 0, 0};; ++place.page) {
        for (place.row = 0; place.row < rows; ++place.row) {
            for (place.column = 0; place.column < columns; ++place.column) {
                const std::vector<Unit> units = unitsAt(place, family);
                const bool isFree = !units.empty() && std::ranges::none_of(units, [&](const Unit& unit) {
                    return taken.contains(unit);
                });
                if (isFree) return place;
            }
        }
    }
}

platform::Result<std::vector<Placement>> placementsIn(const std::filesystem::path& file) {
    const auto text = platform::readFile(file, longestFile);
    if (!text) return placementError(text.error().message);
    std::vector<Placement> placements;
    try {
        const auto saved = platform::parsedJson(*text).value_or(nullptr);
        for (const auto& record : saved.at("widgets")) {
            const auto family = platform::widgetFamily(record.at("family").get<std::string>());
            if (!family || placements.size() == mostPlacements)
                return placementError(file.string() + " does not hold a home screen");
            placements.push_back({0, record.at("kind"), *family});
        }
    } catch (const nlohmann::json::exception&) {
        return placementError(file.string() + " does not hold a home screen");
    }
    return placements;
}

/// Gives the file another name, which it answers. The next save would overwrite it.
std::filesystem::path setAside(const std::filesystem::path& file) {
    std::error_code error;
    std::filesystem::path aside = file;
    for (int number = 1; std::filesystem::exists(std::filesystem::symlink_status(aside, error)); ++number)
        (aside = file) += ".damaged-" + std::to_string(number);
    std::filesystem::rename(file, aside, error);
    return aside;
}

}  // namespace

std::vector<GridPlace> packed(const std::vector<Placement>& placements) {
    std::vector<GridPlace> places;
    std::set<Unit> taken;
    int page = 0;
    for (const Placement& placement : placements) {
        const GridPlace place = firstFree(page, placement.family, taken);
        for (const Unit& unit : unitsAt(place, placement.family)) taken.insert(unit);
        page = place.page;
        places.push_back(place);
    }
    return places;
}

platform::Result<void> Placements::load(std::vector<Placement> initial) {
    const std::lock_guard lock(mutex_);
    platform::Result<void> outcome;
    std::error_code error;
    if (std::filesystem::symlink_status(file_, error).type() != std::filesystem::file_type::not_found) {
        if (auto read = placementsIn(file_)) {
            initial = *std::move(read);
        } else {
            outcome = placementError(read.error().message + "; it is kept as " + setAside(file_).string());
        }
    }
    placements_ = std::move(initial);
    lastId_ = 0;
    for (Placement& placement : placements_) placement.id = ++lastId_;
    return outcome;
}

std::vector<Placement> Placements::all() const {
    const std::lock_guard lock(mutex_);
    return placements_;
}

platform::Result<Placement> Placements::add(std::string kind, platform::WidgetFamily family) {
    const std::lock_guard lock(mutex_);
    if (placements_.size() >= mostPlacements) return placementError("the home screen is full");
    placements_.push_back({++lastId_, std::move(kind), family});
    return save().map([this] { return placements_.back(); });
}

platform::Result<void> Placements::remove(int id) {
    const std::lock_guard lock(mutex_);
    if (std::erase_if(placements_, [id](const Placement& each) { return each.id == id; }) == 0)
        return unknownPlacement();
    return save();
}

platform::Result<void> Placements::move(int id, int index) {
    const std::lock_guard lock(mutex_);
    const auto found = std::ranges::find(placements_, id, &Placement::id);
    if (found == placements_.end()) return unknownPlacement();
    Placement placement = std::move(*found);
    placements_.erase(found);
    index = std::clamp(index, 0, static_cast<int>(placements_.size()));
    placements_.insert(placements_.begin() + index, std::move(placement));
    return save();
}

platform::Result<void> Placements::save() const {
    nlohmann::ordered_json widgets = nlohmann::ordered_json::array();
    for (const Placement& placement : placements_)
        widgets.push_back({{"kind", placement.kind}, {"family", platform::description(placement.family)}});
    const std::string text = nlohmann::ordered_json{{"widgets", widgets}}.dump(2) + "\n";
    const auto written = platform::writeFile(file_, text);
    return written ? written : placementError(written.error().message);
}

}  // namespace host
