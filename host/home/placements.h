#pragma once

// Which widgets stand on the home screen, in which order, and where that puts them.

#include <filesystem>
#include <string>
#include <vector>
#include "platform/base/result.h"
#include "platform/view/widget_family.h"

namespace host {

struct Placement {
    /// Stays the same as long as the widget is placed; never 0.
    int id = 0;
    std::string kind;
    platform::WidgetFamily family = platform::WidgetFamily::systemSmall;

    bool operator==(const Placement&) const = default;
};

/// A place in units of a small widget: a page is two of them wide and three high.
struct GridPlace {
    int page = 0;
    int column = 0;
    int row = 0;

    bool operator==(const GridPlace&) const = default;
};

/// Where each widget stands: each as near to the front as there is room, never on a page before the
/// widget that precedes it.
std::vector<GridPlace> packed(const std::vector<Placement>& placements);

/// Reads what `savePlacements` wrote. A file that is not there is an empty list; one that makes no sense
/// is an error (domain "PlacementError").
platform::Result<std::vector<Placement>> loadPlacements(const std::filesystem::path& file);
/// Whole or not at all, mode 0600.
platform::Result<void> savePlacements(const std::filesystem::path& file,
                                      const std::vector<Placement>& placements);

}  // namespace host
