#pragma once

// The colours of the two palettes by name, how a colour is stored, and the palette that is in force.

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>
#include "platform/base/color.h"
#include "platform/runtime/runtime.h"
#include "platform/settings/property_list.h"
#include "platform/settings/user_defaults.h"

namespace extension {

/// Colours that are the same in every theme.
class AppDefaultColors {
public:
    static constexpr platform::Color colorBlack = platform::Color::rgb(0.0, 0.0, 0.0);
    /// Black, whatever its name says: the light theme's secondary text depends on it.
    static constexpr platform::Color colorBlueGray = platform::Color::rgb(0.0, 0.0, 0.0);
    static constexpr platform::Color colorGreen = platform::Color::rgb(0.212, 0.59, 0.08);
    static constexpr platform::Color colorRed = platform::Color::rgb(0.82, 0.23, 0.28);
    static constexpr platform::Color colorWhitieshGray = platform::Color::rgb(0.33, 0.35, 0.4);
    static constexpr platform::Color colorLightBlack = platform::Color::rgb(0.4, 0.41, 0.46);
    static constexpr platform::Color blueThemeColor = platform::Color::rgb(0.09, 0.38, 0.63);

    static constexpr platform::Color colorWhite = platform::Color::rgb(1.0, 1.0, 1.0);

    // The slider between a day's low (left) and high (right).
    static constexpr platform::Color sliderThumbColor = platform::Color::rgb(0.95, 0.96, 0.98);
    static constexpr platform::Color sliderLeftColor = platform::Color::rgb(0.82, 0.23, 0.28);
    static constexpr platform::Color sliderRightColor = platform::Color::rgb(0.212, 0.59, 0.08);
};

/// One colour of the palette; its name is its key in the store.
struct PaletteColor {
    std::string_view name;
    platform::Color dark;
    platform::Color light;
};

/// All 211, in the order of `palette.def`.
std::span<const PaletteColor> palette();

/// None, white and alpha, or red, green, blue and alpha; nothing for any other number of components.
std::optional<platform::Color> colorOfComponents(std::span<const double> components);

/// A colour, without loss: its components as little-endian doubles, eight bytes each, and no bytes for a
/// colour without components.
platform::PropertyList encodedColor(const platform::Color& color);
/// Nothing when the value is not such a record.
std::optional<platform::Color> decodedColor(const std::optional<platform::PropertyList>& value);

/// Stores a colour under `name`; an absent one removes the key.
platform::Result<void> storeColor(platform::UserDefaults::Transaction& store, std::string_view name,
                                  const std::optional<platform::Color>& color);

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
