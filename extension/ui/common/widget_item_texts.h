#pragma once

// The three sizes of text that the items of all widgets share. Each is one line that ends in "…"
// where it does not fit.

#include <string>
#include "platform/view/view.h"

namespace extension {

/// Compact 12 points, full 14 points and bold: the only one that changes weight.
struct WidgetItemTitle {
    std::string value;
    platform::Color color;
    bool isCompact = false;

    platform::View body() const;
};

/// Compact 10 points, full 12 points.
struct WidgetItemSubTitle {
    std::string value;
    platform::Color color;
    bool isCompact = false;

    platform::View body() const;
};

/// Compact 8 points, full 10 points.
struct WidgetItemSmallTitle {
    std::string value;
    platform::Color color;
    bool isCompact = false;

    platform::View body() const;
};

}  // namespace extension
