#pragma once

// The immutable tree of views that a widget answers with: built by the widget, archived into a
// message, laid out and drawn by a host.

#include <concepts>
#include <cstdint>
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
#include "platform/view/widget_family.h"

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

    bool operator==(const TextRun&) const = default;
};

/// The kinds of nodes. `type` is the name in the JSON form.
namespace node {

struct VStack {
    static constexpr std::string_view type = "vstack";
    HorizontalAlignment alignment = HorizontalAlignment::center;
    std::optional<double> spacing = std::nullopt;
};
struct HStack {
    static constexpr std::string_view type = "hstack";
    VerticalAlignment alignment = VerticalAlignment::center;
    std::optional<double> spacing = std::nullopt;
};
struct ZStack {
    static constexpr std::string_view type = "zstack";
    Alignment alignment = {};
};
/// Its children are children of the stack around it.
struct Group {
    static constexpr std::string_view type = "group";
};
struct Text {
    static constexpr std::string_view type = "text";
    std::vector<TextRun> runs = {};
    std::optional<int> lineLimit = std::nullopt;
    /// Of several lines within their box, which is as wide as the longest of them.
    HorizontalAlignment alignment = HorizontalAlignment::leading;
};
/// An asset by name; or bytes, with the name of an asset that is drawn when they are no picture.
struct Image {
    static constexpr std::string_view type = "image";
    std::string name = {};
    std::optional<Bytes> bytes = std::nullopt;
    bool isResizable = false;
};
struct ColorFill {
    static constexpr std::string_view type = "color";
    Color color = {};
};
struct Stroke {
    Color color = {};
    double lineWidth = 1.0;
    double miterLimit = 10.0;
};
struct RoundedRectangle {
    static constexpr std::string_view type = "roundedRectangle";
    double cornerRadius = 0.0;
    RoundedCornerStyle style = RoundedCornerStyle::circular;
    /// With neither fill nor stroke it is filled with the foreground colour.
    std::optional<Color> fill = std::nullopt;
    std::optional<Stroke> stroke = std::nullopt;
};
struct Divider {
    static constexpr std::string_view type = "divider";
};
struct Spacer {
    static constexpr std::string_view type = "spacer";
    std::optional<double> minLength = std::nullopt;
};
// From here on: modifiers, with one child, the content. Of overlay, background and
// containerBackground the second child is the layer.
struct Padding {
    static constexpr std::string_view type = "padding";
    EdgeInsets insets = {};
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
};
struct Overlay {
    static constexpr std::string_view type = "overlay";
    Alignment alignment = {};
};
struct Background {
    static constexpr std::string_view type = "background";
    Alignment alignment = {};
};
struct ContainerBackground {
    static constexpr std::string_view type = "containerBackground";
    Alignment alignment = {};
};
struct ForegroundColor {
    static constexpr std::string_view type = "foregroundColor";
    Color color = {};
};
struct Opacity {
    static constexpr std::string_view type = "opacity";
    double value = 1.0;
};
struct LayoutPriority {
    static constexpr std::string_view type = "layoutPriority";
    double value = 0.0;
};
struct AspectRatio {
    static constexpr std::string_view type = "aspectRatio";
    /// Absent: the content's own.
    std::optional<double> ratio = std::nullopt;
    ContentMode contentMode = ContentMode::fit;
};
struct ClipShape {
    static constexpr std::string_view type = "clipShape";
    double cornerRadius = 0.0;
    RoundedCornerStyle style = RoundedCornerStyle::circular;
};
/// Cuts what overflows. With `atChildEdge` the cut moves up to the foot of the last child of the
/// content's column that stands whole, when one does.
struct Clipped {
    static constexpr std::string_view type = "clipped";
    bool atChildEdge = false;
};
struct IgnoresSafeArea {
    static constexpr std::string_view type = "ignoresSafeArea";
};
struct FixedSize {
    static constexpr std::string_view type = "fixedSize";
    bool horizontal = true;
    bool vertical = true;
};
struct Link {
    static constexpr std::string_view type = "link";
    std::string url = {};
};
struct WidgetURL {
    static constexpr std::string_view type = "widgetURL";
    std::string url = {};
};

}  // namespace node

using NodeKind = std::variant<node::Group, node::VStack, node::HStack, node::ZStack, node::Text, node::Image,
                              node::ColorFill, node::RoundedRectangle, node::Divider, node::Spacer,
                              node::Padding, node::Frame, node::Overlay, node::Background,
                              node::ContainerBackground, node::ForegroundColor, node::Opacity,
                              node::LayoutPriority, node::AspectRatio, node::ClipShape, node::Clipped,
                              node::IgnoresSafeArea, node::FixedSize, node::Link, node::WidgetURL>;

/// The options of `View::frame` and `View::flexibleFrame`.
struct FrameSize {
    std::optional<double> width = std::nullopt;
    std::optional<double> height = std::nullopt;
    Alignment alignment = {};
};
struct FlexibleFrameSize {
    std::optional<double> minWidth = std::nullopt;
    std::optional<double> maxWidth = std::nullopt;
    std::optional<double> minHeight = std::nullopt;
    std::optional<double> maxHeight = std::nullopt;
    Alignment alignment = {};
};

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
    /// The one child of a modifier.
    const View& content() const { return children().front(); }
    /// The decorating child of overlay, background and containerBackground.
    const View& layer() const { return children()[1]; }

    View padding(EdgeInsets insets) const;
    View padding(double allEdges) const;
    View frame(FrameSize size) const;
    View frame(FlexibleFrameSize size) const;
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
