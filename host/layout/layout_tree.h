#pragma once

// The views of a tree in one list, each before its children, with what layout keeps of them.

#include <cstddef>
#include <limits>
#include <optional>
#include <vector>
#include "host/layout/display_list.h"
#include "host/layout/measurer.h"
#include "platform/view/view.h"

namespace host {

enum class Axis { horizontal, vertical };

/// How a node with several children places them. `none` for everything else, and for a group whose
/// children belong to the stack around it.
enum class Arranging { none, row, column, pile };

/// An offered size; a dimension may be unspecified (absent) or infinite.
struct Proposal {
    std::optional<double> width;
    std::optional<double> height;

    bool operator==(const Proposal&) const = default;
};

/// A view's answer to a proposal. Baselines are counted from its top; absent without text.
struct Answer {
    platform::Size size;
    std::optional<double> firstBaseline;
    std::optional<double> lastBaseline;
};

/// What an edge prefers to keep between itself and a neighbour, by kinds; none of them: no preference.
struct EdgeSpacing {
    bool isSpacer = false;
    bool isPlain = false;
    /// Of a text's edge: its distance to a plain edge.
    std::optional<double> text;
};

struct NodeSpacing {
    EdgeSpacing top;
    EdgeSpacing leading;
    EdgeSpacing bottom;
    EdgeSpacing trailing;
};

struct LayoutNode {
    const platform::NodeKind* kind = nullptr;
    /// As in the view tree: of decorations the content first, then the layer.
    std::vector<std::size_t> children;
    /// An empty group, or what is wrapped around one: takes no place and no gap.
    bool isAbsent = false;
    Arranging arranging = Arranging::none;
    /// The axis of the stack that the view stands in, seen through modifiers.
    std::optional<Axis> axis;
    double priority = 0.0;
    /// What an arranging node places: its present children, with groups dissolved.
    std::vector<std::size_t> items;
    /// In points from the widget's top left corner; always finite.
    Rect frame;
    /// Of a text, as it stands in its frame.
    TextMeasure text;

    // What has been worked out already.
    std::optional<NodeSpacing> spacing;
    std::optional<std::vector<double>> gaps;
    struct KnownAnswer {
        Proposal proposal;
        Answer answer;
    };
    std::vector<KnownAnswer> answers;
    struct KnownText {
        Proposal proposal;
        TextMeasure measure;
    };
    std::vector<KnownText> texts;
};

/// The nodes of `root`, which must outlive them, not laid out yet. The root has index 0, and a node's
/// children follow it.
std::vector<LayoutNode> makeLayoutNodes(const platform::View& root);

/// A length from a tree made harmless: no more than a million points, and 0 for what is not a number.
double boundedLength(double length);

}  // namespace host
