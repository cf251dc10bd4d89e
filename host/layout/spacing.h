#pragma once

// The distances that views keep in a stack that sets none itself.

#include <vector>
#include "host/layout/layout_tree.h"

namespace host {

/// The distance between two neighbours, in points: the largest that a kind of preference known to
/// both edges gives, 8 when they share none, and none at all next to a spacer.
double gapBetween(const EdgeSpacing& first, const EdgeSpacing& second);

/// What the edges of a node prefer; worked out once.
const NodeSpacing& spacingOf(std::vector<LayoutNode>& nodes, std::size_t index, const Measurer& measurer);

}  // namespace host
