#include "host/paint/picture_decoder.h"

#include <png.h>
#include <turbojpeg.h>
#include <webp/decode.h>
#include <algorithm>
#include <cstdint>

namespace host {
namespace {

constexpr double mostPixels = 16'000'000.0;
// The longest side that cairo supports.
constexpr double longestSide = 32'767.0;

Surface makeSurface(cairo_format_t format, int width, int height) {
    Surface surface(cairo_image_surface_create(format, width, height));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
    return surface;
}

/// Calls `decode(pixels, stride)`. Null when it fails.
template <typename Decode>
Surface filled(Surface surface, const Decode& decode) {
    if (!surface) return nullptr;
    cairo_surface_flush(surface.get());
    const bool isDecoded =
        decode(cairo_image_surface_get_data(surface.get()), cairo_image_surface_get_stride(surface.get()));
    cairo_surface_mark_dirty(surface.get());
    return isDecoded ? std::move(surface) : nullptr;
}

std::optional<DecodedPicture> picture(int width, int height, Surface surface) {
    if (!surface) return std::nullopt;
    return DecodedPicture{.width = width, .height = height, .surface = std::move(surface)};
}

/// The halvings (0 to 3) that leave the picture at least as large as wanted.
int halvings(int width, int height, int wantedWidth, int wantedHeight) {
    int count = 0;
    while (count < 3 && (width >> (count + 1)) >= wantedWidth && (height >> (count + 1)) >= wantedHeight) {
        ++count;
    }
    return count;
}

std::uint32_t bigEndian(std::string_view four) {
    std::uint32_t value = 0;
    for (const char byte : four) value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

/// An animated PNG has a chunk before the first pixels that says so, which the library ignores.
bool isAnimatedPng(std::string_view bytes) {
    constexpr std::size_t signature = 8;
    constexpr std::size_t aroundData = 12;
    for (std::size_t place = signature; place + aroundData <= bytes.size();) {
        const std::string_view type = bytes.substr(place + 4, 4);
        if (type == "acTL") return true;
        if (type == "IDAT") return false;
        place += aroundData + bigEndian(bytes.substr(place, 4));
    }
    return false;
}

void premultiply(unsigned char* pixels, int stride, int width, int height) {
    for (int y = 0; y < height; ++y) {
        unsigned char* pixel = pixels + static_cast<std::ptrdiff_t>(y) * stride;
        for (int x = 0; x < width; ++x, pixel += 4) {
            const unsigned alpha = pixel[3];
            if (alpha == 255) continue;
            for (int part = 0; part < 3; ++part) {
                pixel[part] = static_cast<unsigned char>((pixel[part] * alpha + 127) / 255);
            }
        }
    }
}

std::optional<DecodedPicture> decodePng(std::string_view bytes) {
    if (isAnimatedPng(bytes)) return std::nullopt;
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    // Frees the reader's memory on every way out.
    const Owned<png_image, png_image_free> guard(&image);
    if (!png_image_begin_read_from_memory(&image, bytes.data(), bytes.size())) return std::nullopt;
    if (!isSurfaceSize(image.width, image.height)) return std::nullopt;

    image.format = PNG_FORMAT_BGRA;
    const int width = static_cast<int>(image.width);
    const int height = static_cast<int>(image.height);
    const auto decode = [&](unsigned char* pixels, int stride) {
        if (!png_image_finish_read(&image, nullptr, pixels, stride, nullptr)) return false;
        premultiply(pixels, stride, width, height);
        return true;
    };
    return picture(width, height, filled(makeSurface(CAIRO_FORMAT_ARGB32, width, height), decode));
}

void destroyJpegReader(void* reader) { tjDestroy(reader); }

/// A warning may be about a small fault, which does no harm, or about a missing end, and its text names only
/// the last of several. So the end marker must be there, with little after it.
bool isComplete(tjhandle reader, int outcome, std::string_view bytes) {
    if (outcome == 0) return true;
    constexpr std::size_t mostAfterEnd = 64;
    const std::string_view last = bytes.substr(bytes.size() - std::min(bytes.size(), mostAfterEnd));
    return tjGetErrorCode(reader) == TJERR_WARNING && last.find("\xFF\xD9") != std::string_view::npos;
}

std::optional<DecodedPicture> decodeJpeg(std::string_view bytes, int wantedWidth, int wantedHeight) {
    const Owned<void, destroyJpegReader> reader(tjInitDecompress());
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colorspace = 0;
    if (!reader || tjDecompressHeader3(reader.get(), data, bytes.size(), &width, &height, &subsampling,
                                       &colorspace) != 0) {
        return std::nullopt;
    }
    if (!isSurfaceSize(width, height)) return std::nullopt;

    const tjscalingfactor factor{1, 1 << halvings(width, height, wantedWidth, wantedHeight)};
    const int drawnWidth = TJSCALED(width, factor);
    const int drawnHeight = TJSCALED(height, factor);
    const auto decode = [&](unsigned char* pixels, int stride) {
        const int outcome = tjDecompress2(reader.get(), data, bytes.size(), pixels, drawnWidth, stride,
                                          drawnHeight, TJPF_BGRX, TJFLAG_LIMITSCANS);
        return isComplete(reader.get(), outcome, bytes);
    };
    return picture(width, height, filled(makeSurface(CAIRO_FORMAT_RGB24, drawnWidth, drawnHeight), decode));
}

std::optional<DecodedPicture> decodeWebP(std::string_view bytes, int wantedWidth, int wantedHeight) {
    WebPDecoderConfig config;
    const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    if (!WebPInitDecoderConfig(&config) ||
        WebPGetFeatures(data, bytes.size(), &config.input) != VP8_STATUS_OK) {
        return std::nullopt;
    }
    const int width = config.input.width;
    const int height = config.input.height;
    if (config.input.has_animation || !isSurfaceSize(width, height)) return std::nullopt;

    const int shift = halvings(width, height, wantedWidth, wantedHeight);
    const int drawnWidth = width >> shift;
    const int drawnHeight = height >> shift;
    config.options.use_scaling = shift > 0 ? 1 : 0;
    config.options.scaled_width = drawnWidth;
    config.options.scaled_height = drawnHeight;
    const auto decode = [&](unsigned char* pixels, int stride) {
        config.output.colorspace = MODE_bgrA;
        config.output.is_external_memory = 1;
        config.output.u.RGBA = {
            .rgba = pixels,
            .stride = stride,
            .size = static_cast<std::size_t>(stride) * static_cast<std::size_t>(drawnHeight)};
        return WebPDecode(data, bytes.size(), &config) == VP8_STATUS_OK;
    };
    return picture(width, height, filled(makeSurface(CAIRO_FORMAT_ARGB32, drawnWidth, drawnHeight), decode));
}

}  // namespace

bool isSurfaceSize(double width, double height) {
    return width >= 1.0 && height >= 1.0 && width <= longestSide && height <= longestSide &&
           width * height <= mostPixels;
}

std::optional<DecodedPicture> decodePicture(std::string_view bytes, int wantedWidth, int wantedHeight) {
    if (bytes.starts_with("\x89PNG\r\n\x1a\n")) return decodePng(bytes);
    if (bytes.starts_with("\xff\xd8\xff")) return decodeJpeg(bytes, wantedWidth, wantedHeight);
    if (bytes.starts_with("RIFF") && bytes.substr(0, 12).ends_with("WEBP")) {
        return decodeWebP(bytes, wantedWidth, wantedHeight);
    }
    return std::nullopt;
}

}  // namespace host
