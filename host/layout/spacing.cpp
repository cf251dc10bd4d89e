#include "host/layout/spacing.h"

#include <algorithm>
#include <cmath>

namespace host {
namespace {

namespace node = platform::node;

constexpr double defaultGap = 8.0;
/// The lower font's leading, which is 0 for every font that we know.
constexpr double gapBetweenTexts = 0.0;

constexpr EdgeSpacing plainEdge{.isSpacer = false, .isPlain = true, .text = {}};
constexpr EdgeSpacing spacerEdge{.isSpacer = true, .isPlain = false, .text = {}};

/// Every kind of preference that either has.
EdgeSpacing strongest(const EdgeSpacing& a, const EdgeSpacing& b) {
    EdgeSpacing both{a.isSpacer || b.isSpacer, a.isPlain || b.isPlain, a.text};
    if (b.text) both.text = std::max(*b.text, a.text.value_or(*b.text));
    return both;
}

NodeSpacing textSpacing(const node::Text& text, const Measurer& measurer) {
    const FontMetrics font = measurer.metrics(text.runs);
    const double scale = measurer.scale();
    const double tenth = std::ceil(0.1 * (font.ascent + font.descent) * scale) / scale;
    const double above = boundedLength(font.descent + tenth);
    const double below =
        boundedLength(std::max(font.ascent + font.descent + tenth - font.capHeight, tenth + font.descent));
    NodeSpacing spacing;
    spacing.top.text = above;
    spacing.bottom.text = below;
    return spacing;
}

NodeSpacing spacerSpacing(const std::optional<Axis>& axis) {
    NodeSpacing spacing;
    if (axis == Axis::vertical) spacing.top = spacing.bottom = spacerEdge;
    if (axis == Axis::horizontal) spacing.leading = spacing.trailing = spacerEdge;
    return spacing;
}

NodeSpacing paddedSpacing(NodeSpacing spacing, const platform::EdgeInsets& insets) {
    if (insets.top != 0.0) spacing.top = plainEdge;
    if (insets.leading != 0.0) spacing.leading = plainEdge;
    if (insets.bottom != 0.0) spacing.bottom = plainEdge;
    if (insets.trailing != 0.0) spacing.trailing = plainEdge;
    return spacing;
}

NodeSpacing framedSpacing(NodeSpacing spacing, const node::Frame& frame) {
    if (frame.width) spacing.leading = spacing.trailing = plainEdge;
    if (frame.height) spacing.top = spacing.bottom = plainEdge;
    return spacing;
}

NodeSpacing arrangedSpacing(std::vector<LayoutNode>& nodes, const LayoutNode& stack,
                            const Measurer& measurer) {
    NodeSpacing spacing;
    for (const std::size_t item : stack.items) {
        const NodeSpacing& of = spacingOf(nodes, item, measurer);
        const bool isFirst = item == stack.items.front();
        const bool isLast = item == stack.items.back();
        const bool isColumn = stack.arranging == Arranging::column;
        const bool isRow = stack.arranging == Arranging::row;
        // Along a stack's own axis only the outermost speak, across it all of them do.
        if (!isColumn || isFirst) spacing.top = strongest(spacing.top, of.top);
        if (!isColumn || isLast) spacing.bottom = strongest(spacing.bottom, of.bottom);
        if (!isRow || isFirst) spacing.leading = strongest(spacing.leading, of.leading);
        if (!isRow || isLast) spacing.trailing = strongest(spacing.trailing, of.trailing);
    }
    return spacing;
}

NodeSpacing makeSpacing(std::vector<LayoutNode>& nodes, const LayoutNode& node, const Measurer& measurer) {
    if (node.arranging != Arranging::none) return arrangedSpacing(nodes, node, measurer);
    if (const auto* text = std::get_if<node::Text>(node.kind)) return textSpacing(*text, measurer);
    if (std::holds_alternative<node::Spacer>(*node.kind)) return spacerSpacing(node.axis);
    if (node.children.empty()) return {plainEdge, plainEdge, plainEdge, plainEdge};
    const NodeSpacing& content = spacingOf(nodes, node.children.front(), measurer);
    if (const auto* padding = std::get_if<node::Padding>(node.kind)) {
        return paddedSpacing(content, padding->insets);
    }
    if (const auto* frame = std::get_if<node::Frame>(node.kind)) return framedSpacing(content, *frame);
    return content;
}

}  // namespace

double gapBetween(const EdgeSpacing& first, const EdgeSpacing& second) {
    std::optional<double> gap;
    const auto consider = [&](double distance) { gap = std::max(gap.value_or(distance), distance); };
    if (first.isSpacer || second.isSpacer) consider(0.0);
    if (first.text && second.text) consider(gapBetweenTexts);
    if (first.text && second.isPlain) consider(*first.text);
    if (first.isPlain && second.text) consider(*second.text);
    if (first.isPlain && second.isPlain) consider(defaultGap);
    return gap.value_or(defaultGap);
}

const NodeSpacing& spacingOf(std::vector<LayoutNode>& nodes, std::size_t index, const Measurer& measurer) {
    LayoutNode& node = nodes[index];
    if (!node.spacing) node.spacing = makeSpacing(nodes, node, measurer);
    return *node.spacing;
}

}  // namespace host
