#include "host/layout/layout.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <type_traits>
#include <utility>
#include "host/layout/layout_engine.h"
#include "host/layout/layout_tree.h"
#include "platform/view/view_json.h"

namespace host {
namespace {

namespace node = platform::node;
using platform::Color;
using Json = nlohmann::ordered_json;

/// How far two lengths may lie apart and still be the same, in points: well below a pixel.
constexpr double tolerance = 1e-6;

constexpr double redactedOpacity = 0.16;
constexpr double redactedBarRadius = 3.0;
/// How far a bar stands out over the capitals and under the baseline.
constexpr double redactedBarOverhang = 1.0;

double right(const Rect& rect) { return rect.x + rect.width; }
double bottom(const Rect& rect) { return rect.y + rect.height; }

bool contains(const Rect& outer, const Rect& inner) {
    return outer.x <= inner.x + tolerance && outer.y <= inner.y + tolerance &&
           right(outer) >= right(inner) - tolerance && bottom(outer) >= bottom(inner) - tolerance;
}

bool isSame(const Rect& a, const Rect& b) { return contains(a, b) && contains(b, a); }

/// Empty, at its place, when the two do not meet.
Rect intersection(const Rect& a, const Rect& b) {
    const double left = std::max(a.x, b.x);
    const double top = std::max(a.y, b.y);
    const double width = std::min(right(a), right(b)) - left;
    const double height = std::min(bottom(a), bottom(b)) - top;
    if (width <= 0.0 || height <= 0.0) return {left, top, 0.0, 0.0};
    return {left, top, width, height};
}

double boundedFraction(double fraction) {
    return std::isnan(fraction) ? 1.0 : std::clamp(fraction, 0.0, 1.0);
}

Color faded(const Color& color, double opacity) { return color.withAlpha(color.alpha() * opacity); }

/// `color` over an opaque `ground`.
Color blended(const Color& ground, const Color& color, double alpha) {
    const auto mix = [alpha](double below, double above) { return below + (above - below) * alpha; };
    return Color::rgb(mix(ground.red(), color.red()), mix(ground.green(), color.green()),
                      mix(ground.blue(), color.blue()));
}

bool isDark(const Color& ground) {
    return 0.299 * ground.red() + 0.587 * ground.green() + 0.114 * ground.blue() < 0.5;
}

Color primaryColor(const Color& ground) { return isDark(ground) ? Color::rgb(1, 1, 1) : Color::rgb(0, 0, 0); }

Color dividerColor(const Color& ground) {
    return isDark(ground) ? Color::rgb(84 / 255.0, 84 / 255.0, 88 / 255.0, 0.6)
                          : Color::rgb(60 / 255.0, 60 / 255.0, 67 / 255.0, 0.29);
}

class DisplayListBuilder {
public:
    DisplayListBuilder(const std::vector<LayoutNode>& nodes, const LayoutOptions& options,
                       const Measurer& measurer)
        : nodes_(nodes),
          options_(options),
          measurer_(measurer),
          widget_{0.0, 0.0, options.size.width, options.size.height} {}

    DisplayList build() {
        list_.kind = options_.kind;
        list_.family = options_.family;
        list_.size = options_.size;
        drawContainerBackgrounds();
        draw(0, {});
        if (!options_.isRedacted) list_.widgetURL = lastWidgetURL();
        return std::move(list_);
    }

private:
    /// What a view inherits from those around it.
    struct Surroundings {
        std::optional<Color> foreground;
        double opacity = 1.0;
    };

    /// From version 17 on, the small family is tappable in parts too.
    bool honoursLinks() const {
        if (options_.isRedacted) return false;
        const bool isSmall = options_.family == platform::description(platform::WidgetFamily::systemSmall);
        return !isSmall || options_.osVersion >= 17;
    }

    std::optional<std::string> lastWidgetURL() const {
        std::optional<std::string> url;
        for (const LayoutNode& node : nodes_) {
            if (const auto* link = std::get_if<node::WidgetURL>(node.kind)) url = link->url;
        }
        return url;
    }

    // Backgrounds.

    void drawContainerBackgrounds() {
        for (const LayoutNode& node : nodes_) {
            if (!std::holds_alternative<node::ContainerBackground>(*node.kind)) continue;
            drawContainerBackground(node.children[1]);
        }
    }

    /// A plain colour is the widget's own background, anything else is drawn at the bottom.
    void drawContainerBackground(std::size_t layer) {
        const LayoutNode& bare = nodes_[withoutSafeArea(layer)];
        if (const auto* fill = std::get_if<node::ColorFill>(bare.kind)) {
            list_.background = fill->color;
            ground_ = blended(ground_, fill->color, boundedFraction(fill->color.alpha()));
        } else {
            draw(layer, {});
        }
    }

    std::size_t withoutSafeArea(std::size_t index) const {
        while (std::holds_alternative<node::IgnoresSafeArea>(*nodes_[index].kind)) {
            index = nodes_[index].children.front();
        }
        return index;
    }

    /// A fill of the whole widget is what everything after it stands on.
    void noteGround(const Rect& frame, const Color& color, double opacity) {
        constexpr double halfAPoint = 0.5;
        const Rect grown{frame.x - halfAPoint, frame.y - halfAPoint, frame.width + 2 * halfAPoint,
                         frame.height + 2 * halfAPoint};
        if (contains(grown, widget_)) {
            ground_ = blended(ground_, color, boundedFraction(color.alpha() * opacity));
        }
    }

    // Drawing.

    void draw(std::size_t index, const Surroundings& surroundings) {
        const LayoutNode& node = nodes_[index];
        if (node.isAbsent) return;
        std::visit([&](const auto& kind) { draw(node, kind, surroundings); }, *node.kind);
    }

    /// Stacks, groups, and modifiers that change nothing but layout.
    template <typename Kind>
    void draw(const LayoutNode& node, const Kind&, const Surroundings& surroundings) {
        for (const std::size_t child : node.children) draw(child, surroundings);
    }

    void draw(const LayoutNode& node, const node::Background&, const Surroundings& surroundings) {
        draw(node.children[1], surroundings);
        draw(node.children[0], surroundings);
    }
    void draw(const LayoutNode& node, const node::ContainerBackground&, const Surroundings& surroundings) {
        draw(node.children[0], surroundings);
    }
    void draw(const LayoutNode& node, const node::ForegroundColor& foreground,
              const Surroundings& surroundings) {
        draw(node.children[0], {.foreground = foreground.color, .opacity = surroundings.opacity});
    }
    void draw(const LayoutNode& node, const node::Link& link, const Surroundings& surroundings) {
        if (honoursLinks()) {
            Rect frame = intersection(node.frame, widget_);
            for (const Clip& clip : clips_) frame = intersection(frame, clip.frame);
            list_.links.push_back({link.url, frame});
        }
        draw(node.children[0], surroundings);
    }

    /// One item takes the opacity itself; several are drawn apart and blended as a whole, so that none
    /// shows through another.
    void draw(const LayoutNode& node, const node::Opacity& opacity, const Surroundings& surroundings) {
        const double value = boundedFraction(opacity.value);
        const Surroundings inside{.foreground = surroundings.foreground,
                                  .opacity = surroundings.opacity * value};
        if (value == 1.0) return draw(node.children[0], inside);
        const std::size_t begin = list_.items.size();
        list_.items.push_back({.content = GroupItem{.isBegin = true, .opacity = value},
                               .frame = {},
                               .opacity = inside.opacity,
                               .ownOpacity = 1.0,
                               .clips = {}});
        draw(node.children[0], inside);
        const std::size_t count = list_.items.size() - begin - 1;
        if (count <= 1) {
            if (count == 1) list_.items.back().ownOpacity *= value;
            list_.items.erase(list_.items.begin() + static_cast<std::ptrdiff_t>(begin));
        } else {
            DisplayItem end = list_.items[begin];
            std::get<GroupItem>(end.content).isBegin = false;
            list_.items.push_back(std::move(end));
        }
    }

    void draw(const LayoutNode& node, const node::ClipShape& clip, const Surroundings& surroundings) {
        const double radius = std::max(0.0, boundedLength(clip.cornerRadius));
        drawClipped(node, {.frame = node.frame, .cornerRadius = radius, .style = clip.style}, surroundings);
    }
    void draw(const LayoutNode& node, const node::Clipped& clipped, const Surroundings& surroundings) {
        Clip clip{.frame = node.frame};
        if (clipped.atChildEdge) clip.frame.height = footOfLastWholeChild(node) - clip.frame.y;
        drawClipped(node, clip, surroundings);
    }
    void drawClipped(const LayoutNode& node, const Clip& clip, const Surroundings& surroundings) {
        clips_.push_back(clip);
        draw(node.children[0], surroundings);
        clips_.pop_back();
    }

    /// Where the clip ends: at its own foot when everything fits or nothing stands whole.
    double footOfLastWholeChild(const LayoutNode& clipped) const {
        const double foot = bottom(clipped.frame);
        const LayoutNode* column = &clipped;
        while (column->arranging != Arranging::column) {
            const bool isModifier = column->arranging == Arranging::none && !column->children.empty();
            const bool isSingle = column->arranging == Arranging::pile && column->items.size() == 1;
            if (!isModifier && !isSingle) return foot;
            column = &nodes_[isModifier ? column->children.front() : column->items.front()];
        }
        double lastWhole = foot;
        bool isCut = false;
        for (const std::size_t item : column->items) {
            const Rect& frame = nodes_[item].frame;
            if (bottom(frame) > foot + tolerance) {
                isCut = true;
            } else if (frame.height > 0.0 && frame.y >= clipped.frame.y - tolerance) {
                lastWhole = bottom(frame);
            }
        }
        return isCut ? lastWhole : foot;
    }

    // Items.

    void draw(const LayoutNode& node, const node::Text& text, const Surroundings& surroundings) {
        if (options_.isRedacted) return drawBars(node, text, surroundings);
        TextItem item{.runs = text.runs,
                      .lineLimit = text.lineLimit,
                      .lines = node.text.lines,
                      .alignment = text.alignment};
        for (platform::TextRun& run : item.runs) {
            if (!run.color) run.color = surroundings.foreground.value_or(primaryColor(ground_));
        }
        add(std::move(item), node.frame, surroundings);
    }

    /// A bar in place of every line, around its capitals.
    void drawBars(const LayoutNode& node, const node::Text& text, const Surroundings& surroundings) {
        const int lines = std::max(1, node.text.lines);
        const double capHeight = boundedLength(measurer_.metrics(text.runs).capHeight);
        const double pitch =
            lines == 1 ? 0.0 : (node.text.lastBaseline - node.text.firstBaseline) / (lines - 1);
        const Color color = barColor(text, surroundings);
        for (int line = 0; line < lines; ++line) {
            const double baseline = node.frame.y + node.text.firstBaseline + pitch * line;
            const Rect bar{node.frame.x, baseline - capHeight - redactedBarOverhang, node.frame.width,
                           capHeight + 2.0 * redactedBarOverhang};
            add(FillItem{.color = color, .cornerRadius = redactedBarRadius}, bar, surroundings);
        }
    }
    Color barColor(const node::Text& text, const Surroundings& surroundings) const {
        const auto colored =
            std::ranges::find_if(text.runs, [](const auto& run) { return run.color.has_value(); });
        if (colored != text.runs.end()) return faded(*colored->color, redactedOpacity);
        return faded(surroundings.foreground.value_or(primaryColor(ground_)), redactedOpacity);
    }

    void draw(const LayoutNode& node, const node::Image& image, const Surroundings& surroundings) {
        const bool isPicture = image.bytes && measurer_.picture(*image.bytes);
        if (!isPicture && !measurer_.asset(image.name)) return;
        if (options_.isRedacted) {
            addFill({.color = faded(Color::gray(), redactedOpacity)}, node.frame, surroundings);
        } else if (isPicture) {
            addImage({.name = {}, .bytes = image.bytes}, node.frame, surroundings);
        } else {
            addImage({.name = image.name, .bytes = {}}, node.frame, surroundings);
        }
    }

    void draw(const LayoutNode& node, const node::ColorFill& fill, const Surroundings& surroundings) {
        addFill({.color = fill.color}, node.frame, surroundings);
    }

    void draw(const LayoutNode& node, const node::RoundedRectangle& shape, const Surroundings& surroundings) {
        const double radius = std::max(0.0, boundedLength(shape.cornerRadius));
        if (shape.fill || !shape.stroke) {
            const Color color = shape.fill.value_or(surroundings.foreground.value_or(primaryColor(ground_)));
            addFill({.color = color, .cornerRadius = radius, .style = shape.style}, node.frame, surroundings);
        }
        if (shape.stroke) {
            add(StrokeItem{.color = shape.stroke->color,
                           .lineWidth = std::max(0.0, boundedLength(shape.stroke->lineWidth)),
                           .miterLimit = std::max(1.0, boundedLength(shape.stroke->miterLimit)),
                           .cornerRadius = radius,
                           .style = shape.style},
                node.frame, surroundings);
        }
    }

    void draw(const LayoutNode& node, const node::Divider&, const Surroundings& surroundings) {
        const Color color = surroundings.foreground.value_or(dividerColor(ground_));
        addFill({.color = color}, node.frame, surroundings);
    }

    void addFill(FillItem fill, const Rect& frame, const Surroundings& surroundings) {
        const Color color = fill.color;
        addCornered(fill, frame, surroundings);
        noteGround(frame, color, surroundings.opacity);
    }
    void addImage(ImageItem image, const Rect& frame, const Surroundings& surroundings) {
        addCornered(std::move(image), frame, surroundings);
    }

    /// Adds what exactly fills its frame: a clip to the same frame becomes the item's own corners, and a
    /// square one around it does nothing.
    template <typename Item>
    void addCornered(Item item, const Rect& frame, const Surroundings& surroundings) {
        std::vector<Clip> clips = clips_;
        if (!clips.empty() && item.cornerRadius == 0.0 && isSame(clips.back().frame, frame)) {
            item.cornerRadius = clips.back().cornerRadius;
            item.style = clips.back().style;
            clips.pop_back();
        }
        std::erase_if(
            clips, [&](const Clip& clip) { return clip.cornerRadius == 0.0 && contains(clip.frame, frame); });
        add(std::move(item), frame, surroundings, std::move(clips));
    }

    template <typename Item>
    void add(Item item, const Rect& frame, const Surroundings& surroundings) {
        add(std::move(item), frame, surroundings, clips_);
    }
    template <typename Item>
    void add(Item item, const Rect& frame, const Surroundings& surroundings,
             std::vector<Clip> clips) {  // NOLINT(performance-unnecessary-value-param): it is moved
        list_.items.push_back({.content = std::move(item),
                               .frame = frame,
                               .opacity = surroundings.opacity,
                               .ownOpacity = 1.0,
                               .clips = std::move(clips)});
    }

    const std::vector<LayoutNode>& nodes_;
    const LayoutOptions& options_;
    const Measurer& measurer_;
    const Rect widget_;
    DisplayList list_;
    std::vector<Clip> clips_;
    /// What the next item stands on. White until something covers the whole widget.
    Color ground_ = Color::rgb(1.0, 1.0, 1.0);
};

void addFrames(Json& json, const std::vector<LayoutNode>& nodes, std::size_t index);

void addChildFrames(Json& json, const std::vector<LayoutNode>& nodes, std::size_t index) {
    const std::vector<std::size_t>& children = nodes[index].children;
    if (json.contains("children")) {
        for (std::size_t i = 0; i < children.size(); ++i) addFrames(json["children"][i], nodes, children[i]);
    }
    if (json.contains("content")) addFrames(json["content"], nodes, children.at(0));
    if (json.contains("layer")) addFrames(json["layer"], nodes, children.at(1));
}

/// The frame stands behind the type, where it is found before the node's children.
void addFrames(Json& json, const std::vector<LayoutNode>& nodes, std::size_t index) {
    addChildFrames(json, nodes, index);
    Json framed;
    for (auto& [name, member] : json.items()) {
        framed[name] = std::move(member);
        if (name == "type") framed["frame"] = rectJson(nodes[index].frame);
    }
    json = std::move(framed);
}

platform::View withMargins(const platform::View& root, const LayoutOptions& options) {
    return options.contentMarginsDisabled || options.osVersion < 17 ? root : root.padding(contentMargin);
}

}  // namespace

DisplayList makeDisplayList(const platform::View& root, const LayoutOptions& options,
                            const Measurer& measurer) {
    const platform::View content = withMargins(root, options);
    const std::vector<LayoutNode> nodes = layOut(content, options.size, measurer);
    return DisplayListBuilder(nodes, options, measurer).build();
}

Json laidOutJson(const platform::View& root, const LayoutOptions& options, const Measurer& measurer) {
    const platform::View content = withMargins(root, options);
    Json json = platform::viewJson(content);
    addFrames(json, layOut(content, options.size, measurer), 0);
    return json;
}

}  // namespace host
