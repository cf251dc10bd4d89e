#include "host/paint/png_writer.h"

#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>
#include <algorithm>
#include <string_view>
#include <utility>

namespace host {
namespace {

void appendBigEndian(std::string& target, std::uint32_t value) {
    for (const int shift : {24, 16, 8, 0}) target += static_cast<char>(value >> shift & 0xFFU);
}

void appendChunk(std::string& target, std::string_view type, std::string_view content) {
    appendBigEndian(target, static_cast<std::uint32_t>(content.size()));
    const std::size_t begin = target.size();
    target.append(type).append(content);
    const auto* checked = reinterpret_cast<const unsigned char*>(target.data() + begin);
    appendBigEndian(target, crc32_gzip_refl(0, checked, target.size() - begin));
}

std::string header(int width, int height, bool isOpaque) {
    constexpr char bitDepth = 8;
    constexpr char trueColor = 2;
    constexpr char trueColorWithAlpha = 6;
    std::string content;
    appendBigEndian(content, static_cast<std::uint32_t>(width));
    appendBigEndian(content, static_cast<std::uint32_t>(height));
    content += {bitDepth, isOpaque ? trueColor : trueColorWithAlpha, 0, 0, 0};
    return content;
}

void writeOpaqueRow(const std::uint32_t* pixels, int width, std::uint8_t* row) {
    for (int x = 0; x < width; ++x, row += 3) {
        row[0] = static_cast<std::uint8_t>(pixels[x] >> 16U);
        row[1] = static_cast<std::uint8_t>(pixels[x] >> 8U);
        row[2] = static_cast<std::uint8_t>(pixels[x]);
    }
}

/// Divides the colours by alpha, since the surface holds them multiplied by it.
void writeTransparentRow(const std::uint32_t* pixels, int width, std::uint8_t* row) {
    for (int x = 0; x < width; ++x, row += 4) {
        const std::uint32_t alpha = pixels[x] >> 24U;
        const auto part = [&](std::uint32_t shift) {
            const std::uint32_t value = pixels[x] >> shift & 0xFFU;
            return static_cast<std::uint8_t>(alpha == 0 ? 0 : (value * 255 + alpha / 2) / alpha);
        };
        row[0] = part(16);
        row[1] = part(8);
        row[2] = part(0);
        row[3] = static_cast<std::uint8_t>(alpha);
    }
}

}  // namespace

/// Stores every row as its difference from the row above, since neighbouring rows of a widget are similar.
void PngWriter::filterRows(cairo_surface_t* surface, bool isOpaque) {
    constexpr std::uint8_t upFilter = 2;
    const int width = cairo_image_surface_get_width(surface);
    const int height = cairo_image_surface_get_height(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    const unsigned char* pixels = cairo_image_surface_get_data(surface);
    const std::size_t rowSize = static_cast<std::size_t>(width) * (isOpaque ? 3 : 4);
    const auto writeRow = isOpaque ? writeOpaqueRow : writeTransparentRow;

    above_.assign(rowSize, 0);
    current_.resize(rowSize);
    filtered_.resize((rowSize + 1) * static_cast<std::size_t>(height));
    std::uint8_t* target = filtered_.data();
    for (int y = 0; y < height; ++y) {
        const auto* row =
            reinterpret_cast<const std::uint32_t*>(pixels + static_cast<std::ptrdiff_t>(y) * stride);
        writeRow(row, width, current_.data());
        *target++ = upFilter;
        for (std::size_t index = 0; index < rowSize; ++index) {
            target[index] = static_cast<std::uint8_t>(current_[index] - above_[index]);
        }
        target += rowSize;
        std::swap(above_, current_);
    }
}

void PngWriter::compressRows() {
    work_.resize(ISAL_DEF_LVL1_DEFAULT);
    isal_zstream stream;
    isal_deflate_init(&stream);
    stream.level = 1;
    stream.level_buf = work_.data();
    stream.level_buf_size = static_cast<std::uint32_t>(work_.size());
    stream.gzip_flag = IGZIP_ZLIB;
    stream.end_of_stream = 1;
    stream.next_in = filtered_.data();
    stream.avail_in = static_cast<std::uint32_t>(filtered_.size());

    compressed_.resize(std::max(compressed_.capacity(), filtered_.size() / 8 + 4096));
    std::size_t written = 0;
    while (stream.internal_state.state != ZSTATE_END) {
        if (written == compressed_.size()) compressed_.resize(2 * compressed_.size());
        stream.next_out = reinterpret_cast<std::uint8_t*>(compressed_.data()) + written;
        stream.avail_out = static_cast<std::uint32_t>(compressed_.size() - written);
        isal_deflate(&stream);
        written = compressed_.size() - stream.avail_out;
    }
    compressed_.resize(written);
}

std::string PngWriter::encode(cairo_surface_t* surface, bool isOpaque) {
    cairo_surface_flush(surface);
    filterRows(surface, isOpaque);
    compressRows();
    std::string png = "\x89PNG\r\n\x1a\n";
    png.reserve(compressed_.size() + 128);
    appendChunk(
        png, "IHDR",
        header(cairo_image_surface_get_width(surface), cairo_image_surface_get_height(surface), isOpaque));
    appendChunk(png, "sRGB", std::string_view("\0", 1));
    appendChunk(png, "IDAT", compressed_);
    appendChunk(png, "IEND", {});
    return png;
}

}  // namespace host
