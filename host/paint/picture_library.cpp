#include "host/paint/picture_library.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string_view>
#include <system_error>

namespace host {
namespace {

using platform::failure;
using platform::Result;

constexpr std::size_t mostKept = 48U << 20U;
// A thumbnail at scale 3: the size at which a picture is first decoded.
constexpr int usualPixels = 256;
// Pixels per point of a picture in a drawing that has no pixels.
constexpr double vectorPixels = 3.0;
// Pixels; a larger picture is drawn without being kept.
constexpr double largestRaster = 4'000'000.0;

/// Whole pixels on the canvas's surface.
struct PixelRect {
    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;
};

PixelRect pixelsOf(cairo_t* canvas, const Rect& frame) {
    double left = frame.x;
    double top = frame.y;
    double right = frame.x + frame.width;
    double bottom = frame.y + frame.height;
    cairo_user_to_device(canvas, &left, &top);
    cairo_user_to_device(canvas, &right, &bottom);
    const double x = std::floor(left + 0.5);
    const double y = std::floor(top + 0.5);
    return {.x = x, .y = y, .width = std::floor(right + 0.5) - x, .height = std::floor(bottom + 0.5) - y};
}

bool hasPixels(cairo_t* canvas) {
    return cairo_surface_get_type(cairo_get_group_target(canvas)) == CAIRO_SURFACE_TYPE_IMAGE;
}

}  // namespace

Result<std::unique_ptr<PictureLibrary>> PictureLibrary::open(const std::filesystem::path& assets) {
    std::unique_ptr<PictureLibrary> library(new PictureLibrary());
    std::error_code error;
    for (auto entry = std::filesystem::directory_iterator(assets, error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::filesystem::path& file = entry->path();
        if (file.extension() == ".svg") library->assets_[file.stem().string()].file = file;
    }
    if (library->assets_.empty()) {
        return failure("PaintError", 2, "cannot find the picture assets in " + assets.string());
    }
    return library;
}

bool PictureLibrary::isLargeEnough(const Picture& picture, double width, double height) {
    if (!picture.decoded) return false;
    const int hasWidth = cairo_image_surface_get_width(picture.decoded.get());
    const int hasHeight = cairo_image_surface_get_height(picture.decoded.get());
    return hasWidth >= std::min(width, picture.size->width) &&
           hasHeight >= std::min(height, picture.size->height);
}

std::optional<platform::Size> PictureLibrary::assetSize(const std::string& name) {
    const Asset* found = asset(name);
    if (found == nullptr) return std::nullopt;
    return found->size;
}

std::optional<platform::Size> PictureLibrary::pictureSize(const platform::Bytes& bytes) {
    forgetWhenFull();
    return picture(bytes).size;
}

void PictureLibrary::drawAsset(cairo_t* canvas, const std::string& name, const Rect& frame) {
    forgetWhenFull();
    if (Asset* found = asset(name)) draw(canvas, *found, frame);
}

void PictureLibrary::drawPicture(cairo_t* canvas, const platform::Bytes& bytes, const Rect& frame) {
    forgetWhenFull();
    Picture& found = picture(bytes);
    if (!found.size) return;
    draw(canvas, found, frame);
    if (!found.rasters.empty()) found.decoded.reset();
}

PictureLibrary::Asset* PictureLibrary::asset(const std::string& name) {
    const auto found = assets_.find(name);
    if (found == assets_.end()) return nullptr;
    Asset& asset = found->second;
    if (!asset.isRead) {
        asset.isRead = true;
        asset.handle.reset(rsvg_handle_new_from_file(asset.file.c_str(), nullptr));
        if (asset.handle) {
            rsvg_handle_get_intrinsic_size_in_pixels(asset.handle.get(), &asset.size.width,
                                                     &asset.size.height);
        }
    }
    return asset.handle ? &asset : nullptr;
}

PictureLibrary::Picture& PictureLibrary::picture(const platform::Bytes& bytes) {
    const std::size_t key = std::hash<std::string_view>{}(bytes.view());
    if (const auto known = pictures_.find(key); known != pictures_.end() && known->second.bytes == bytes) {
        return known->second;
    }
    kept_ += bytes.size();
    Picture& picture = pictures_[key];
    picture = {};
    picture.bytes = bytes;
    if (auto decoded = decodePicture(bytes.view(), usualPixels, usualPixels)) {
        picture.size = {.width = static_cast<double>(decoded->width),
                        .height = static_cast<double>(decoded->height)};
        picture.decoded = std::move(decoded->surface);
    }
    return picture;
}

/// A page shows few pictures at a time, so whatever it still needs is soon made again.
void PictureLibrary::forgetWhenFull() {
    if (kept_ <= mostKept) return;
    pictures_.clear();
    for (auto& [name, asset] : assets_) asset.rasters.clear();
    kept_ = 0;
}

void PictureLibrary::render(cairo_t* canvas, const Asset& asset, const Rect& frame) {
    if (asset.size.width <= 0.0 || asset.size.height <= 0.0) return;
    cairo_save(canvas);
    cairo_translate(canvas, frame.x, frame.y);
    cairo_scale(canvas, frame.width / asset.size.width, frame.height / asset.size.height);
    const RsvgRectangle viewport{.x = 0.0, .y = 0.0, .width = asset.size.width, .height = asset.size.height};
    rsvg_handle_render_document(asset.handle.get(), canvas, &viewport, nullptr);
    cairo_restore(canvas);
}

void PictureLibrary::render(cairo_t* canvas, Picture& picture, const Rect& frame) {
    double width = frame.width;
    double height = frame.height;
    if (!hasPixels(canvas)) {
        width *= vectorPixels;
        height *= vectorPixels;
    }
    if (!isLargeEnough(picture, width, height)) {
        const auto wanted = [](double pixels) { return static_cast<int>(std::clamp(pixels, 1.0, 32'767.0)); };
        auto decoded = decodePicture(picture.bytes.view(), wanted(width), wanted(height));
        if (!decoded) return;
        picture.decoded = std::move(decoded->surface);
    }
    cairo_surface_t* surface = picture.decoded.get();
    cairo_save(canvas);
    cairo_translate(canvas, frame.x, frame.y);
    cairo_rectangle(canvas, 0.0, 0.0, frame.width, frame.height);
    cairo_clip(canvas);
    cairo_scale(canvas, frame.width / cairo_image_surface_get_width(surface),
                frame.height / cairo_image_surface_get_height(surface));
    cairo_set_source_surface(canvas, surface, 0.0, 0.0);
    // Otherwise the picture's edges would blend into the transparent area around it.
    cairo_pattern_set_extend(cairo_get_source(canvas), CAIRO_EXTEND_PAD);
    cairo_paint(canvas);
    cairo_restore(canvas);
}

template <typename Source>
void PictureLibrary::draw(cairo_t* canvas, Source& source, const Rect& frame) {
    if (!(frame.width > 0.0) || !(frame.height > 0.0)) return;
    const PixelRect pixels = pixelsOf(canvas, frame);
    if (!hasPixels(canvas) || pixels.width * pixels.height > largestRaster) {
        render(canvas, source, frame);
        return;
    }
    if (pixels.width < 1.0 || pixels.height < 1.0) return;

    const int width = static_cast<int>(pixels.width);
    const int height = static_cast<int>(pixels.height);
    auto raster = std::ranges::find_if(source.rasters, [&](const Raster& candidate) {
        return candidate.width == width && candidate.height == height;
    });
    if (raster == source.rasters.end()) {
        Surface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
        const Owned<cairo_t, cairo_destroy> painter(cairo_create(surface.get()));
        render(painter.get(), source, {.x = 0.0, .y = 0.0, .width = pixels.width, .height = pixels.height});
        kept_ += static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4;
        source.rasters.push_back({.width = width, .height = height, .surface = std::move(surface)});
        raster = std::prev(source.rasters.end());
    }
    cairo_save(canvas);
    cairo_identity_matrix(canvas);
    cairo_set_source_surface(canvas, raster->surface.get(), pixels.x, pixels.y);
    cairo_paint(canvas);
    cairo_restore(canvas);
}

}  // namespace host
