#pragma once

// What layout has to know about text and pictures; whoever draws them answers.

#include <optional>
#include <string>
#include <vector>
#include "platform/base/bytes.h"
#include "platform/view/screen.h"
#include "platform/view/view.h"

namespace host {

/// A text's answer to a proposal, in points.
struct TextMeasure {
    /// Width of the longest line and height of all lines, each rounded up to a pixel.
    platform::Size size;
    /// From the top of the box.
    double firstBaseline = 0.0;
    double lastBaseline = 0.0;
    /// How many lines are shown, after limit and height have cut.
    int lines = 1;
};

/// Metrics of the tallest font in a text, in points, for the gaps of columns.
struct FontMetrics {
    double ascent = 0.0;
    double descent = 0.0;
    double capHeight = 0.0;
};

/// Measures at one pixel scale. Answers depend on the arguments alone, not on the process's surroundings.
class Measurer {
public:
    virtual ~Measurer() = default;

    /// Pixels per point.
    virtual double scale() const = 0;
    /// Breaks the text within `width` (absent: one line per paragraph) and cuts it, with an
    /// ellipsis, after `lineLimit` lines and after as many whole lines as `height` holds, but never
    /// before the first.
    virtual TextMeasure text(const std::vector<platform::TextRun>& runs, std::optional<int> lineLimit,
                             std::optional<double> width, std::optional<double> height) const = 0;
    virtual FontMetrics metrics(const std::vector<platform::TextRun>& runs) const = 0;
    /// Natural size of an asset; nothing when no asset has that name.
    virtual std::optional<platform::Size> asset(const std::string& name) const = 0;
    /// Natural size of an encoded picture (a pixel is a point); nothing when the bytes are not a picture.
    virtual std::optional<platform::Size> picture(const platform::Bytes& bytes) const = 0;
};

}  // namespace host
