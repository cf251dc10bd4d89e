#include "host/paint/png_writer.h"

#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace host {
namespace {

using Bytes = std::vector<std::uint8_t>;

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

/// Takes the alpha out of the colours, which the surface has multiplied by it.
void writeClearRow(const std::uint32_t* pixels, int width, std::uint8_t* row) {
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

/// Every row as its difference from the row above: a widget's rows are much alike.
Bytes filteredRows(cairo_surface_t* surface, bool isOpaque) {
    constexpr std::uint8_t upFilter = 2;
    const int width = cairo_image_surface_get_width(surface);
    const int height = cairo_image_surface_get_height(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    const unsigned char* pixels = cairo_image_surface_get_data(surface);
    const std::size_t rowSize = static_cast<std::size_t>(width) * (isOpaque ? 3 : 4);
    const auto writeRow = isOpaque ? writeOpaqueRow : writeClearRow;

    Bytes above(rowSize);
    Bytes current(rowSize);
    Bytes filtered((rowSize + 1) * static_cast<std::size_t>(height));
    std::uint8_t* target = filtered.data();
    for (int y = 0; y < height; ++y) {
        const auto* row =
            reinterpret_cast<const std::uint32_t*>(pixels + static_cast<std::ptrdiff_t>(y) * stride);
        writeRow(row, width, current.data());
        *target++ = upFilter;
        for (std::size_t index = 0; index < rowSize; ++index) {
            target[index] = static_cast<std::uint8_t>(current[index] - above[index]);
        }
        target += rowSize;
        std::swap(above, current);
    }
    return filtered;
}

std::string compressed(Bytes& content) {
    std::vector<std::uint8_t> work(ISAL_DEF_LVL1_DEFAULT);
    isal_zstream stream;
    isal_deflate_init(&stream);
    stream.level = 1;
    stream.level_buf = work.data();
    stream.level_buf_size = static_cast<std::uint32_t>(work.size());
    stream.gzip_flag = IGZIP_ZLIB;
    stream.end_of_stream = 1;
    stream.next_in = content.data();
    stream.avail_in = static_cast<std::uint32_t>(content.size());

    std::string target(content.size() / 8 + 4096, '\0');
    std::size_t written = 0;
    while (stream.internal_state.state != ZSTATE_END) {
        if (written == target.size()) target.resize(2 * target.size());
        stream.next_out = reinterpret_cast<std::uint8_t*>(target.data()) + written;
        stream.avail_out = static_cast<std::uint32_t>(target.size() - written);
        isal_deflate(&stream);
        written = target.size() - stream.avail_out;
    }
    target.resize(written);
    return target;
}

}  // namespace

std::string encodePng(cairo_surface_t* surface, bool isOpaque) {
    cairo_surface_flush(surface);
    Bytes rows = filteredRows(surface, isOpaque);
    std::string png = "\x89PNG\r\n\x1a\n";
    appendChunk(
        png, "IHDR",
        header(cairo_image_surface_get_width(surface), cairo_image_surface_get_height(surface), isOpaque));
    appendChunk(png, "sRGB", std::string_view("\0", 1));
    appendChunk(png, "IDAT", compressed(rows));
    appendChunk(png, "IEND", {});
    return png;
}

}  // namespace host
