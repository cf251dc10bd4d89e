#pragma once

// Gives the nodes of a tree their frames: a view is offered a size, answers with its own, and is
// placed by whoever asked.

#include <vector>
#include "host/layout/layout_tree.h"

namespace host {

/// Lays out the tree as the root of a widget: the root is offered the widget's size and centred in it,
/// whatever size it answers. `root` must outlive the nodes. One thread.
std::vector<LayoutNode> layOut(const platform::View& root, const platform::Size& widgetSize,
                               const Measurer& measurer);

}  // namespace host
