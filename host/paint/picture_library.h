#pragma once

// The host's own assets, and the pictures that come with a view tree.

#include <cairo.h>
#include <librsvg/rsvg.h>
#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>
#include "host/layout/display_list.h"
#include "host/paint/owned.h"
#include "host/paint/picture_decoder.h"
#include "platform/base/bytes.h"
#include "platform/base/result.h"
#include "platform/view/screen.h"

namespace host {

/// Keeps decoded and rendered pictures up to a limit. One thread at a time.
class PictureLibrary {
public:
    /// `assets` is a folder of SVG files. A file's name without its ending is the asset's name.
    static platform::Result<std::unique_ptr<PictureLibrary>> open(const std::filesystem::path& assets);
    PictureLibrary(const PictureLibrary&) = delete;
    PictureLibrary& operator=(const PictureLibrary&) = delete;

    /// In points; absent when there is no such asset.
    std::optional<platform::Size> assetSize(const std::string& name);
    /// In pixels; absent when the bytes are not a picture.
    std::optional<platform::Size> pictureSize(const platform::Bytes& bytes);

    /// Stretched to `frame`, which is in the canvas's units. Draws nothing when there is no such picture.
    void drawAsset(cairo_t* canvas, const std::string& name, const Rect& frame);
    void drawPicture(cairo_t* canvas, const platform::Bytes& bytes, const Rect& frame);

private:
    /// A picture at one size in pixels.
    struct Raster {
        int width = 0;
        int height = 0;
        Surface surface;
    };
    struct Asset {
        std::filesystem::path file;
        bool isRead = false;
        /// Null when the file cannot be read as SVG.
        Owned<RsvgHandle, g_object_unref> handle;
        platform::Size size;
        std::vector<Raster> rasters;
    };
    struct Picture {
        platform::Bytes bytes;
        /// Absent when the bytes are not a picture.
        std::optional<platform::Size> size;
        /// Kept only until a raster has been made of it.
        Surface decoded;
        std::vector<Raster> rasters;
    };

    PictureLibrary() = default;
    Asset* asset(const std::string& name);
    Picture& picture(const platform::Bytes& bytes);
    void forgetWhenFull();
    static bool isLargeEnough(const Picture& picture, double width, double height);
    static void render(cairo_t* canvas, const Asset& asset, const Rect& frame);
    static void render(cairo_t* canvas, Picture& picture, const Rect& frame);
    template <typename Source>
    void draw(cairo_t* canvas, Source& source, const Rect& frame);

    std::map<std::string, Asset> assets_;
    std::unordered_map<std::size_t, Picture> pictures_;
    /// Bytes of pixels and of encoded pictures that are kept.
    std::size_t kept_ = 0;
};

}  // namespace host
