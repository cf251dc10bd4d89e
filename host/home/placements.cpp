#include "host/home/placements.h"
#include <fcntl.h>
#include <unistd.h>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <tuple>

namespace host {

namespace {

constexpr int columns = 2;
constexpr int rows = 3;
constexpr std::size_t mostPlacements = 100;

tl::unexpected<platform::Error> placementError(const std::string& message) {
    return platform::failure("PlacementError", 1, message);
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

platform::Result<std::vector<Placement>> loadPlacements(const std::filesystem::path& file) {
    std::error_code error;
    if (!std::filesystem::exists(file, error)) return std::vector<Placement>();
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    std::vector<Placement> placements;
    try {
        const auto saved = nlohmann::json::parse(text.str());
        for (const auto& record : saved.at("widgets")) {
            const auto family = platform::widgetFamily(record.at("family").get<std::string>());
            if (!family || placements.size() == mostPlacements)
                return placementError("it holds what is no widget");
            placements.push_back({static_cast<int>(placements.size()) + 1, record.at("kind"), *family});
        }
    } catch (const std::exception& exception) {
        return placementError(exception.what());
    }
    return placements;
}

platform::Result<void> savePlacements(const std::filesystem::path& file,
                                      const std::vector<Placement>& placements) {
    nlohmann::ordered_json widgets = nlohmann::ordered_json::array();
    for (const Placement& placement : placements)
        widgets.push_back({{"kind", placement.kind}, {"family", platform::description(placement.family)}});
    const std::string text = nlohmann::ordered_json{{"widgets", widgets}}.dump(2) + "\n";

    const std::filesystem::path draft = file.string() + ".new";
    const int descriptor = ::open(draft.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (descriptor < 0) return placementError("cannot write " + draft.string());
    const bool isWritten = ::write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    ::close(descriptor);
    if (!isWritten || std::rename(draft.c_str(), file.c_str()) != 0)
        return placementError("cannot write " + file.string());
    return {};
}

}  // namespace host
