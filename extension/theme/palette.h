#pragma once

// Every colour of the two palettes by name, and how a colour stands in the store.

#include <optional>
#include <span>
#include <string_view>
#include "platform/base/color.h"
#include "platform/settings/property_list.h"
#include "platform/settings/user_defaults.h"

namespace extension {

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

}  // namespace extension
