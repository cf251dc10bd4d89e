#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>
#include <turbojpeg.h>
#include <webp/encode.h>
#include <zlib.h>
#include <algorithm>
#include <array>
#include <random>
#include "tests/host/paint/paint_samples.h"
#include "tests/support/expected_text.h"

namespace host {
namespace {

using platform::Bytes;
using platform::Size;

constexpr int width = 90;
constexpr int height = 60;

/// Red on the left, blue on the right, as rows of red, green, blue.
std::vector<unsigned char> redAndBlue(int columns = width, int rows = height) {
    std::vector<unsigned char> pixels;
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
            const bool isRed = x < columns / 2;
            pixels.insert(pixels.end(), {static_cast<unsigned char>(isRed ? 220 : 10), 20,
                                         static_cast<unsigned char>(isRed ? 10 : 220)});
        }
    }
    return pixels;
}

std::string makePng(int columns = width, int rows = height) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(columns);
    image.height = static_cast<png_uint_32>(rows);
    image.format = PNG_FORMAT_RGB;
    const std::vector<unsigned char> pixels = redAndBlue(columns, rows);
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::string png(size, '\0');
    png_image_write_to_memory(&image, png.data(), &size, 0, pixels.data(), 0, nullptr);
    png.resize(size);
    return png;
}

std::string makeJpeg(int columns = width, int rows = height, int flags = 0) {
    const tjhandle writer = tjInitCompress();
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    const std::vector<unsigned char> pixels = redAndBlue(columns, rows);
    tjCompress2(writer, pixels.data(), columns, 0, rows, TJPF_RGB, &bytes, &size, TJSAMP_444, 95, flags);
    std::string jpeg(reinterpret_cast<const char*>(bytes), size);
    tjFree(bytes);
    tjDestroy(writer);
    return jpeg;
}

std::string makeWebP() {
    std::uint8_t* bytes = nullptr;
    const std::size_t size = WebPEncodeLosslessRGB(redAndBlue().data(), width, height, width * 3, &bytes);
    std::string webp(reinterpret_cast<const char*>(bytes), size);
    WebPFree(bytes);
    return webp;
}

std::string bigEndian(std::uint32_t value) {
    std::string bytes;
    for (const int shift : {24, 16, 8, 0}) bytes += static_cast<char>(value >> shift & 0xFFU);
    return bytes;
}

std::string chunk(const std::string& type, const std::string& content) {
    return bigEndian(static_cast<std::uint32_t>(content.size())) + type + content +
           bigEndian(
               static_cast<std::uint32_t>(crc32(0, reinterpret_cast<const Bytef*>((type + content).data()),
                                                static_cast<uInt>(content.size() + 4))));
}

constexpr std::size_t afterPngHeader = 8 + 25;

/// A good PNG but for its header, which declares another size.
std::string pngDeclaring(std::uint32_t columns, std::uint32_t rows) {
    const std::string png = makePng();
    return png.substr(0, 8) +
           chunk("IHDR", bigEndian(columns) + bigEndian(rows) + std::string("\x08\x02\0\0\0", 5)) +
           png.substr(afterPngHeader);
}

std::string jpegDeclaring(int columns, int rows) {
    std::string jpeg = makeJpeg();
    const std::size_t frame = jpeg.find("\xFF\xC0");
    for (const auto& [offset, value] : {std::pair{5, rows}, std::pair{7, columns}}) {
        jpeg[frame + static_cast<std::size_t>(offset)] = static_cast<char>(value >> 8);
        jpeg[frame + static_cast<std::size_t>(offset) + 1] = static_cast<char>(value);
    }
    return jpeg;
}

/// The extended header, with its flags and the size of the canvas, before a good picture's data.
std::string extendedWebP(char flags, int columns, int rows) {
    const auto three = [](int value) {
        return std::string{static_cast<char>(value), static_cast<char>(value >> 8),
                           static_cast<char>(value >> 16)};
    };
    const std::string rest = "VP8X" + std::string("\x0A\0\0\0", 4) + flags + std::string(3, '\0') +
                             three(columns - 1) + three(rows - 1) + makeWebP().substr(12);
    const std::size_t size = rest.size() + 4;
    return "RIFF" + three(static_cast<int>(size)) + '\0' + "WEBP" + rest;
}

class PaintPictures : public testing::Test {
protected:
    std::optional<Size> sizeOf(const std::string& bytes) {
        return painter->measurer(3).picture(Bytes(bytes));
    }

    std::unique_ptr<Painter> painter = makePainter();
};

TEST_F(PaintPictures, AreRecognisedByTheirFirstBytesAndStretchedToTheirFrame) {
    for (const std::string& bytes : {makePng(), makeJpeg(), makeJpeg(width, height, TJFLAG_PROGRESSIVE),
                                     makeWebP(), extendedWebP(0, width, height)}) {
        EXPECT_EQ(sizeOf(bytes), (Size{.width = width, .height = height}));
        DisplayList list = emptyList(40, 40);
        add(list, ImageItem{.name = {}, .bytes = Bytes(bytes)}, {.x = 10, .y = 5, .width = 20, .height = 30});
        const Pixels pixels(painter->png(list, 2).value());
        for (const auto& [x, y, isRed] :
             {std::tuple{21, 11, true}, {37, 40, true}, {43, 40, false}, {58, 68, false}}) {
            EXPECT_NEAR(Pixels::part(pixels.at(x, y), 16), isRed ? 220 : 10, 4) << x << " " << y;
            EXPECT_NEAR(Pixels::part(pixels.at(x, y), 0), isRed ? 10 : 220, 4) << x << " " << y;
        }
        // The edges are sharp: no background shows through, and nothing is drawn outside the frame.
        EXPECT_NEAR(Pixels::part(pixels.at(20, 10), 8), 20, 4);
        EXPECT_EQ(pixels.at(19, 10), 0xFFFFFFFFU);
        EXPECT_EQ(pixels.at(20, 9), 0xFFFFFFFFU);
        EXPECT_EQ(pixels.at(60, 40), 0xFFFFFFFFU);
    }
}

TEST_F(PaintPictures, LargePhotographsAreDrawnSmall) {
    const std::string jpeg = makeJpeg(3000, 2000);
    EXPECT_EQ(sizeOf(jpeg), (Size{.width = 3000, .height = 2000}));
    for (const double side : {20.0, 300.0}) {
        DisplayList list = emptyList(side, side);
        add(list, ImageItem{.name = {}, .bytes = Bytes(jpeg)},
            {.x = 0, .y = 0, .width = side, .height = side});
        const Pixels pixels(painter->png(list, 3).value());
        EXPECT_NEAR(Pixels::part(pixels.at(2, 2), 16), 220, 4);
        EXPECT_NEAR(Pixels::part(pixels.at(pixels.width() - 3, 2), 0), 220, 4);
    }
}

TEST_F(PaintPictures, ThatAreForeignBrokenAnimatedOrTooLargeAreRejected) {
    const std::string animatedPng = makePng().substr(0, afterPngHeader) +
                                    chunk("acTL", bigEndian(2) + bigEndian(0)) +
                                    makePng().substr(afterPngHeader);
    const std::vector<std::pair<std::string, std::string>> hostile{
        {"nothing", ""},
        {"words", "<html>Not found</html>"},
        {"a GIF", std::string("GIF89a\x01\0\x01\0\0\0\0;", 14)},
        {"an SVG", "<svg xmlns='http://www.w3.org/2000/svg' width='4' height='4'/>"},
        {"only the first bytes of a PNG", "\x89PNG\r\n\x1a\n"},
        {"a JPEG that says it is a PNG", "\x89PNG\r\n\x1a\n" + makeJpeg()},
        {"an endless PNG chunk", makePng().substr(0, 8) + "\xFF\xFF\xFF\xFFtEXt" + std::string(64, 'x')},
        {"an animated PNG", animatedPng},
        {"an animated WebP", extendedWebP(2, width, height)},
        {"a PNG of 16 million pixels and some", pngDeclaring(4001, 4000)},
        {"a PNG of 4,000 million pixels", pngDeclaring(65'000, 65'000)},
        {"a PNG 2,000 million pixels wide", pngDeclaring(2'000'000'000, 1)},
        {"a JPEG of 4,000 million pixels", jpegDeclaring(65'000, 65'000)},
        {"a JPEG without pixels", jpegDeclaring(0, 60)},
        {"a WebP of 268 million pixels", extendedWebP(0, 16'384, 16'384)},
    };
    for (const auto& [what, bytes] : hostile) EXPECT_EQ(sizeOf(bytes), std::nullopt) << what;

    DisplayList list = emptyList(20, 20);
    add(list, ImageItem{.name = {}, .bytes = Bytes(hostile[1].second)},
        {.x = 0, .y = 0, .width = 20, .height = 20});
    EXPECT_EQ(painter->png(list, 2), painter->png(emptyList(20, 20), 2));
}

TEST_F(PaintPictures, ThatAreCutAreRejected) {
    for (const std::string& bytes :
         {makePng(), makeJpeg(), makeJpeg(width, height, TJFLAG_PROGRESSIVE), makeWebP()}) {
        // The last 16 bytes may be an end marker that a reader does not need.
        for (std::size_t length = 0; length + 16 < bytes.size(); length += 1 + bytes.size() / 97) {
            EXPECT_EQ(sizeOf(bytes.substr(0, length)), std::nullopt) << length << " of " << bytes.size();
        }
    }
}

TEST_F(PaintPictures, ThatAreDamagedAnywhereDoNoHarm) {
    std::mt19937 random(20261122);
    for (const std::string& bytes :
         {makePng(), makeJpeg(), makeJpeg(width, height, TJFLAG_PROGRESSIVE), makeWebP()}) {
        for (int attempt = 0; attempt < 300; ++attempt) {
            std::string damaged = bytes;
            for (int wound = 0; wound < 3; ++wound)
                damaged[random() % damaged.size()] = static_cast<char>(random());
            const std::optional<Size> size = sizeOf(damaged);
            EXPECT_LE(size ? size->width * size->height : 0, 16e6);
        }
    }
}

TEST_F(PaintPictures, TheWidgetsAssetsExistAndCanBeSeenOnTheirBackgrounds) {
    const auto isSeen = [&](const ImageItem& image, Size size, bool isDark) {
        DisplayList list = emptyList(size.width, size.height, isDark ? night : white);
        const Pixels before(painter->png(list, 3).value());
        add(list, image, {.x = 0, .y = 0, .width = size.width, .height = size.height});
        const Pixels after(painter->png(list, 3).value());
        int different = 0;
        for (int y = 0; y < after.height(); ++y) {
            for (int x = 0; x < after.width(); ++x) {
                different += std::ranges::any_of(std::array{0, 8, 16}, [&](int shift) {
                    return std::abs(Pixels::part(after.at(x, y), shift) -
                                    Pixels::part(before.at(x, y), shift)) > 48;
                });
            }
        }
        return different > after.width() * after.height() / 20;
    };
    EXPECT_TRUE(tests::answersAsExpected("paint/assets.txt", [&](const std::string& name) -> std::string {
        const auto size = painter->measurer(3).asset(name);
        if (!size) return "missing";
        return testing::PrintToString(size->width) + "x" + testing::PrintToString(size->height) +
               (isSeen(asset(name), *size, false) ? ", seen on light" : "") +
               (isSeen(asset(name), *size, true) ? ", seen on dark" : "");
    }));
}

}  // namespace
}  // namespace host
