#pragma once

// One picture of the sheet, and the name of its file.

#include <optional>
#include <string>
#include <string_view>
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

/// Whether two PNGs look the same: they have one size, and no channel of any pixel differs by more than one
/// step. Bytes that cannot be decoded look only like the same bytes.
bool looksLike(std::string_view picture, std::string_view other);

}  // namespace host
