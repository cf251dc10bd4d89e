#pragma once

// Sets text in lines: breaks, cuts, measures and draws it.

#include <cairo.h>
#include <pango/pango.h>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>
#include "host/layout/measurer.h"
#include "host/paint/font_library.h"
#include "host/paint/picture_library.h"
#include "platform/view/view.h"

namespace host {

/// Widths and line breaks are the same at every pixel scale; only boxes are rounded to pixels.
class TextSetter {
public:
    /// `pictures` supplies the pictures in texts and must outlive this object.
    TextSetter(TextContext context, PictureLibrary& pictures);
    TextSetter(const TextSetter&) = delete;
    TextSetter& operator=(const TextSetter&) = delete;

    /// As `Measurer::text`, for boxes of whole pixels. Remembers its answers.
    TextMeasure measure(const std::vector<platform::TextRun>& runs, std::optional<int> lineLimit,
                        std::optional<double> width, std::optional<double> height, double scale);
    FontMetrics metrics(const std::vector<platform::TextRun>& runs);

    /// Draws at most `lines` lines, broken and aligned within `width`, from the origin down and to the right.
    /// Runs without a colour are black.
    void draw(cairo_t* canvas, const std::vector<platform::TextRun>& runs, int lines, double width,
              platform::HorizontalAlignment alignment = platform::HorizontalAlignment::leading);

private:
    static void drawInlinePicture(cairo_t* canvas, PangoAttrShape* shape, gboolean isPath, gpointer setter);

    TextContext context_;
    PictureLibrary& pictures_;
    std::unordered_map<std::string, TextMeasure> measures_;
};

}  // namespace host
