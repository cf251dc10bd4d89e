#pragma once

// The thin line between the items of a widget.

#include "platform/view/view.h"

namespace extension {

/// One pixel thick, in the middle of a little room: 4 points compact, 10 points full.
struct WidgetDivider {
    platform::Color color;
    bool isCompact = false;

    platform::View body() const;
};

}  // namespace extension
