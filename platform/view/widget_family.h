#pragma once

// The sizes in which widgets come.

#include <array>
#include <optional>
#include <string_view>

namespace platform {

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

}  // namespace platform
