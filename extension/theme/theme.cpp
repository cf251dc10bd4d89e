#include "extension/theme/theme.h"

#include <algorithm>
#include <string>
#include "extension/app/settings/store_keys.h"
#include "extension/theme/palette.h"

namespace extension {
namespace {

std::vector<std::string> colorKeys() {
    std::vector<std::string> keys;
    keys.reserve(palette().size());
    for (const PaletteColor& color : palette()) keys.emplace_back(color.name);
    return keys;
}

}  // namespace

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
