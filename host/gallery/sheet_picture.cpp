#include "host/gallery/sheet_picture.h"

#include <regex>

namespace host {

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

}  // namespace host
