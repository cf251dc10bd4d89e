#pragma once

// The palette that is in force.

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>
#include "platform/base/color.h"
#include "platform/runtime/runtime.h"

namespace extension {

/// The 211 colours as the store held them at one moment; gray where it holds none. Each colour has a
/// function of its name. Immutable; any thread.
class Theme {
public:
    explicit Theme(const platform::Runtime& runtime);

#define THEME_COLOR(name, dark, light) \
    const platform::Color& name() const { return colors_[static_cast<std::size_t>(Index::name)]; }
#include "extension/theme/palette.def"
#undef THEME_COLOR

    /// The colour of that name; nothing when the palette has none.
    std::optional<platform::Color> color(std::string_view name) const;

    /// All colours with their names, in the palette's order.
    std::vector<std::pair<std::string_view, platform::Color>> colors() const;

private:
    enum class Index : std::size_t {
#define THEME_COLOR(name, dark, light) name,
#include "extension/theme/palette.def"
#undef THEME_COLOR
        count
    };

    std::array<platform::Color, static_cast<std::size_t>(Index::count)> colors_;
};

}  // namespace extension
