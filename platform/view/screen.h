#pragma once

// The sizes in which widgets come, and the screens that a device can have, as far as widgets are concerned.

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace platform {

/// The sizes of widgets.
enum class WidgetFamily { systemSmall, systemMedium, systemLarge };

inline constexpr std::array allWidgetFamilies{WidgetFamily::systemSmall, WidgetFamily::systemMedium,
                                              WidgetFamily::systemLarge};

/// "systemSmall", "systemMedium" or "systemLarge".
constexpr std::string_view description(WidgetFamily family) {
    switch (family) {
        case WidgetFamily::systemSmall: return "systemSmall";
        case WidgetFamily::systemMedium: return "systemMedium";
        case WidgetFamily::systemLarge: return "systemLarge";
    }
    return "";
}

constexpr std::optional<WidgetFamily> widgetFamily(std::string_view description) {
    for (const WidgetFamily family : allWidgetFamilies) {
        if (platform::description(family) == description) return family;
    }
    return std::nullopt;
}

struct Size {
    double width = 0.0;
    double height = 0.0;

    bool operator==(const Size&) const = default;
};

/// How large widgets are on a device's screen. In points.
struct Screen {
    /// The screen's own width and height, upright.
    std::string_view name = "390x844";
    Size small{158, 158};
    Size medium{338, 158};
    Size large{338, 354};

    constexpr Size widgetSize(WidgetFamily family) const {
        switch (family) {
            case WidgetFamily::systemSmall: return small;
            case WidgetFamily::systemMedium: return medium;
            case WidgetFamily::systemLarge: return large;
        }
        return small;
    }
};

inline constexpr std::array screens{
    Screen{"430x932", {170, 170}, {364, 170}, {364, 382}},
    Screen{"428x926", {170, 170}, {364, 170}, {364, 382}},
    Screen{"414x896", {169, 169}, {360, 169}, {360, 379}},
    Screen{"414x736", {159, 159}, {348, 157}, {348, 357}},
    Screen{"393x852", {158, 158}, {338, 158}, {338, 354}},
    Screen{},
    Screen{"375x812", {155, 155}, {329, 155}, {329, 345}},
    Screen{"360x780", {155, 155}, {329, 155}, {329, 345}},
    Screen{"375x667", {148, 148}, {321, 148}, {321, 324}},
    Screen{"320x568", {141, 141}, {292, 141}, {292, 311}},
};

constexpr std::optional<Screen> screenNamed(std::string_view name) {
    const auto* found = std::ranges::find(screens, name, &Screen::name);
    return found == screens.end() ? std::nullopt : std::optional(*found);
}

}  // namespace platform
