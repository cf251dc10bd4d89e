#pragma once

// What is to be painted, in painting order, with every frame: the last value before pixels. As JSON for
// programs and as text for people.

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

/// "14,54.3 49.3x13.3": the corner and the size, to a hundredth of a point.
std::string rectText(const Rect& rect);

/// One item on one line, without a line end: what it is, its frame, then what differs from the usual.
///
///     text "NIFTY 50" 14,54.3 49.3x13.3 SFCompactDisplay-Medium 13 #FFFFFF
///     text "a" 14,20 12x10 system 10 bold #FFFFFF + image "Up" limit 2 lines 2 alignment center
///     image "Logo" 35,40 30x20 radius 4 within 40,40 20x20
///     picture 5120 bytes 9f86d081884c7d65 14,10 60x40
///     fill #FF0000@0.5 45,45 10x10 own 0.5 opacity 0.25
///     stroke #FF0000 45,45 10x10 width 1
///     begin 0.5
///     end 0.5
///
/// "own" and "opacity" are left out where they are 1. Every clip has its own "within". A text's first
/// run comes before the frame and the others follow after "+". The number after the bytes is a hash.
std::string displayItemText(const DisplayItem& item);

/// The widget on the first line, then its own address, its links and its items, one a line:
///
///     NewsWidget systemMedium 338x158 background #1A1A21
///     opens https://example.com
///     link 14,54.3 49.3x13.3 https://example.com/1
///
/// Every line ends with a line end.
std::string displayListText(const DisplayList& list);

}  // namespace host
