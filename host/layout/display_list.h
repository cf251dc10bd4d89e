#pragma once

// What is to be painted, in painting order, with every frame: the last value before pixels.

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <variant>
#include <vector>
#include "platform/base/bytes.h"
#include "platform/base/color.h"
#include "platform/view/screen.h"
#include "platform/view/view.h"

namespace host {

/// In points from the widget's top left corner.
struct Rect {
    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;

    bool operator==(const Rect&) const = default;
};

/// A region outside of which nothing of an item is painted.
struct Clip {
    Rect frame;
    double cornerRadius = 0.0;
    platform::RoundedCornerStyle style = platform::RoundedCornerStyle::circular;

    bool operator==(const Clip&) const = default;
};

struct TextItem {
    /// Every run has its colour.
    std::vector<platform::TextRun> runs;
    std::optional<int> lineLimit;
    int lines = 1;
    /// Of several lines within the frame.
    platform::HorizontalAlignment alignment = platform::HorizontalAlignment::leading;
};
/// An asset; or a picture's bytes when `bytes` are there. Layout has already put the fallback's name in
/// place of bytes that are no picture.
struct ImageItem {
    std::string name;
    std::optional<platform::Bytes> bytes;
    double cornerRadius = 0.0;
    platform::RoundedCornerStyle style = platform::RoundedCornerStyle::circular;
};
struct FillItem {
    platform::Color color;
    double cornerRadius = 0.0;
    platform::RoundedCornerStyle style = platform::RoundedCornerStyle::circular;
};
struct StrokeItem {
    platform::Color color;
    double lineWidth = 1.0;
    double miterLimit = 10.0;
    double cornerRadius = 0.0;
    platform::RoundedCornerStyle style = platform::RoundedCornerStyle::circular;
};
/// Opens or closes a group that is drawn apart and then blended as a whole.
struct GroupItem {
    bool isBegin = true;
    /// Of the group alone.
    double opacity = 1.0;
};

struct DisplayItem {
    std::variant<TextItem, ImageItem, FillItem, StrokeItem, GroupItem> content;
    Rect frame;
    /// The product of all opacities above the item, for those who read the list. Painting an item
    /// multiplies `ownOpacity` alone: groups with several items blend by their GroupItems.
    double opacity = 1.0;
    double ownOpacity = 1.0;
    std::vector<Clip> clips;
};

struct LinkArea {
    std::string url;
    /// Its tap area: the label's frame within all clips; empty when nothing of it can be seen.
    Rect frame;
};

struct DisplayList {
    std::string kind;
    std::string family;
    platform::Size size;
    /// Drawn in the widget's whole shape below all items.
    platform::Color background;
    std::optional<std::string> widgetURL;
    /// In painting order: of two that overlap the later one takes the tap.
    std::vector<LinkArea> links;
    std::vector<DisplayItem> items;
};

/// {"x","y","width","height"}
nlohmann::ordered_json rectJson(const Rect& rect);

/// The list as the command line prints it; GroupItems are left out, an image with bytes says how many,
/// and an item that is cut has its "clips".
nlohmann::ordered_json displayListJson(const DisplayList& list);

}  // namespace host
