#pragma once

// The page that shows a gallery's pictures side by side.

#include <string>
#include <vector>
#include "platform/view/widget_family.h"

namespace host {

enum class PictureNews { none, changed, added, missing };

struct GalleryPicture {
    std::string kind;
    platform::WidgetFamily family = platform::WidgetFamily::systemSmall;
    bool isDark = false;
    std::string state;

    std::string fileName() const;
};

struct ComparedPicture {
    GalleryPicture picture;
    PictureNews news = PictureNews::none;
};

/// The states of one widget that belong together.
struct GalleryRow {
    std::string title;
    std::vector<ComparedPicture> pictures;
};

struct GallerySection {
    std::string title;
    std::string description;
    std::vector<GalleryRow> rows;
};

struct GalleryPage {
    /// In which surroundings the pictures were drawn.
    std::string subtitle;
    /// Of a comparison; empty without one.
    std::string verdict;
    std::vector<GallerySection> sections;
};

/// Pictures stand beside the page, earlier ones in "before/". All texts are escaped.
std::string indexPage(const GalleryPage& page);

}  // namespace host
