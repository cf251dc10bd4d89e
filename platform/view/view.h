#pragma once

// The immutable tree of views that a widget answers with: built by the widget, archived into a
// message, laid out and drawn by a host.

#include <concepts>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>
#include "platform/base/bytes.h"
#include "platform/base/color.h"
#include "platform/view/screen.h"

namespace platform {

// All lengths are in points.

inline constexpr double infinity = std::numeric_limits<double>::infinity();

enum class HorizontalAlignment { leading, center, trailing };
enum class VerticalAlignment { top, center, bottom, firstTextBaseline, lastTextBaseline };

struct Alignment {
    HorizontalAlignment horizontal = HorizontalAlignment::center;
    VerticalAlignment vertical = VerticalAlignment::center;

    bool operator==(const Alignment&) const = default;
};

struct EdgeInsets {
    double top = 0.0;
    double leading = 0.0;
    double bottom = 0.0;
    double trailing = 0.0;

    bool operator==(const EdgeInsets&) const = default;
};

enum class RoundedCornerStyle { circular, continuous };
enum class ContentMode { fit, fill };
enum class FontWeight { regular, medium, bold };

/// Which numbers a member may hold.
struct NumberLimits {
    double least = std::numeric_limits<double>::lowest();
    double most = std::numeric_limits<double>::max();
    bool mayBeInfinite = false;
};

struct Font {
    /// "system" for the platform's own.
    std::string name = "system";
    double size = 17.0;
    FontWeight weight = FontWeight::regular;

    static Font system(double size, FontWeight weight = FontWeight::regular) {
        return {.name = "system", .size = size, .weight = weight};
    }
    /// A font by its own name; its weight is in the name.
    static Font custom(std::string name, double size) { return {.name = std::move(name), .size = size}; }

    static void fields(auto& self, auto& field) {
        // More than any widget needs; glyphs of any size would cost any amount of memory.
        constexpr double largestSize = 1000.0;
        field("name", self.name);
        field("size", self.size, NumberLimits{.least = 0.0, .most = largestSize});
        field("weight", self.weight);
    }
    bool operator==(const Font&) const = default;
};

/// What comes down the tree from the widget's surroundings.
struct EnvironmentValues {
    WidgetFamily widgetFamily = WidgetFamily::systemSmall;
    int osVersion = 18;
};

class View;

/// A piece of a text: characters in one font and colour, or a picture that stands on the baseline.
struct TextRun {
    std::string text = {};
    Font font = {};
    /// Absent: the surrounding foreground colour, else the primary colour.
    std::optional<Color> color = std::nullopt;
    /// Name of a picture asset; then there is no text.
    std::optional<std::string> image = std::nullopt;

    static void fields(auto& self, auto& field) {
        field("image", self.image);
        if (self.image) return;
        field("text", self.text);
        field("font", self.font);
        field("color", self.color);
    }
    bool operator==(const TextRun&) const = default;
};

/// How many views a node holds: any number as "children", one as "content", or two as "content" and "layer".
enum class Children { none, any, content, contentAndLayer };

/// The kinds of nodes, each described once: `type` is its name in the JSON form, `holds` says which
/// children it has, and `fields` shows its members to a visitor in the order in which they are written.
///
/// A visitor takes `field(name, member)`, with `NumberLimits` where a number has any. A member with a default
/// is optional to a reader; a colour, a text or a list without one is required. `field.unlessZero` is for a
/// member that is only written when it differs from its type's zero.
namespace node {

struct VStack {
    static constexpr std::string_view type = "vstack";
    static constexpr Children holds = Children::any;
    HorizontalAlignment alignment = HorizontalAlignment::center;
    std::optional<double> spacing = std::nullopt;

    static void fields(auto& self, auto& field) {
        field("alignment", self.alignment)("spacing", self.spacing);
    }
    bool operator==(const VStack&) const = default;
};
struct HStack {
    static constexpr std::string_view type = "hstack";
    static constexpr Children holds = Children::any;
    VerticalAlignment alignment = VerticalAlignment::center;
    std::optional<double> spacing = std::nullopt;

    static void fields(auto& self, auto& field) {
        field("alignment", self.alignment)("spacing", self.spacing);
    }
    bool operator==(const HStack&) const = default;
};
struct ZStack {
    static constexpr std::string_view type = "zstack";
    static constexpr Children holds = Children::any;
    Alignment alignment = {};

    static void fields(auto& self, auto& field) { field("alignment", self.alignment); }
    bool operator==(const ZStack&) const = default;
};
/// Its children count as children of the stack around it.
struct Group {
    static constexpr std::string_view type = "group";
    static constexpr Children holds = Children::any;
    bool operator==(const Group&) const = default;
};
struct Text {
    static constexpr std::string_view type = "text";
    static constexpr Children holds = Children::none;
    std::vector<TextRun> runs = {};
    std::optional<int> lineLimit = std::nullopt;
    /// Of several lines within their box, which is as wide as the longest of them.
    HorizontalAlignment alignment = HorizontalAlignment::leading;

    static void fields(auto& self, auto& field) {
        field("runs", self.runs)("lineLimit", self.lineLimit).unlessZero("alignment", self.alignment);
    }
    bool operator==(const Text&) const = default;
};
/// An asset by its name; or bytes, with the name of an asset to draw when they are not a picture.
struct Image {
    static constexpr std::string_view type = "image";
    static constexpr Children holds = Children::none;
    std::string name = {};
    std::optional<Bytes> bytes = std::nullopt;
    bool isResizable = false;

    static void fields(auto& self, auto& field) {
        field.picture(self.name, self.bytes)("resizable", self.isResizable);
    }
    bool operator==(const Image&) const = default;
};
struct ColorFill {
    static constexpr std::string_view type = "color";
    static constexpr Children holds = Children::none;
    Color color = {};

    static void fields(auto& self, auto& field) { field("color", self.color); }
    bool operator==(const ColorFill&) const = default;
};
/// Not a node, but a member of one.
struct Stroke {
    Color color = {};
    double lineWidth = 1.0;
    double miterLimit = 10.0;

    static void fields(auto& self, auto& field) {
        field("color", self.color)("lineWidth", self.lineWidth)("miterLimit", self.miterLimit);
    }
    bool operator==(const Stroke&) const = default;
};
struct RoundedRectangle {
    static constexpr std::string_view type = "roundedRectangle";
    static constexpr Children holds = Children::none;
    double cornerRadius = 0.0;
    RoundedCornerStyle style = RoundedCornerStyle::circular;
    /// With neither fill nor stroke it is filled with the foreground colour.
    std::optional<Color> fill = std::nullopt;
    std::optional<Stroke> stroke = std::nullopt;

    static void fields(auto& self, auto& field) {
        field("cornerRadius", self.cornerRadius)("style", self.style);
        field("fill", self.fill)("stroke", self.stroke);
    }
    bool operator==(const RoundedRectangle&) const = default;
};
struct Divider {
    static constexpr std::string_view type = "divider";
    static constexpr Children holds = Children::none;
    bool operator==(const Divider&) const = default;
};
struct Spacer {
    static constexpr std::string_view type = "spacer";
    static constexpr Children holds = Children::none;
    std::optional<double> minLength = std::nullopt;

    static void fields(auto& self, auto& field) { field("minLength", self.minLength); }
    bool operator==(const Spacer&) const = default;
};
struct Padding {
    static constexpr std::string_view type = "padding";
    EdgeInsets insets = {};

    static void fields(auto& self, auto& field) {
        field.unlessZero("top", self.insets.top)
            .unlessZero("leading", self.insets.leading)
            .unlessZero("bottom", self.insets.bottom)
            .unlessZero("trailing", self.insets.trailing);
    }
    bool operator==(const Padding&) const = default;
};
/// Fixed when it has `width` or `height`, flexible otherwise.
struct Frame {
    static constexpr std::string_view type = "frame";
    std::optional<double> width = std::nullopt;
    std::optional<double> height = std::nullopt;
    std::optional<double> minWidth = std::nullopt;
    std::optional<double> maxWidth = std::nullopt;
    std::optional<double> minHeight = std::nullopt;
    std::optional<double> maxHeight = std::nullopt;
    Alignment alignment = {};

    static void fields(auto& self, auto& field) {
        constexpr NumberLimits flexible{.mayBeInfinite = true};
        field("width", self.width);
        field("height", self.height);
        field("minWidth", self.minWidth, flexible);
        field("maxWidth", self.maxWidth, flexible);
        field("minHeight", self.minHeight, flexible);
        field("maxHeight", self.maxHeight, flexible);
        field("alignment", self.alignment);
    }
    bool operator==(const Frame&) const = default;
};
struct Overlay {
    static constexpr std::string_view type = "overlay";
    static constexpr Children holds = Children::contentAndLayer;
    Alignment alignment = {};

    static void fields(auto& self, auto& field) { field("alignment", self.alignment); }
    bool operator==(const Overlay&) const = default;
};
struct Background {
    static constexpr std::string_view type = "background";
    static constexpr Children holds = Children::contentAndLayer;
    Alignment alignment = {};

    static void fields(auto& self, auto& field) { field("alignment", self.alignment); }
    bool operator==(const Background&) const = default;
};
struct ContainerBackground {
    static constexpr std::string_view type = "containerBackground";
    static constexpr Children holds = Children::contentAndLayer;
    Alignment alignment = {};

    static void fields(auto& self, auto& field) { field("alignment", self.alignment); }
    bool operator==(const ContainerBackground&) const = default;
};
struct ForegroundColor {
    static constexpr std::string_view type = "foregroundColor";
    Color color = {};

    static void fields(auto& self, auto& field) { field("color", self.color); }
    bool operator==(const ForegroundColor&) const = default;
};
struct Opacity {
    static constexpr std::string_view type = "opacity";
    double value = 1.0;

    static void fields(auto& self, auto& field) { field("value", self.value); }
    bool operator==(const Opacity&) const = default;
};
struct LayoutPriority {
    static constexpr std::string_view type = "layoutPriority";
    double value = 0.0;

    static void fields(auto& self, auto& field) { field("value", self.value); }
    bool operator==(const LayoutPriority&) const = default;
};
struct AspectRatio {
    static constexpr std::string_view type = "aspectRatio";
    /// Absent: the content's own.
    std::optional<double> ratio = std::nullopt;
    ContentMode contentMode = ContentMode::fit;

    static void fields(auto& self, auto& field) {
        field("ratio", self.ratio)("contentMode", self.contentMode);
    }
    bool operator==(const AspectRatio&) const = default;
};
struct ClipShape {
    static constexpr std::string_view type = "clipShape";
    double cornerRadius = 0.0;
    RoundedCornerStyle style = RoundedCornerStyle::circular;

    static void fields(auto& self, auto& field) {
        field("cornerRadius", self.cornerRadius)("style", self.style);
    }
    bool operator==(const ClipShape&) const = default;
};
/// Cuts what overflows. With `atChildEdge` the cut moves up to the bottom edge of the last child of the
/// content's column that fits whole, if one does.
struct Clipped {
    static constexpr std::string_view type = "clipped";
    bool atChildEdge = false;

    static void fields(auto& self, auto& field) { field.unlessZero("atChildEdge", self.atChildEdge); }
    bool operator==(const Clipped&) const = default;
};
struct IgnoresSafeArea {
    static constexpr std::string_view type = "ignoresSafeArea";
    bool operator==(const IgnoresSafeArea&) const = default;
};
struct FixedSize {
    static constexpr std::string_view type = "fixedSize";
    bool horizontal = true;
    bool vertical = true;

    static void fields(auto& self, auto& field) {
        field("horizontal", self.horizontal)("vertical", self.vertical);
    }
    bool operator==(const FixedSize&) const = default;
};
struct Link {
    static constexpr std::string_view type = "link";
    std::string url = {};

    static void fields(auto& self, auto& field) { field("url", self.url); }
    bool operator==(const Link&) const = default;
};
struct WidgetURL {
    static constexpr std::string_view type = "widgetURL";
    std::string url = {};

    static void fields(auto& self, auto& field) { field("url", self.url); }
    bool operator==(const WidgetURL&) const = default;
};

}  // namespace node

using NodeKind = std::variant<node::Group, node::VStack, node::HStack, node::ZStack, node::Text, node::Image,
                              node::ColorFill, node::RoundedRectangle, node::Divider, node::Spacer,
                              node::Padding, node::Frame, node::Overlay, node::Background,
                              node::ContainerBackground, node::ForegroundColor, node::Opacity,
                              node::LayoutPriority, node::AspectRatio, node::ClipShape, node::Clipped,
                              node::IgnoresSafeArea, node::FixedSize, node::Link, node::WidgetURL>;

/// A small immutable handle on a node: cheap to copy, safe on any thread. A modifier returns a new
/// view around this one; the order of modifiers is the order of wrapping.
class View {
public:
    /// An empty group: takes no place.
    View();
    explicit View(NodeKind kind, std::vector<View> children = {});
    /// A struct with a `body()` is a view.
    template <typename Body>
        requires requires(const Body& body) {
            { body.body() } -> std::convertible_to<View>;
        }
    View(const Body& body) : View(body.body()) {}  // NOLINT(*-explicit-*)

    const NodeKind& kind() const;
    const std::vector<View>& children() const;
    /// The first child of a modifier.
    const View& content() const { return children().front(); }
    /// The second child of an overlay, a background and a containerBackground.
    const View& layer() const { return children()[1]; }
    /// Whether both trees are the same, pictures' bytes included.
    bool operator==(const View& other) const;

    View padding(EdgeInsets insets) const;
    View padding(double allEdges) const;
    View frame(node::Frame frame) const;
    View overlay(const View& layer, Alignment alignment = {}) const;
    View background(const View& layer, Alignment alignment = {}) const;
    View containerBackground(const View& layer, Alignment alignment = {}) const;
    View foregroundColor(const Color& color) const;
    View opacity(double value) const;
    View layoutPriority(double value) const;
    View aspectRatio(std::optional<double> ratio, ContentMode contentMode) const;
    View clipShape(double cornerRadius, RoundedCornerStyle style) const;
    View clipped() const;
    View clippedAtChildEdge() const;
    View ignoresSafeArea() const;
    View fixedSize(bool horizontal, bool vertical) const;
    View widgetURL(std::string url) const;

private:
    struct Node;
    std::shared_ptr<const Node> node_;
};

struct StackOptions {
    HorizontalAlignment alignment = HorizontalAlignment::center;
    /// Absent: the platform's default, by what stands on both sides of a gap.
    std::optional<double> spacing = std::nullopt;
};
struct RowOptions {
    VerticalAlignment alignment = VerticalAlignment::center;
    std::optional<double> spacing = std::nullopt;
};

/// A column, a row, a pile. Children may be a `std::vector<View>` or any number of views.
View VStack(StackOptions options, std::vector<View> children);
View HStack(RowOptions options, std::vector<View> children);
View ZStack(Alignment alignment, std::vector<View> children);
View Group(std::vector<View> children);

template <std::convertible_to<View>... Children>
View VStack(StackOptions options, const Children&... children) {
    return VStack(options, std::vector<View>{View(children)...});
}
template <std::convertible_to<View>... Children>
View HStack(RowOptions options, const Children&... children) {
    return HStack(options, std::vector<View>{View(children)...});
}
template <std::convertible_to<View>... Children>
View ZStack(Alignment alignment, const Children&... children) {
    return ZStack(alignment, std::vector<View>{View(children)...});
}

/// Text with its fonts and colours; `a + b` is one text of both. Becomes a view by itself.
class Text {
public:
    explicit Text(std::string text, Font font = {});
    /// A picture asset as part of a text.
    static Text image(std::string name);

    Text foregroundColor(const Color& color) const;
    Text lineLimit(int lines) const;
    Text multilineTextAlignment(HorizontalAlignment alignment) const;
    friend Text operator+(const Text& first, const Text& second);

    View body() const;

private:
    Text() = default;
    std::vector<TextRun> runs_;
    std::optional<int> lineLimit_;
    HorizontalAlignment alignment_ = HorizontalAlignment::leading;
};

struct ImageOptions {
    bool isResizable = false;
};
View Image(std::string assetName, ImageOptions options = {});
View Image(Bytes bytes, std::string fallbackAssetName, ImageOptions options = {});
View ColorFill(const Color& color);
View RoundedRectangle(node::RoundedRectangle shape);
View Divider();
View Spacer(std::optional<double> minLength = std::nullopt);
/// A tap on the frame of `label` opens `url`, which must be an address.
View Link(std::string url, const View& label);

}  // namespace platform
