#pragma once

// One picture of the sheet, and the name of its file.

#include <optional>
#include <string>
#include "platform/view/screen.h"

namespace host {

struct SheetPicture {
    std::string kind;
    platform::WidgetFamily family = platform::WidgetFamily::systemSmall;
    bool isDark = false;
    /// The state's name.
    std::string state;

    const char* themeName() const { return isDark ? "dark" : "light"; }
    /// "<kind>-<family>-<theme>-<state>.png".
    std::string fileName() const;
};

/// Absent when the sheet gives no picture such a name.
std::optional<SheetPicture> pictureNamed(const std::string& fileName);

}  // namespace host
