#include "host/gallery/sheet_picture.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <regex>
#include <span>
#include "host/paint/picture_decoder.h"

namespace host {
namespace {

constexpr int anySize = 1 << 14;

/// The channels of one row, without the padding after it.
std::span<const std::uint8_t> row(const DecodedPicture& picture, int number) {
    cairo_surface_t* surface = picture.surface.get();
    const auto* pixels = cairo_image_surface_get_data(surface) +
                         static_cast<std::ptrdiff_t>(number) * cairo_image_surface_get_stride(surface);
    return {pixels, static_cast<std::size_t>(picture.width) * 4};
}

bool isOneStepApart(std::uint8_t channel, std::uint8_t other) { return std::abs(channel - other) <= 1; }

}  // namespace

std::string SheetPicture::fileName() const {
    return kind + "-" + std::string(description(family)) + "-" + themeName() + "-" + state + ".png";
}

std::optional<SheetPicture> pictureNamed(const std::string& fileName) {
    static const std::regex pattern("([^-]*)-([^-]*)-(light|dark)-(.*)\\.png");
    std::smatch parts;
    if (!std::regex_match(fileName, parts, pattern)) return std::nullopt;
    const auto family = platform::widgetFamily(parts[2].str());
    if (!family) return std::nullopt;
    return SheetPicture{.kind = parts[1], .family = *family, .isDark = parts[3] == "dark", .state = parts[4]};
}

bool looksLike(std::string_view picture, std::string_view other) {
    if (picture == other) return true;
    const auto first = decodePicture(picture, anySize, anySize);
    const auto second = decodePicture(other, anySize, anySize);
    if (!first || !second || first->width != second->width || first->height != second->height) return false;
    for (int number = 0; number < first->height; ++number) {
        if (!std::ranges::equal(row(*first, number), row(*second, number), isOneStepApart)) return false;
    }
    return true;
}

}  // namespace host
