#include "host/layout/layout_tree.h"

#include <algorithm>
#include <cmath>

namespace host {
namespace {

using platform::View;

template <typename Kind>
bool is(const LayoutNode& node) {
    return std::holds_alternative<Kind>(*node.kind);
}

bool isGroup(const LayoutNode& node) { return is<platform::node::Group>(node); }

bool isDecoration(const LayoutNode& node) {
    return is<platform::node::Overlay>(node) || is<platform::node::Background>(node) ||
           is<platform::node::ContainerBackground>(node);
}

Arranging stackArranging(const LayoutNode& node) {
    if (is<platform::node::HStack>(node)) return Arranging::row;
    if (is<platform::node::VStack>(node)) return Arranging::column;
    if (is<platform::node::ZStack>(node)) return Arranging::pile;
    return Arranging::none;
}

std::size_t append(std::vector<LayoutNode>& nodes, const View& view) {
    const std::size_t index = nodes.size();
    nodes.emplace_back().kind = &view.kind();
    for (const View& child : view.children()) {
        const std::size_t childIndex = append(nodes, child);
        nodes[index].children.push_back(childIndex);
    }
    return index;
}

void collectItems(const std::vector<LayoutNode>& nodes, LayoutNode& node) {
    for (const std::size_t child : node.children) {
        if (nodes[child].isAbsent) continue;
        if (isGroup(nodes[child])) {
            node.items.insert(node.items.end(), nodes[child].items.begin(), nodes[child].items.end());
        } else {
            node.items.push_back(child);
        }
    }
}

/// What a node learns from those below it.
void learnFromChildren(const std::vector<LayoutNode>& nodes, LayoutNode& node) {
    if (isGroup(node) || stackArranging(node) != Arranging::none) {
        collectItems(nodes, node);
        node.isAbsent = isGroup(node) && node.items.empty();
        if (isGroup(node) && node.items.size() == 1) node.priority = nodes[node.items.front()].priority;
    } else if (!node.children.empty()) {
        node.isAbsent = nodes[node.children.front()].isAbsent;
        node.priority = nodes[node.children.front()].priority;
    }
    if (is<platform::node::Spacer>(node)) node.priority = -platform::infinity;
    if (const auto* own = std::get_if<platform::node::LayoutPriority>(node.kind)) {
        node.priority = std::isnan(own->value) ? 0.0 : own->value;
    }
}

/// What the children of a node learn from it.
void tellChildren(std::vector<LayoutNode>& nodes, const LayoutNode& node) {
    std::optional<Axis> axis = node.axis;
    const bool isTransparent = isGroup(node) && node.items.size() <= 1;
    if (node.arranging != Arranging::none && !isTransparent) axis = std::nullopt;
    if (node.arranging == Arranging::row) axis = Axis::horizontal;
    if (node.arranging == Arranging::column) axis = Axis::vertical;

    const bool dissolvesGroups = isGroup(node) || stackArranging(node) != Arranging::none;
    for (std::size_t i = 0; i < node.children.size(); ++i) {
        LayoutNode& child = nodes[node.children[i]];
        const bool isLayer = isDecoration(node) && i == 1;
        child.axis = isLayer ? std::nullopt : axis;
        child.arranging = stackArranging(child);
        // Several views in a layer are piled up; several without any stack around them stand in a column.
        if (isGroup(child) && !dissolvesGroups) {
            const bool isPile = isLayer || child.items.size() <= 1;
            child.arranging = isPile ? Arranging::pile : Arranging::column;
        }
    }
}

}  // namespace

std::vector<LayoutNode> makeLayoutNodes(const View& root) {
    std::vector<LayoutNode> nodes;
    append(nodes, root);
    for (std::size_t i = nodes.size(); i-- > 0;) learnFromChildren(nodes, nodes[i]);
    LayoutNode& first = nodes.front();
    first.arranging = stackArranging(first);
    if (isGroup(first)) first.arranging = first.items.size() <= 1 ? Arranging::pile : Arranging::column;
    for (const LayoutNode& node : nodes) tellChildren(nodes, node);
    return nodes;
}

double boundedLength(double length) {
    constexpr double limit = 1e6;
    return std::isnan(length) ? 0.0 : std::clamp(length, -limit, limit);
}

}  // namespace host
