#pragma once

// What the widgets share: texts, the line between them, and where a tap leads.

#include <string>
#include <string_view>
#include "platform/view/view.h"

namespace extension {

inline platform::Font mediumFont(double size) {
    return platform::Font::custom("SFCompactDisplay-Medium", size);
}
inline platform::Font regularFont(double size) {
    return platform::Font::custom("SFCompactDisplay-Regular", size);
}

/// Ends in "…" where it does not fit.
platform::View oneLine(const std::string& value, platform::Font font, const platform::Color& color);

// Three sizes of text, one line each. The first and the last are for other widgets; nothing here uses them.

/// Compact 12 points, full 14 points and bold. Only this one changes its weight.
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

/// One pixel thick, in the middle of a little room: 4 points compact, 10 points full.
struct WidgetDivider {
    platform::Color color;
    bool isCompact = false;

    platform::View body() const;
};

/// Whether a tap can lead there.
bool isAddress(std::string_view text);

/// `label` as a link to `address`; fatal when that is not an address.
platform::View requiredLink(std::string_view address, const platform::View& label);

/// `label` with the whole widget's link to `address`; fatal when that is not an address.
platform::View requiredWidgetURL(std::string_view address, const platform::View& label);

}  // namespace extension
