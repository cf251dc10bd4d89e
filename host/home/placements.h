#pragma once

// Which widgets are on the home screen, in which order, and where that puts them.

#include <filesystem>
#include <mutex>
#include <string>
#include <vector>
#include "platform/base/result.h"
#include "platform/view/screen.h"

namespace host {

struct Placement {
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

/// The place of each widget: as early as there is room, but never on a page before the widget that precedes
/// it.
std::vector<GridPlace> packed(const std::vector<Placement>& placements);

/// The widgets of one home screen, kept in a file that only its owner can read. Every change is saved before
/// the call returns. Any thread. Errors (domain "PlacementError") are for people to read.
class Placements {
public:
    explicit Placements(std::filesystem::path file) : file_(std::move(file)) {}

    /// Reads the file; without one, places `initial`. The same when it cannot be read or is damaged: then it
    /// is kept under another name, and the error says so.
    platform::Result<void> load(std::vector<Placement> initial);
    std::vector<Placement> all() const;

    platform::Result<Placement> add(std::string kind, platform::WidgetFamily family);
    platform::Result<void> remove(int id);
    /// To the index that it has afterwards, as near as there is one.
    platform::Result<void> move(int id, int index);

private:
    /// With the lock held.
    platform::Result<void> save() const;

    const std::filesystem::path file_;
    mutable std::mutex mutex_;
    std::vector<Placement> placements_;
    int lastId_ = 0;
};

}  // namespace host
