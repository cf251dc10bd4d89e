#include "extension/theme/palette.h"

#include <bit>
#include <cmath>
#include <string>
#include <vector>
#include "extension/theme/app_default_colors.h"
#include "extension/theme/hex_codec.h"

namespace extension {
namespace {

using platform::Bytes;
using platform::Color;
using platform::PropertyList;

constexpr std::size_t bytesPerComponent = 8;

// The two kinds of value in the palette.
Color colorOf(const char* hex) { return colorFromHexString(hex); }
Color colorOf(const Color& fixed) { return fixed; }

double componentAt(std::string_view bytes) {
    std::uint64_t bits = 0;
    for (std::size_t i = bytesPerComponent; i-- > 0;) bits = bits << 8 | static_cast<unsigned char>(bytes[i]);
    return std::bit_cast<double>(bits);
}

}  // namespace

std::span<const PaletteColor> palette() {
    static const std::vector<PaletteColor> colors{
#define THEME_COLOR(name, dark, light) {#name, colorOf(dark), colorOf(light)},
#include "extension/theme/palette.def"
#undef THEME_COLOR
    };
    return colors;
}

PropertyList encodedColor(const Color& color) {
    std::string bytes;
    bytes.reserve(color.components().size() * bytesPerComponent);
    for (const double component : color.components()) {
        const auto bits = std::bit_cast<std::uint64_t>(component);
        for (std::size_t i = 0; i < bytesPerComponent; ++i) bytes += static_cast<char>(bits >> (8 * i));
    }
    return Bytes(std::move(bytes));
}

std::optional<Color> decodedColor(const std::optional<PropertyList>& value) {
    const Bytes* data = value ? value->data() : nullptr;
    if (!data || data->size() % bytesPerComponent != 0) return std::nullopt;
    std::vector<double> components;
    for (std::size_t at = 0; at < data->size(); at += bytesPerComponent) {
        const double component = componentAt(data->view().substr(at, bytesPerComponent));
        if (!std::isfinite(component)) return std::nullopt;
        components.push_back(component);
    }
    switch (components.size()) {
        case 0: return Color();
        case 2: return Color::white(components[0], components[1]);
        case 4: return Color::rgb(components[0], components[1], components[2], components[3]);
        default: return std::nullopt;
    }
}

platform::Result<void> storeColor(platform::UserDefaults::Transaction& store, std::string_view name,
                                  const std::optional<Color>& color) {
    return color ? store.set(name, encodedColor(*color)) : store.remove(name);
}

}  // namespace extension
