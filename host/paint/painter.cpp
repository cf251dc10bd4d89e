#include "host/paint/painter.h"

#include <cairo-svg.h>
#include <cairo.h>
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <unordered_map>
#include <utility>
#include <vector>
#include "host/paint/font_library.h"
#include "host/paint/owned.h"
#include "host/paint/picture_library.h"
#include "host/paint/png_writer.h"
#include "host/paint/rounded_path.h"
#include "host/paint/text_setter.h"

namespace host {
namespace {

using platform::failure;
using platform::Result;

using Canvas = Owned<cairo_t, cairo_destroy>;

constexpr int smallestScale = 1;
constexpr int largestScale = 3;
// An SVG has no pixels, so its frames are placed where the sharpest screen would put them.
constexpr int vectorScale = largestScale;
constexpr std::size_t keptSurfaces = 4;

// What comes before a name where it is defined or used.
constexpr std::array<std::string_view, 3> leads{"id=\"", "=\"#", "url(#"};

/// Renumbers the identifiers of an SVG in the order in which they appear. Cairo keeps counting through all
/// drawings of a process, but the same drawing must give the same text.
std::string withRenumberedIds(std::string_view svg) {
    std::unordered_map<std::string_view, std::size_t> numbers;
    std::string renumbered;
    renumbered.reserve(svg.size());
    for (std::size_t place = 0; place < svg.size();) {
        const auto* lead = std::ranges::find_if(
            leads, [&](std::string_view candidate) { return svg.substr(place).starts_with(candidate); });
        if (lead == leads.end()) {
            renumbered += svg[place++];
            continue;
        }
        const std::size_t begin = place + lead->size();
        const std::size_t end = std::min(svg.find_first_of("\")", begin), svg.size());
        const std::size_t number =
            numbers.try_emplace(svg.substr(begin, end - begin), numbers.size()).first->second;
        renumbered.append(*lead).append("n").append(std::to_string(number));
        place = end;
    }
    return renumbered;
}

/// Both corners on the nearest pixel, ties up.
Rect snapped(const Rect& frame, double scale) {
    // Sums of thirds of a point miss a pixel's middle by very little; a line of one pixel must not vanish for
    // that.
    constexpr double hair = 1e-6;
    const auto snap = [&](double position) { return std::floor(position * scale + 0.5 + hair) / scale; };
    const double x = snap(frame.x);
    const double y = snap(frame.y);
    return {
        .x = x, .y = y, .width = snap(frame.x + frame.width) - x, .height = snap(frame.y + frame.height) - y};
}

/// The limit is far beyond any widget and well within cairo's fixed-point pixels.
bool isRepresentable(const Rect& frame) {
    constexpr double farthest = 1e6;
    return std::ranges::all_of(std::array{frame.x, frame.y, frame.width, frame.height},
                               [](double length) { return std::abs(length) <= farthest; });
}

/// Items that are not representable are not drawn.
bool isRepresentable(const DisplayItem& item) {
    const auto* stroke = std::get_if<StrokeItem>(&item.content);
    const double lineWidth = stroke != nullptr ? stroke->lineWidth : 0.0;
    return isRepresentable(item.frame) &&
           isRepresentable({.x = 0.0, .y = 0.0, .width = lineWidth, .height = 0.0}) &&
           std::ranges::all_of(item.clips, [](const Clip& clip) { return isRepresentable(clip.frame); });
}

void setColor(cairo_t* canvas, const platform::Color& color, double opacity) {
    cairo_set_source_rgba(canvas, color.red(), color.green(), color.blue(), color.alpha() * opacity);
}

class ScaledMeasurer final : public Measurer {
public:
    ScaledMeasurer(int scale, TextSetter& text, PictureLibrary& pictures)
        : scale_(scale), text_(text), pictures_(pictures) {}

    double scale() const override { return scale_; }
    TextMeasure text(const std::vector<platform::TextRun>& runs, std::optional<int> lineLimit,
                     std::optional<double> width, std::optional<double> height) const override {
        return text_.measure(runs, lineLimit, width, height, scale_);
    }
    FontMetrics metrics(const std::vector<platform::TextRun>& runs) const override {
        return text_.metrics(runs);
    }
    std::optional<platform::Size> asset(const std::string& name) const override {
        return pictures_.assetSize(name);
    }
    std::optional<platform::Size> picture(const platform::Bytes& bytes) const override {
        return pictures_.pictureSize(bytes);
    }

private:
    double scale_;
    TextSetter& text_;
    PictureLibrary& pictures_;
};

/// Draws one list on one canvas whose unit is a point.
class ListPainter {
public:
    ListPainter(cairo_t* canvas, double scale, TextSetter& text, PictureLibrary& pictures)
        : canvas_(canvas), scale_(scale), text_(text), pictures_(pictures) {}

    void paint(const DisplayList& list) {
        setColor(canvas_, list.background, 1.0);
        cairo_paint(canvas_);
        for (auto item = list.items.begin(); item != list.items.end(); ++item) {
            if (const auto* group = std::get_if<GroupItem>(&item->content)) {
                group->isBegin ? beginGroup(item, list.items.end(), group->opacity) : endGroup();
            } else {
                paint(*item);
            }
        }
        while (!groupOpacities_.empty()) endGroup();
    }

private:
    using Item = std::vector<DisplayItem>::const_iterator;

    /// The group's own surface is only as large as what is drawn in it.
    void beginGroup(Item item, Item end, double opacity) {
        groupOpacities_.push_back(opacity);
        cairo_save(canvas_);
        int depth = 0;
        for (; item != end; ++item) {
            if (const auto* group = std::get_if<GroupItem>(&item->content)) {
                depth += group->isBegin ? 1 : -1;
                if (depth == 0) break;
                continue;
            }
            if (isRepresentable(*item)) addWithOverhang(*item);
        }
        cairo_clip(canvas_);
        cairo_push_group(canvas_);
    }

    void endGroup() {
        if (groupOpacities_.empty()) return;
        cairo_pop_group_to_source(canvas_);
        cairo_paint_with_alpha(canvas_, groupOpacities_.back());
        groupOpacities_.pop_back();
        cairo_restore(canvas_);
    }

    /// Adds the item's frame to the path, enlarged by what glyphs and lines may draw outside it.
    void addWithOverhang(const DisplayItem& item) {
        constexpr double glyphOverhang = 16.0;
        const auto* stroke = std::get_if<StrokeItem>(&item.content);
        const double overhang = glyphOverhang + (stroke != nullptr ? stroke->lineWidth : 0.0);
        const Rect frame = snapped(item.frame, scale_);
        cairo_rectangle(canvas_, frame.x - overhang, frame.y - overhang, frame.width + 2 * overhang,
                        frame.height + 2 * overhang);
    }

    void paint(const DisplayItem& item) {
        if (item.ownOpacity <= 0.0 || !isRepresentable(item)) return;
        cairo_save(canvas_);
        for (const Clip& clip : item.clips) {
            addRoundedRectangle(canvas_, snapped(clip.frame, scale_), clip.cornerRadius, clip.style);
            cairo_clip(canvas_);
        }
        const Rect frame = snapped(item.frame, scale_);
        std::visit([&](const auto& content) { draw(content, item, frame); }, item.content);
        cairo_restore(canvas_);
    }

    void draw(const FillItem& fill, const DisplayItem& item, const Rect& frame) {
        addRoundedRectangle(canvas_, frame, fill.cornerRadius, fill.style);
        setColor(canvas_, fill.color, item.ownOpacity);
        cairo_fill(canvas_);
    }

    void draw(const StrokeItem& stroke, const DisplayItem& item, const Rect& frame) {
        addRoundedRectangle(canvas_, frame, stroke.cornerRadius, stroke.style);
        cairo_set_line_width(canvas_, stroke.lineWidth);
        cairo_set_miter_limit(canvas_, stroke.miterLimit);
        setColor(canvas_, stroke.color, item.ownOpacity);
        cairo_stroke(canvas_);
    }

    void draw(const TextItem& text, const DisplayItem& item, const Rect& frame) {
        blended(item, [&] {
            cairo_translate(canvas_, frame.x, frame.y);
            // Uses the width that was measured: a rounded one could break the lines elsewhere.
            text_.draw(canvas_, text.runs, text.lines, item.frame.width, text.alignment);
        });
    }

    void draw(const ImageItem& image, const DisplayItem& item, const Rect& frame) {
        if (image.cornerRadius > 0.0 && !isRoundedByClip(item)) {
            addRoundedRectangle(canvas_, frame, image.cornerRadius, platform::RoundedCornerStyle::continuous);
            cairo_clip(canvas_);
        }
        blended(item, [&] {
            if (image.bytes) {
                pictures_.drawPicture(canvas_, *image.bytes, frame);
            } else {
                pictures_.drawAsset(canvas_, image.name, frame);
            }
        });
    }

    void draw(const GroupItem&, const DisplayItem&, const Rect&) {}

    /// Cutting a corner twice would make its edge thinner, so a clip of the same frame is enough.
    static bool isRoundedByClip(const DisplayItem& item) {
        return std::ranges::any_of(item.clips, [&](const Clip& clip) {
            return clip.frame == item.frame && clip.cornerRadius > 0.0;
        });
    }

    /// Fades an item as a whole, although it is drawn in several strokes.
    template <typename Draw>
    void blended(const DisplayItem& item, const Draw& drawItem) {
        if (item.ownOpacity >= 1.0) {
            drawItem();
            return;
        }
        addWithOverhang(item);
        cairo_clip(canvas_);
        cairo_push_group(canvas_);
        drawItem();
        cairo_pop_group_to_source(canvas_);
        cairo_paint_with_alpha(canvas_, item.ownOpacity);
    }

    cairo_t* canvas_;
    double scale_;
    TextSetter& text_;
    PictureLibrary& pictures_;
    std::vector<double> groupOpacities_;
};

double millisecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

tl::unexpected<platform::Error> drawingFailed(cairo_status_t status) {
    return failure("PaintError", 3,
                   std::string("cannot draw the display list: ") + cairo_status_to_string(status));
}

}  // namespace

struct Painter::Implementation {
    Implementation(TextContext context, std::unique_ptr<PictureLibrary> library)
        : pictures(std::move(library)), text(std::move(context), *pictures) {
        for (int scale = smallestScale; scale <= largestScale; ++scale) {
            measurers.emplace_back(scale, text, *pictures);
        }
    }

    /// A surface of that size that still holds what was last drawn on it. Touching fresh memory is slow.
    cairo_surface_t* surface(int width, int height) {
        const auto kept = std::ranges::find_if(surfaces, [&](const Surface& candidate) {
            return cairo_image_surface_get_width(candidate.get()) == width &&
                   cairo_image_surface_get_height(candidate.get()) == height;
        });
        if (kept != surfaces.end()) return kept->get();
        if (surfaces.size() == keptSurfaces) surfaces.erase(surfaces.begin());
        surfaces.emplace_back(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
        return surfaces.back().get();
    }

    std::unique_ptr<PictureLibrary> pictures;
    TextSetter text;
    std::vector<ScaledMeasurer> measurers;
    std::vector<Surface> surfaces;
    PngWriter pngWriter;
};

Result<std::unique_ptr<Painter>> Painter::make(const std::filesystem::path& resources) {
    TextContext context = TRY(makeTextContext());
    std::unique_ptr<PictureLibrary> pictures = TRY(PictureLibrary::open(resources / "assets"));
    return std::unique_ptr<Painter>(
        new Painter(std::make_unique<Implementation>(std::move(context), std::move(pictures))));
}

Painter::Painter(std::unique_ptr<Implementation> implementation)
    : implementation_(std::move(implementation)) {}

Painter::~Painter() = default;

const Measurer& Painter::measurer(int scale) {
    const int known = std::clamp(scale, smallestScale, largestScale);
    return implementation_->measurers[static_cast<std::size_t>(known - smallestScale)];
}

Result<std::string> Painter::png(const DisplayList& list, int scale, Timing* timing) {
    const auto start = std::chrono::steady_clock::now();
    const double width = std::round(list.size.width * scale);
    const double height = std::round(list.size.height * scale);
    if (!isSurfaceSize(width, height)) return drawingFailed(CAIRO_STATUS_INVALID_SIZE);

    cairo_surface_t* surface = implementation_->surface(static_cast<int>(width), static_cast<int>(height));
    const Canvas canvas(cairo_create(surface));
    cairo_set_operator(canvas.get(), CAIRO_OPERATOR_CLEAR);
    cairo_paint(canvas.get());
    cairo_set_operator(canvas.get(), CAIRO_OPERATOR_OVER);
    cairo_scale(canvas.get(), scale, scale);
    ListPainter(canvas.get(), scale, implementation_->text, *implementation_->pictures).paint(list);
    if (const cairo_status_t status = cairo_status(canvas.get()); status != CAIRO_STATUS_SUCCESS) {
        implementation_->surfaces.clear();
        return drawingFailed(status);
    }
    const double paintMs = millisecondsSince(start);

    const auto encodeStart = std::chrono::steady_clock::now();
    std::string png = implementation_->pngWriter.encode(surface, list.background.alpha() >= 1.0);
    if (timing != nullptr) *timing = {.paintMs = paintMs, .encodeMs = millisecondsSince(encodeStart)};
    return png;
}

Result<std::string> Painter::svg(const DisplayList& list) {
    if (!isSurfaceSize(list.size.width, list.size.height)) return drawingFailed(CAIRO_STATUS_INVALID_SIZE);
    std::string text;
    const auto append = [](void* target, const unsigned char* bytes, unsigned length) {
        static_cast<std::string*>(target)->append(reinterpret_cast<const char*>(bytes), length);
        return CAIRO_STATUS_SUCCESS;
    };
    const Surface surface(
        cairo_svg_surface_create_for_stream(append, &text, list.size.width, list.size.height));
    cairo_svg_surface_set_document_unit(surface.get(), CAIRO_SVG_UNIT_PX);
    const Canvas canvas(cairo_create(surface.get()));
    ListPainter(canvas.get(), vectorScale, implementation_->text, *implementation_->pictures).paint(list);
    cairo_surface_finish(surface.get());
    if (const cairo_status_t status = cairo_status(canvas.get()); status != CAIRO_STATUS_SUCCESS) {
        return drawingFailed(status);
    }
    return withRenumberedIds(text);
}

}  // namespace host
