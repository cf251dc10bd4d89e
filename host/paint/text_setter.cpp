#include "host/paint/text_setter.h"

#include <pango/pangocairo.h>
#include <algorithm>
#include <cmath>
#include <string_view>
#include "host/paint/font_library.h"

namespace host {
namespace {

using platform::TextRun;

constexpr std::string_view ellipsis = "\u2026";
constexpr std::string_view objectReplacement = "\uFFFC";

// More than any widget has room for; longer text would only take time.
constexpr glong longestText = 4000;
constexpr int mostLines = 200;
constexpr std::size_t rememberedMeasures = 4096;

/// A stretch of a text that belongs to one run, in bytes.
struct Piece {
    std::size_t begin = 0;
    std::size_t end = 0;
    const TextRun* run = nullptr;
};

struct FlatText {
    std::string text;
    std::vector<Piece> pieces;
};

using Layout = Owned<PangoLayout, g_object_unref>;

struct SetLine {
    /// Owned by one of the layouts.
    PangoLayoutLine* line = nullptr;
    /// Where it starts in the whole text.
    std::size_t begin = 0;
    /// Where its paragraph ends in the whole text.
    std::size_t paragraphEnd = 0;
    double width = 0.0;
    double ascent = 0.0;
    double descent = 0.0;

    double height() const { return ascent + descent; }
};

struct SetText {
    std::vector<Layout> layouts;
    std::vector<SetLine> lines;
};

/// Texts that are too long for any widget end in an ellipsis, whatever runs they come in.
FlatText flatten(const std::vector<TextRun>& runs) {
    FlatText flat;
    glong left = longestText;
    for (const TextRun& run : runs) {
        const std::string_view text = run.image ? objectReplacement : std::string_view(run.text);
        // A character takes four bytes at most, and what follows is cut anyway.
        const auto looked = std::min(text.size(), static_cast<std::size_t>(left + 1) * 4);
        const Owned<char, g_free> valid(g_utf8_make_valid(text.data(), static_cast<gssize>(looked)));
        const glong length = g_utf8_strlen(valid.get(), -1);
        const std::size_t begin = flat.text.size();
        if (length <= left) {
            flat.text += valid.get();
        } else {
            flat.text.append(valid.get(), g_utf8_offset_to_pointer(valid.get(), left)).append(ellipsis);
        }
        flat.pieces.push_back({.begin = begin, .end = flat.text.size(), .run = &run});
        if (length > left) break;
        left -= length;
    }
    return flat;
}

/// The run at a place in the text; at its end, the last one. Null when the text has no runs.
const TextRun* runAt(const FlatText& flat, std::size_t place) {
    if (flat.pieces.empty()) return nullptr;
    const auto piece = std::ranges::upper_bound(flat.pieces, place, {}, &Piece::end);
    return piece == flat.pieces.end() ? flat.pieces.back().run : piece->run;
}

struct Paragraph {
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// Line breaks end paragraphs; a break at the very end leaves an empty last one.
std::vector<Paragraph> paragraphs(std::string_view text) {
    static constexpr std::string_view breaks[] = {"\r\n", "\n", "\r", "\u2028", "\u2029", "\u0085"};
    std::vector<Paragraph> found;
    std::size_t begin = 0;
    for (std::size_t place = 0; place < text.size();) {
        const auto* lineBreak = std::ranges::find_if(
            breaks, [&](std::string_view candidate) { return text.substr(place).starts_with(candidate); });
        if (lineBreak == std::end(breaks)) {
            ++place;
            continue;
        }
        found.push_back({.begin = begin, .end = place});
        begin = place += lineBreak->size();
    }
    found.push_back({.begin = begin, .end = text.size()});
    return found;
}

PangoWeight pangoWeight(platform::FontWeight weight) {
    switch (weight) {
        case platform::FontWeight::medium: return PANGO_WEIGHT_MEDIUM;
        case platform::FontWeight::bold: return PANGO_WEIGHT_BOLD;
        case platform::FontWeight::regular: break;
    }
    return PANGO_WEIGHT_NORMAL;
}

int pangoUnits(double points) { return static_cast<int>(std::lround(points * PANGO_SCALE)); }

guint16 pangoColor(double component) {
    return static_cast<guint16>(std::lround(std::clamp(component, 0.0, 1.0) * 65535.0));
}

Owned<PangoFontDescription, pango_font_description_free> describe(const platform::Font& font) {
    Owned<PangoFontDescription, pango_font_description_free> description(pango_font_description_new());
    pango_font_description_set_family_static(description.get(), textFamily);
    pango_font_description_set_weight(description.get(), pangoWeight(drawnWeight(font)));
    pango_font_description_set_absolute_size(description.get(), drawnSize(font) * PANGO_SCALE);
    return description;
}

platform::Size inlineSize(const TextRun& run, PictureLibrary& pictures) {
    return pictures.assetSize(*run.image).value_or(platform::Size{});
}

PangoAttribute* makeShape(const TextRun& run, PictureLibrary& pictures) {
    const platform::Size size = inlineSize(run, pictures);
    const PangoRectangle box{.x = 0,
                             .y = -pangoUnits(size.height),
                             .width = pangoUnits(size.width),
                             .height = pangoUnits(size.height)};
    return pango_attr_shape_new_with_data(&box, &box, const_cast<std::string*>(&*run.image), nullptr,
                                          nullptr);
}

void addAttributes(PangoAttrList* list, const TextRun& run, std::size_t begin, std::size_t end,
                   PictureLibrary& pictures) {
    const auto add = [&](PangoAttribute* attribute) {
        attribute->start_index = static_cast<guint>(begin);
        attribute->end_index = static_cast<guint>(end);
        pango_attr_list_insert(list, attribute);
    };
    if (run.image) {
        add(makeShape(run, pictures));
        return;
    }
    const platform::Color color = run.color.value_or(platform::Color::white(0.0));
    add(pango_attr_font_desc_new(describe(run.font).get()));
    add(pango_attr_letter_spacing_new(pangoUnits(tracking(run.font))));
    add(pango_attr_insert_hyphens_new(FALSE));
    add(pango_attr_foreground_new(pangoColor(color.red()), pangoColor(color.green()),
                                  pangoColor(color.blue())));
    // To pango, 0 means "not set".
    add(pango_attr_foreground_alpha_new(std::max<guint16>(pangoColor(color.alpha()), 1)));
}

/// The text from `begin` to `end` with its attributes, then `suffix` with those of the last character.
Layout makeLayout(PangoContext* context, const FlatText& flat, std::size_t begin, std::size_t end,
                  std::string_view suffix, std::optional<int> width, PictureLibrary& pictures) {
    const std::string text = flat.text.substr(begin, end - begin).append(suffix);
    const Owned<PangoAttrList, pango_attr_list_unref> attributes(pango_attr_list_new());
    for (const Piece& piece : flat.pieces) {
        const std::size_t from = std::max(piece.begin, begin);
        const std::size_t to = std::min(piece.end, end);
        if (from >= to) continue;
        const std::size_t extra = to == end && !piece.run->image ? suffix.size() : 0;
        addAttributes(attributes.get(), *piece.run, from - begin, to - begin + extra, pictures);
    }
    Layout layout(pango_layout_new(context));
    if (const TextRun* run = runAt(flat, begin)) {
        pango_layout_set_font_description(layout.get(), describe(run->font).get());
    }
    pango_layout_set_auto_dir(layout.get(), FALSE);
    pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    pango_layout_set_attributes(layout.get(), attributes.get());
    if (width) pango_layout_set_width(layout.get(), *width);
    return layout;
}

void include(SetLine& line, const TextRun& run, PictureLibrary& pictures) {
    if (run.image) {
        line.ascent = std::max(line.ascent, inlineSize(run, pictures).height);
        return;
    }
    const FontMetrics metrics = systemMetrics(drawnSize(run.font));
    line.ascent = std::max(line.ascent, metrics.ascent);
    line.descent = std::max(line.descent, metrics.descent);
}

int letterSpacing(const PangoItem& item) {
    for (const GSList* node = item.analysis.extra_attrs; node != nullptr; node = node->next) {
        const auto* attribute = static_cast<const PangoAttribute*>(node->data);
        if (attribute->klass->type == PANGO_ATTR_LETTER_SPACING) {
            return reinterpret_cast<const PangoAttrInt*>(attribute)->value;
        }
    }
    return 0;
}

/// The width that broke the line, in pango's units. It includes the spacing around the first and last
/// letters, which pango removes after breaking. Breaking again at any width from this to the original one
/// gives the same line.
int brokenWidth(const PangoLayoutLine& line) {
    int width = 0;
    int taken = 0;
    for (const GSList* node = line.runs; node != nullptr; node = node->next) {
        const auto& run = *static_cast<const PangoGlyphItem*>(node->data);
        const int spacing = letterSpacing(*run.item);
        if (node == line.runs) taken += spacing / 2;
        // Pango removes nothing from a line that ends in a run of blanks, which have no width.
        const int runWidth = pango_glyph_string_get_width(run.glyphs);
        if (node->next == nullptr && runWidth != 0) taken += spacing - spacing / 2;
        width += runWidth;
    }
    return width + taken;
}

/// As high as its tallest run. `begin` is where the layout's text starts in the whole text.
SetLine makeLine(PangoLayoutLine* line, const FlatText& flat, std::size_t begin, std::size_t paragraphEnd,
                 PictureLibrary& pictures) {
    SetLine set{.line = line,
                .begin = begin + static_cast<std::size_t>(line->start_index),
                .paragraphEnd = paragraphEnd,
                .width = static_cast<double>(brokenWidth(*line)) / PANGO_SCALE};
    for (const GSList* node = line->runs; node != nullptr; node = node->next) {
        const PangoItem& item = *static_cast<PangoGlyphItem*>(node->data)->item;
        if (const TextRun* run = runAt(flat, begin + static_cast<std::size_t>(item.offset))) {
            include(set, *run, pictures);
        }
    }
    if (line->runs == nullptr) {
        if (const TextRun* run = runAt(flat, set.begin)) include(set, *run, pictures);
    }
    return set;
}

/// How many lines may stay; at least one.
std::size_t allowedLines(const std::vector<SetLine>& lines, int wanted, std::optional<double> height) {
    std::size_t allowed = std::min(lines.size(), static_cast<std::size_t>(wanted));
    if (height) {
        // After rounding to pixels and adding up, a box must still hold its own text.
        constexpr double tolerance = 1e-3;
        double used = 0.0;
        for (std::size_t index = 0; index < allowed; ++index) {
            used += lines[index].height();
            if (used > *height + tolerance) allowed = std::max<std::size_t>(index, 1);
        }
    }
    return allowed;
}

/// Sets the last line again with the rest of its paragraph, so that it ends in an ellipsis.
void endInEllipsis(SetText& set, const FlatText& flat, std::optional<int> width, bool isParagraphsLast,
                   PangoContext* context, PictureLibrary& pictures) {
    const SetLine cut = set.lines.back();
    const std::string_view suffix = isParagraphsLast ? ellipsis : std::string_view{};
    Layout layout = makeLayout(context, flat, cut.begin, cut.paragraphEnd, suffix, width, pictures);
    pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
    set.lines.back() = makeLine(pango_layout_get_line_readonly(layout.get(), 0), flat, cut.begin,
                                cut.paragraphEnd, pictures);
    set.layouts.push_back(std::move(layout));
}

/// In pango's units; absent when the width is so large that it has no effect.
std::optional<int> lineWidth(std::optional<double> width) {
    constexpr double widest = 100'000.0;
    if (!width || !(*width < widest)) return std::nullopt;
    // Rounded down, so that no line is wider than was proposed, after adding what arithmetic may have lost.
    constexpr double lost = 1e-3;
    return static_cast<int>(std::floor(std::max(*width, 0.0) * PANGO_SCALE + lost));
}

SetText setText(const FlatText& flat, std::optional<int> lineLimit, std::optional<int> width,
                std::optional<double> height, PangoContext* context, PictureLibrary& pictures) {
    const int wanted = std::clamp(lineLimit.value_or(mostLines), 1, mostLines);
    SetText set;
    for (const Paragraph& paragraph : paragraphs(flat.text)) {
        // One line too many shows that the text has to be cut.
        if (set.lines.size() > static_cast<std::size_t>(wanted)) break;
        Layout layout = makeLayout(context, flat, paragraph.begin, paragraph.end, {}, width, pictures);
        pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
        pango_layout_set_height(layout.get(), -(wanted + 1));
        for (GSList* node = pango_layout_get_lines_readonly(layout.get()); node != nullptr;
             node = node->next) {
            set.lines.push_back(makeLine(static_cast<PangoLayoutLine*>(node->data), flat, paragraph.begin,
                                         paragraph.end, pictures));
        }
        set.layouts.push_back(std::move(layout));
    }
    const std::size_t allowed = allowedLines(set.lines, wanted, height);
    if (allowed < set.lines.size()) {
        const bool isParagraphsLast = set.lines[allowed].paragraphEnd != set.lines[allowed - 1].paragraphEnd;
        set.lines.resize(allowed);
        endInEllipsis(set, flat, width, isParagraphsLast, context, pictures);
    }
    return set;
}

double roundedUp(double points, double scale) { return std::ceil(points * scale - 1e-6) / scale; }

/// No wider than was proposed where it fits, although rounded up: more would fit there.
double boxWidth(double width, std::optional<double> proposed, double scale) {
    const double rounded = roundedUp(width, scale);
    constexpr double lost = 1e-5;
    return proposed && width <= *proposed + lost ? std::min(rounded, *proposed) : rounded;
}

TextMeasure measured(const SetText& set, std::optional<double> proposedWidth, double scale) {
    TextMeasure measure;
    measure.lines = static_cast<int>(set.lines.size());
    double width = 0.0;
    double height = 0.0;
    for (const SetLine& line : set.lines) {
        width = std::max(width, line.width);
        measure.lastBaseline = height + line.ascent;
        height += line.height();
    }
    measure.firstBaseline = set.lines.front().ascent;
    measure.size = {.width = boxWidth(width, proposedWidth, scale), .height = roundedUp(height, scale)};
    return measure;
}

template <typename Number>
void append(std::string& key, Number value) {
    key.append(reinterpret_cast<const char*>(&value), sizeof value);
}
void append(std::string& key, const std::string& text) {
    append(key, text.size());
    key += text;
}
template <typename Value>
void append(std::string& key, const std::optional<Value>& value) {
    append(key, value.has_value());
    if (value) append(key, *value);
}

/// All that a measure depends on: colours do not count.
std::string keyOf(const std::vector<TextRun>& runs, std::optional<int> lineLimit, std::optional<double> width,
                  std::optional<double> height, double scale) {
    std::string key;
    append(key, scale);
    append(key, lineLimit);
    append(key, width);
    append(key, height);
    for (const TextRun& run : runs) {
        append(key, run.text);
        append(key, run.font.name);
        append(key, run.font.size);
        append(key, run.font.weight);
        append(key, run.image);
    }
    return key;
}

/// Where a line starts in a box of `width`.
double placeOf(const SetLine& line, double width, platform::HorizontalAlignment alignment) {
    const double room = std::max(width - line.width, 0.0);
    switch (alignment) {
        case platform::HorizontalAlignment::leading: return 0.0;
        case platform::HorizontalAlignment::center: return room / 2.0;
        case platform::HorizontalAlignment::trailing: return room;
    }
    return 0.0;
}

}  // namespace

TextSetter::TextSetter(TextContext context, PictureLibrary& pictures)
    : context_(std::move(context)), pictures_(pictures) {
    pango_cairo_context_set_shape_renderer(context_.get(), &TextSetter::drawInlinePicture, this, nullptr);
}

TextMeasure TextSetter::measure(const std::vector<TextRun>& runs, std::optional<int> lineLimit,
                                std::optional<double> width, std::optional<double> height, double scale) {
    const std::string key = keyOf(runs, lineLimit, width, height, scale);
    if (const auto known = measures_.find(key); known != measures_.end()) return known->second;

    const TextMeasure answer = measured(
        setText(flatten(runs), lineLimit, lineWidth(width), height, context_.get(), pictures_), width, scale);
    if (measures_.size() >= rememberedMeasures) measures_.clear();
    measures_.emplace(key, answer);
    return answer;
}

FontMetrics TextSetter::metrics(const std::vector<TextRun>& runs) {
    double size = 0.0;
    for (const TextRun& run : runs) {
        if (!run.image) size = std::max(size, drawnSize(run.font));
    }
    return systemMetrics(size);
}

void TextSetter::draw(cairo_t* canvas, const std::vector<TextRun>& runs, int lines, double width,
                      platform::HorizontalAlignment alignment) {
    const FlatText flat = flatten(runs);
    const SetText set = setText(flat, lines, lineWidth(width), std::nullopt, context_.get(), pictures_);
    double top = 0.0;
    for (const SetLine& line : set.lines) {
        cairo_move_to(canvas, placeOf(line, width, alignment), top + line.ascent);
        pango_cairo_show_layout_line(canvas, line.line);
        top += line.height();
    }
}

void TextSetter::drawInlinePicture(cairo_t* canvas, PangoAttrShape* shape, gboolean isPath, gpointer setter) {
    if (isPath) return;
    const auto& name = *static_cast<const std::string*>(shape->data);
    const double height = -static_cast<double>(shape->logical_rect.y) / PANGO_SCALE;
    const double width = static_cast<double>(shape->logical_rect.width) / PANGO_SCALE;
    double x = 0.0;
    double y = 0.0;
    cairo_get_current_point(canvas, &x, &y);
    static_cast<TextSetter*>(setter)->pictures_.drawAsset(
        canvas, name, {.x = x, .y = y - height, .width = width, .height = height});
}

}  // namespace host
