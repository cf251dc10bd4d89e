#include "host/paint/picture_formats.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <vector>
#include "platform/base/alternatives.h"
#include "platform/base/terminal_text.h"

namespace host {
namespace {

using platform::Result;

Result<std::string> pngContent(Painter& painter, const DisplayList& list, int scale,
                               Painter::Timing& timing) {
    return painter.png(list, scale, &timing);
}

Result<std::string> svgContent(Painter& painter, const DisplayList& list, int /*scale*/,
                               Painter::Timing& /*timing*/) {
    return painter.svg(list);
}

Result<std::string> jsonContent(Painter& /*painter*/, const DisplayList& list, int /*scale*/,
                                Painter::Timing& /*timing*/) {
    const std::string text =
        displayListJson(list).dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    return platform::terminalText(text, /*keepsLineBreaks=*/true) + "\n";
}

}  // namespace

std::span<const PictureFormat> pictureFormats() {
    static const std::array formats{PictureFormat{".png", pngContent}, PictureFormat{".svg", svgContent},
                                    PictureFormat{".json", jsonContent}};
    return formats;
}

Result<PictureFormat> pictureFormatOf(std::string_view fileName) {
    const auto formats = pictureFormats();
    const auto found = std::ranges::find_if(
        formats, [&](const PictureFormat& format) { return fileName.ends_with(format.ending); });
    if (found != formats.end()) return *found;
    return platform::failure(
        "UsageError", 2,
        "cannot tell the format of " + std::string(fileName) + "; let it end in " + pictureEndings());
}

std::string pictureEndings() {
    std::vector<std::string> endings;
    for (const PictureFormat& format : pictureFormats()) endings.push_back(format.ending);
    return platform::alternatives(endings);
}

}  // namespace host
