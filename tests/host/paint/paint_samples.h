#pragma once

// Display lists and pictures for the tests of painting.

#include <cairo.h>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>
#include "host/paint/painter.h"

namespace host {

inline constexpr platform::Color black = platform::Color::rgb(0, 0, 0);
inline constexpr platform::Color white = platform::Color::rgb(1, 1, 1);
inline constexpr platform::Color night = platform::Color::rgb(0x1A / 255.0, 0x1A / 255.0, 0x22 / 255.0);

inline std::filesystem::path shippedResources() { return BRIGHTLEDGER_SOURCE_DIR "/resources"; }

inline std::unique_ptr<Painter> makePainter() { return std::move(Painter::make(shippedResources()).value()); }

inline platform::TextRun run(std::string text, platform::Font font = platform::Font::system(12),
                             platform::Color color = black) {
    return {.text = std::move(text), .font = std::move(font), .color = color, .image = std::nullopt};
}

inline platform::TextRun inlineImage(std::string name) {
    return {.text = {}, .font = {}, .color = std::nullopt, .image = std::move(name)};
}

inline DisplayList emptyList(double width, double height, platform::Color background = white) {
    DisplayList list;
    list.size = {.width = width, .height = height};
    list.background = background;
    return list;
}

template <typename Content>
DisplayItem& add(DisplayList& list, Content content, Rect frame) {
    DisplayItem item;
    item.content = std::move(content);
    item.frame = frame;
    list.items.push_back(std::move(item));
    return list.items.back();
}

inline FillItem fill(platform::Color color, double cornerRadius = 0.0,
                     platform::RoundedCornerStyle style = platform::RoundedCornerStyle::circular) {
    return {.color = color, .cornerRadius = cornerRadius, .style = style};
}

inline ImageItem asset(std::string name) { return {.name = std::move(name), .bytes = std::nullopt}; }

/// Adds the text at its measured size.
inline TextMeasure addText(DisplayList& list, Painter& painter, const std::vector<platform::TextRun>& runs,
                           double x, double y, std::optional<int> lineLimit = std::nullopt,
                           std::optional<double> width = std::nullopt) {
    const TextMeasure measure = painter.measurer(3).text(runs, lineLimit, width, std::nullopt);
    add(list, TextItem{.runs = runs, .lineLimit = lineLimit, .lines = measure.lines},
        {.x = x, .y = y, .width = measure.size.width, .height = measure.size.height});
    return measure;
}

/// The pixels of a PNG, read by cairo and not by our own decoder.
class Pixels {
public:
    explicit Pixels(std::string_view png) {
        const auto read = [](void* source, unsigned char* target, unsigned length) {
            auto& rest = *static_cast<std::string_view*>(source);
            if (rest.size() < length) return CAIRO_STATUS_READ_ERROR;
            rest.copy(reinterpret_cast<char*>(target), length);
            rest.remove_prefix(length);
            return CAIRO_STATUS_SUCCESS;
        };
        surface_.reset(cairo_image_surface_create_from_png_stream(read, &png), cairo_surface_destroy);
    }

    bool isRead() const { return cairo_surface_status(surface_.get()) == CAIRO_STATUS_SUCCESS; }
    int width() const { return cairo_image_surface_get_width(surface_.get()); }
    int height() const { return cairo_image_surface_get_height(surface_.get()); }
    /// 0xAARRGGBB, colours multiplied by alpha; alpha is 0xFF in a picture without it.
    std::uint32_t at(int x, int y) const {
        const unsigned char* row =
            cairo_image_surface_get_data(surface_.get()) +
            static_cast<std::ptrdiff_t>(y) * cairo_image_surface_get_stride(surface_.get());
        const std::uint32_t pixel = reinterpret_cast<const std::uint32_t*>(row)[x];
        return hasAlpha() ? pixel : pixel | 0xFF000000U;
    }
    bool hasAlpha() const { return cairo_image_surface_get_format(surface_.get()) == CAIRO_FORMAT_ARGB32; }

    static int part(std::uint32_t pixel, int shift) { return static_cast<int>(pixel >> shift & 0xFFU); }

private:
    std::shared_ptr<cairo_surface_t> surface_;
};

/// A list with every kind of item.
inline DisplayList sampleList(Painter& painter, platform::Color background = white) {
    DisplayList list = emptyList(160, 96, background);
    const platform::Color ink = background == white ? black : white;
    add(list, asset("logo"), {.x = 4, .y = 4, .width = 20, .height = 20});
    addText(list, painter,
            {run("\u20B9", platform::Font::custom("SFCompactDisplay-Regular", 12), ink),
             run("1,234.50", platform::Font::system(14, platform::FontWeight::bold), ink),
             run(" \u0938\u0947\u0902\u0938\u0947\u0915\u094D\u0938 \U0001F600", platform::Font::system(12),
                 ink)},
            28, 4);
    addText(list, painter,
            {inlineImage("Live"), run(" Live", platform::Font::system(12, platform::FontWeight::bold), ink),
             run(" | Banks lead a broad rally across all of the indices", platform::Font::system(12), ink)},
            4, 28, 2, 150);
    add(list, GroupItem{.isBegin = true, .opacity = 0.5}, {});
    add(list, fill(platform::Color::rgb(0.75, 0.05, 0.1), 4), {.x = 4, .y = 62, .width = 30, .height = 20});
    add(list, fill(platform::Color::rgb(0.05, 0.45, 0.1)), {.x = 20, .y = 70, .width = 30, .height = 20});
    add(list, GroupItem{.isBegin = false}, {});
    add(list,
        StrokeItem{.color = platform::Color::rgb(0.16, 0.4, 0.61),
                   .cornerRadius = 8,
                   .style = platform::RoundedCornerStyle::continuous},
        {.x = 60, .y = 62, .width = 40, .height = 28});
    add(list, asset("Placeholder"), {.x = 108, .y = 62, .width = 45, .height = 28}).clips = {
        {.frame = {.x = 108, .y = 62, .width = 45, .height = 28},
         .cornerRadius = 6,
         .style = platform::RoundedCornerStyle::continuous}};
    return list;
}

}  // namespace host
