#pragma once

// The small pieces that the Portfolio widget's views are made of: texts, a line, the rupee sign.

#include <string>
#include "platform/base/color.h"
#include "platform/view/view.h"

namespace extension {

/// The system font at `font` points, two less when compact.
struct PWidgetRegularText {
    std::string value;
    platform::Color color;
    bool isCompact = false;
    double font = 14.0;

    platform::View body() const;
};

/// As PWidgetRegularText, but bold when it is not compact.
struct PWidgetItemTitle {
    std::string value;
    platform::Color color;
    bool isCompact = false;
    double font = 14.0;

    platform::View body() const;
};

/// An amount: 14 points bold, 12 points regular when compact. One line, shortened where it does not fit.
struct PWidgetItemValue {
    std::string value;
    platform::Color color;
    bool isCompact = false;

    platform::View body() const;
};

/// A thin line with a little room around it.
struct PWDivider {
    platform::Color color;
    bool isCompact = false;

    platform::View body() const;
};

/// Stands before every amount, an empty one too.
struct RupeeSymbol {
    bool isCompact = false;

    platform::View body() const;
};

/// The outline of a button around its label.
platform::View outlined(const platform::View& label);

}  // namespace extension
