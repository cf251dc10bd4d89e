#pragma once

// Text with round numbers, for layouts that a reader can check in the head: every character is half
// an em wide, a picture in a text too, and a line one em high, with its baseline at 0.8 and capitals of 0.7
// em. The assets are "Logo" (20 x 10) and "Icon" (12 x 12); bytes are a picture of 40 x 30 when they begin
// with "PIC".

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>
#include "host/layout/layout.h"
#include "host/layout/measurer.h"
#include "platform/view/view.h"

namespace host {

class PlainMeasurer : public Measurer {
public:
    double scale() const override { return 3.0; }

    TextMeasure text(const std::vector<platform::TextRun>& runs, std::optional<int> lineLimit,
                     std::optional<double> width, std::optional<double> height) const override {
        const double em = tallest(runs);
        const double limit = width ? std::max(1.0, std::floor(*width / (em / 2.0))) : 1e9;
        std::vector<std::size_t> lines = brokenLines(characters(runs), static_cast<std::size_t>(limit));
        std::size_t kept = lines.size();
        if (lineLimit) kept = std::min(kept, static_cast<std::size_t>(std::max(1, *lineLimit)));
        if (height) kept = std::min(kept, static_cast<std::size_t>(std::max(1.0, std::floor(*height / em))));
        lines.resize(kept);
        const double longest = static_cast<double>(*std::ranges::max_element(lines)) * em / 2.0;
        return {.size = {longest, static_cast<double>(kept) * em},
                .firstBaseline = 0.8 * em,
                .lastBaseline = (static_cast<double>(kept) - 0.2) * em,
                .lines = static_cast<int>(kept)};
    }
    FontMetrics metrics(const std::vector<platform::TextRun>& runs) const override {
        const double em = tallest(runs);
        return {.ascent = 0.8 * em, .descent = 0.2 * em, .capHeight = 0.7 * em};
    }
    std::optional<platform::Size> asset(const std::string& name) const override {
        if (name == "Logo") return platform::Size{20.0, 10.0};
        if (name == "Icon") return platform::Size{12.0, 12.0};
        return std::nullopt;
    }
    std::optional<platform::Size> picture(const platform::Bytes& bytes) const override {
        if (bytes.view().starts_with("PIC")) return platform::Size{40.0, 30.0};
        return std::nullopt;
    }

private:
    static double tallest(const std::vector<platform::TextRun>& runs) {
        double em = 0.0;
        for (const platform::TextRun& run : runs) {
            if (!run.image) em = std::max(em, run.font.size);
        }
        return em;
    }
    static std::string characters(const std::vector<platform::TextRun>& runs) {
        std::string all;
        for (const platform::TextRun& run : runs) all += run.image ? "#" : run.text;
        return all;
    }
    /// The lengths of the lines: broken at blanks, and inside of words that are longer than a line.
    static std::vector<std::size_t> brokenLines(const std::string& text, std::size_t limit) {
        std::vector<std::size_t> lines;
        std::size_t begin = 0;
        while (begin + limit < text.size()) {
            const std::size_t blank = text.rfind(' ', begin + limit);
            const bool isInside = blank == text.npos || blank <= begin;
            const std::size_t end = isInside ? begin + limit : blank;
            lines.push_back(end - begin);
            begin = isInside ? end : end + 1;
        }
        lines.push_back(text.size() - begin);
        return lines;
    }
};

/// Text in the system font at 10 points: 5 points a character, 10 a line.
inline platform::Text words(std::string text) {
    return platform::Text(std::move(text), platform::Font::system(10.0));
}

/// Takes what it is offered.
inline platform::View color() { return platform::ColorFill(platform::Color::gray()); }

inline platform::View box(double width, double height) {
    return color().frame({.width = width, .height = height, .alignment = {}});
}

}  // namespace host
