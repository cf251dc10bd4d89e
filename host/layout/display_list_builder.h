#pragma once

// Turns a laid out tree into what is to be painted and where it can be tapped.

#include <vector>
#include "host/layout/layout.h"
#include "host/layout/layout_tree.h"

namespace host {

DisplayList buildDisplayList(const std::vector<LayoutNode>& nodes, const LayoutOptions& options,
                             const Measurer& measurer);

}  // namespace host
