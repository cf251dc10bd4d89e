#include "extension/theme/theme.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <string>
#include <vector>
#include "extension/app/settings/store_keys.h"
#include "extension/theme/hex_codec.h"

namespace extension {
namespace {

using platform::Bytes;
using platform::Color;
using platform::PropertyList;

static_assert(std::endian::native == std::endian::little && sizeof(double) == 8);

// The two kinds of value in the palette.
Color colorOf(const char* hex) { return colorFromHexString(hex); }
Color colorOf(const Color& fixed) { return fixed; }

std::vector<std::string> colorKeys() {
    std::vector<std::string> keys;
    keys.reserve(palette().size());
    for (const PaletteColor& color : palette()) keys.emplace_back(color.name);
    return keys;
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

std::optional<Color> colorOfComponents(std::span<const double> components) {
    switch (components.size()) {
        case 0: return Color();
        case 2: return Color::white(components[0], components[1]);
        case 4: return Color::rgb(components[0], components[1], components[2], components[3]);
        default: return std::nullopt;
    }
}

PropertyList encodedColor(const Color& color) {
    const auto components = color.components();
    return Bytes(std::string(reinterpret_cast<const char*>(components.data()), components.size_bytes()));
}

std::optional<Color> decodedColor(const std::optional<PropertyList>& value) {
    const Bytes* data = value ? value->data() : nullptr;
    if (!data || data->size() % sizeof(double) != 0) return std::nullopt;
    std::vector<double> components(data->size() / sizeof(double));
    std::ranges::copy(data->view(), reinterpret_cast<char*>(components.data()));
    if (!std::ranges::all_of(components, [](double each) { return std::isfinite(each); }))
        return std::nullopt;
    return colorOfComponents(components);
}

platform::Result<void> storeColor(platform::UserDefaults::Transaction& store, std::string_view name,
                                  const std::optional<Color>& color) {
    return color ? store.set(name, encodedColor(*color)) : store.remove(name);
}

Theme::Theme(const platform::Runtime& runtime) {
    colors_.fill(platform::Color::gray());
    const auto defaults = sharedDefaults(runtime);
    if (!defaults) return;
    const auto stored = (*defaults)->objects(colorKeys());
    if (!stored) {
        runtime.log().write("The theme's colours could not be read: " + stored.error().message);
        return;
    }
    for (std::size_t i = 0; i < colors_.size(); ++i) {
        const auto color = (*stored)[i].map([](const auto& record) { return decodedColor(record); });
        colors_[i] = color.value_or(std::nullopt).value_or(platform::Color::gray());
        if (!color) runtime.log().write("A colour could not be read: " + color.error().message);
    }
}

std::optional<platform::Color> Theme::color(std::string_view name) const {
    const auto found = std::ranges::find(palette(), name, &PaletteColor::name);
    if (found == palette().end()) return std::nullopt;
    return colors_[static_cast<std::size_t>(found - palette().begin())];
}

std::vector<std::pair<std::string_view, platform::Color>> Theme::colors() const {
    std::vector<std::pair<std::string_view, platform::Color>> named;
    named.reserve(colors_.size());
    for (std::size_t i = 0; i < colors_.size(); ++i) named.emplace_back(palette()[i].name, colors_[i]);
    return named;
}

}  // namespace extension
