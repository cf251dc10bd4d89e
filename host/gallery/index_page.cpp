#include "host/gallery/index_page.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <string_view>

namespace host {
namespace {

using platform::WidgetFamily;

// The widgets stand on what a home screen has behind them, so that their outlines can be seen.
constexpr std::string_view styleSheet = R"(
:root { color-scheme: light; font: 15px/1.45 "Inter", system-ui, sans-serif; color: #16181d; background: #fff; }
body { margin: 0 auto; max-width: 1560px; padding: 28px 28px 80px; }
h1 { font-size: 28px; margin: 0 0 4px; }
h2 { font-size: 22px; margin: 56px 0 2px; }
h3 { font-size: 15px; margin: 30px 0 10px; padding-top: 10px; border-top: 1px solid #d9dde3; }
p { margin: 0 0 6px; color: #4a5160; }
nav a { margin-right: 16px; }
a { color: #1d5fa8; }
.verdict { padding: 10px 14px; border-radius: 10px; background: #eef3f9; color: #16181d; max-width: 720px; }
.changes { padding-left: 20px; }
.row { display: flex; flex-wrap: wrap; gap: 14px; align-items: flex-start; }
.row.tall { display: grid; grid-template-columns: max-content max-content; justify-content: start; justify-items: start; }
.tall .systemLarge { grid-column: 2; grid-row: 1 / span 2; }
@media (max-width: 1500px) { .row.tall { display: flex; } }
.pair { border-radius: 14px; overflow: hidden; background: #f1f3f6; max-width: 100%; }
.pair h4 { margin: 0; padding: 7px 14px 0; font-size: 12px; font-weight: 500; color: #4a5160; }
.looks { display: flex; flex-wrap: wrap; gap: 1px; padding-top: 7px; }
figure { margin: 0; padding: 14px; }
figure.light { background: #cfd8e3; }
figure.dark { background: #3b4252; color: #f3f5f8; }
figure img { display: block; }
figcaption { font-size: 12px; padding-top: 8px; }
.news figcaption { font-weight: 600; }
.news { box-shadow: inset 0 0 0 4px #d9480f; scroll-margin-top: 84px; }
.news:target { box-shadow: inset 0 0 0 8px #d9480f; }
.before img { opacity: .8; }
@media (max-width: 480px) { body { padding-inline: 12px; } }
@media (max-width: 389px) { body, figure { padding-inline: 11px; } .row { margin-inline: -11px; } }
)";

std::string escaped(std::string_view text) {
    std::string safe;
    for (const char c : text) {
        switch (c) {
            case '&': safe += "&amp;"; break;
            case '<': safe += "&lt;"; break;
            case '>': safe += "&gt;"; break;
            case '"': safe += "&quot;"; break;
            default: safe += c;
        }
    }
    return safe;
}

std::string_view sizeName(WidgetFamily family) {
    switch (family) {
        case WidgetFamily::systemSmall: return "Small";
        case WidgetFamily::systemMedium: return "Medium";
        case WidgetFamily::systemLarge: return "Large";
    }
    return "";
}

std::string_view themeName(const GalleryPicture& picture) { return picture.isDark ? "dark" : "light"; }

std::string_view newsText(PictureNews news) {
    switch (news) {
        case PictureNews::none: return "";
        case PictureNews::changed: return "changed";
        case PictureNews::added: return "new";
        case PictureNews::missing: return "no longer drawn";
    }
    return "";
}

struct Point {
    double x;
    double y;
};

/// The outline in CSS: corners that bend in gradually, as a phone's do. A corner's curve begins 1.53 radii
/// before it; its two control polygons mirror each other.
std::string outlinePath(WidgetFamily family) {
    constexpr double radius = 22.0;
    // Along the first side and away from it, in radii from the corner, up to the corner's end.
    constexpr std::array<Point, 10> curve{{{1.528665, 0.0},
                                           {1.0884930, 0.0},
                                           {0.8684070, 0.0},
                                           {0.6314941, 0.0749114},
                                           {0.3728240, 0.1690600},
                                           {0.1690600, 0.3728240},
                                           {0.0749114, 0.6314941},
                                           {0.0, 0.8684070},
                                           {0.0, 1.0884930},
                                           {0.0, 1.528665}}};
    const auto [width, height] = platform::widgetSize(family);
    struct Corner {
        Point at;
        Point along;
        Point away;
    };
    const std::array<Corner, 4> corners{{{{width, 0}, {-1, 0}, {0, 1}},
                                         {{width, height}, {0, -1}, {-1, 0}},
                                         {{0, height}, {1, 0}, {0, -1}},
                                         {{0, 0}, {0, 1}, {1, 0}}}};
    std::ostringstream path;
    for (const Corner& corner : corners) {
        for (std::size_t point = 0; point < curve.size(); ++point) {
            const double along = curve.at(point).x * radius;
            const double away = curve.at(point).y * radius;
            path << (point == 0       ? (&corner == corners.data() ? "M" : "L")
                     : point % 3 == 1 ? "C"
                                      : " ")
                 << corner.at.x + along * corner.along.x + away * corner.away.x << ' '
                 << corner.at.y + along * corner.along.y + away * corner.away.y;
        }
    }
    return path.str() + "Z";
}

void writeStyle(std::ostream& page) {
    page << "<style>" << styleSheet;
    for (const WidgetFamily family : platform::allWidgetFamilies) {
        const auto [width, height] = platform::widgetSize(family);
        page << '.' << description(family) << " img { width: " << width << "px; height: " << height
             << "px; clip-path: path(\"" << outlinePath(family) << "\"); }\n";
    }
    page << "</style>\n";
}

std::string pictureName(const GalleryPicture& picture, std::string_view title) {
    std::ostringstream name;
    name << picture.kind << ", " << sizeName(picture.family) << ", " << themeName(picture) << ": " << title;
    return name.str();
}

struct Figure {
    std::string folder;
    std::string_view caption;
    std::string_view classes;
    /// What the list of changes leads to.
    bool isTarget = false;
};

void writeFigure(std::ostream& page, const GalleryPicture& picture, std::string_view title,
                 const Figure& figure) {
    page << "<figure class=\"" << themeName(picture) << figure.classes << '"';
    if (figure.isTarget) page << " id=\"" << escaped(picture.fileName()) << '"';
    page << "><img src=\"" << escaped(figure.folder + picture.fileName()) << "\" alt=\""
         << escaped(pictureName(picture, title)) << "\">";
    if (!figure.caption.empty()) page << "<figcaption>" << figure.caption << "</figcaption>";
    page << "</figure>\n";
}

void writePicture(std::ostream& page, const ComparedPicture& shown, std::string_view title) {
    const std::string_view news = newsText(shown.news);
    if (shown.news == PictureNews::missing) {
        writeFigure(page, shown.picture, title, {"before/", news, " before news", true});
        return;
    }
    if (shown.news == PictureNews::changed) {
        writeFigure(page, shown.picture, title, {"before/", "before", " before"});
    }
    const bool isNews = shown.news != PictureNews::none;
    writeFigure(page, shown.picture, title, {"", news, isNews ? " news" : "", isNews});
}

/// A link to every picture that is not as before.
void writeChanges(std::ostream& page, const std::vector<GallerySection>& sections) {
    std::ostringstream items;
    for (const GallerySection& section : sections) {
        for (const GalleryRow& row : section.rows) {
            for (const ComparedPicture& shown : row.pictures) {
                if (shown.news == PictureNews::none) continue;
                items << "<li><a href=\"#" << escaped(shown.picture.fileName()) << "\">"
                      << escaped(pictureName(shown.picture, row.title)) << "</a>, " << newsText(shown.news)
                      << "</li>\n";
            }
        }
    }
    if (!items.view().empty()) page << "<ul class=\"changes\">\n" << items.view() << "</ul>\n";
}

bool hasFamily(const GalleryRow& row, WidgetFamily family) {
    return std::ranges::any_of(row.pictures,
                               [&](const ComparedPicture& shown) { return shown.picture.family == family; });
}

void writeRow(std::ostream& page, const GalleryRow& row) {
    const bool isTall =
        hasFamily(row, WidgetFamily::systemMedium) && hasFamily(row, WidgetFamily::systemLarge);
    page << "<h3>" << escaped(row.title) << "</h3>\n<div class=\"row" << (isTall ? " tall" : "") << "\">\n";
    for (const WidgetFamily family : platform::allWidgetFamilies) {
        if (!hasFamily(row, family)) continue;
        page << "<div class=\"pair " << description(family) << "\"><h4>" << sizeName(family)
             << "</h4><div class=\"looks\">\n";
        for (const ComparedPicture& shown : row.pictures) {
            if (shown.picture.family == family) writePicture(page, shown, row.title);
        }
        page << "</div></div>\n";
    }
    page << "</div>\n";
}

}  // namespace

std::string GalleryPicture::fileName() const {
    return kind + "-" + std::string(description(family)) + (isDark ? "-dark-" : "-light-") + state + ".png";
}

std::string indexPage(const GalleryPage& page) {
    std::ostringstream html;
    html << "<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
            "<meta name=\"viewport\" content=\"width=device-width\">\n"
            "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src 'self' "
            "file:; style-src 'unsafe-inline'\">\n<title>Brightledger Widgets: gallery</title>\n";
    writeStyle(html);
    html << "</head>\n<body>\n<h1>Every widget, every state</h1>\n<p>" << escaped(page.subtitle) << "</p>\n";
    if (!page.verdict.empty()) {
        html << "<p class=\"verdict\">" << escaped(page.verdict) << "</p>\n";
        writeChanges(html, page.sections);
    }
    html << "<nav aria-label=\"Widgets\">";
    for (const GallerySection& section : page.sections) {
        html << "<a href=\"#" << escaped(section.title) << "\">" << escaped(section.title) << "</a>\n";
    }
    html << "</nav>\n<main>\n";
    for (const GallerySection& section : page.sections) {
        html << "<section>\n<h2 id=\"" << escaped(section.title) << "\">" << escaped(section.title)
             << "</h2>\n<p>" << escaped(section.description) << "</p>\n";
        for (const GalleryRow& row : section.rows) writeRow(html, row);
        html << "</section>\n";
    }
    html << "</main>\n</body>\n</html>\n";
    return html.str();
}

}  // namespace host
