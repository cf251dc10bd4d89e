#include "platform/view/view_json.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <span>
#include <type_traits>

namespace platform {
namespace {

using Json = nlohmann::ordered_json;

constexpr int maximumDepth = 64;
constexpr int maximumNodes = 100'000;
/// Larger than any widget; what draws glyphs must not be asked for more.
constexpr double maximumFontSize = 1000.0;

/// An enumeration's cases in the order of their declaration, with their names.
template <typename Enumeration>
struct CaseNames;

template <>
struct CaseNames<HorizontalAlignment> {
    static constexpr std::array<std::string_view, 3> names{"leading", "center", "trailing"};
};
template <>
struct CaseNames<VerticalAlignment> {
    static constexpr std::array<std::string_view, 5> names{"top", "center", "bottom", "firstTextBaseline",
                                                           "lastTextBaseline"};
};
template <>
struct CaseNames<RoundedCornerStyle> {
    static constexpr std::array<std::string_view, 2> names{"circular", "continuous"};
};
template <>
struct CaseNames<ContentMode> {
    static constexpr std::array<std::string_view, 2> names{"fit", "fill"};
};
template <>
struct CaseNames<FontWeight> {
    static constexpr std::array<std::string_view, 3> names{"regular", "medium", "bold"};
};

template <typename Enumeration>
std::string_view caseName(Enumeration value) {
    return CaseNames<Enumeration>::names.at(static_cast<std::size_t>(value));
}

template <typename Enumeration>
std::optional<Enumeration> caseNamed(std::string_view name) {
    const auto& names = CaseNames<Enumeration>::names;
    const auto found = std::ranges::find(names, name);
    if (found == names.end()) return std::nullopt;
    return static_cast<Enumeration>(found - names.begin());
}

struct NamedAlignment {
    std::string_view name;
    Alignment alignment;
};

using enum HorizontalAlignment;
constexpr std::array<NamedAlignment, 15> namedAlignments{{
    {"topLeading", {leading, VerticalAlignment::top}},
    {"top", {center, VerticalAlignment::top}},
    {"topTrailing", {trailing, VerticalAlignment::top}},
    {"leading", {leading, VerticalAlignment::center}},
    {"center", {center, VerticalAlignment::center}},
    {"trailing", {trailing, VerticalAlignment::center}},
    {"bottomLeading", {leading, VerticalAlignment::bottom}},
    {"bottom", {center, VerticalAlignment::bottom}},
    {"bottomTrailing", {trailing, VerticalAlignment::bottom}},
    {"leadingFirstTextBaseline", {leading, VerticalAlignment::firstTextBaseline}},
    {"centerFirstTextBaseline", {center, VerticalAlignment::firstTextBaseline}},
    {"trailingFirstTextBaseline", {trailing, VerticalAlignment::firstTextBaseline}},
    {"leadingLastTextBaseline", {leading, VerticalAlignment::lastTextBaseline}},
    {"centerLastTextBaseline", {center, VerticalAlignment::lastTextBaseline}},
    {"trailingLastTextBaseline", {trailing, VerticalAlignment::lastTextBaseline}},
}};

std::string_view alignmentName(const Alignment& alignment) {
    return std::ranges::find(namedAlignments, alignment, &NamedAlignment::alignment)->name;
}

int colorStep(double component) {
    return static_cast<int>(std::lround(std::clamp(component, 0.0, 1.0) * 255.0));
}

Json strokeJson(const node::Stroke& stroke) {
    return {{"color", colorJson(stroke.color)},
            {"lineWidth", numberJson(stroke.lineWidth)},
            {"miterLimit", numberJson(stroke.miterLimit)}};
}

/// Writes a node's own members, without its children.
class MemberWriter {
public:
    MemberWriter(Json& json, std::vector<Bytes>* attachments) : json_(json), attachments_(attachments) {}

    void operator()(const node::VStack& stack) const { writeStack(caseName(stack.alignment), stack.spacing); }
    void operator()(const node::HStack& stack) const { writeStack(caseName(stack.alignment), stack.spacing); }
    void operator()(const node::ZStack& stack) const { json_["alignment"] = alignmentName(stack.alignment); }
    void operator()(const node::Text& text) const {
        Json& runs = json_["runs"] = Json::array();
        for (const TextRun& run : text.runs) runs.push_back(textRunJson(run));
        if (text.lineLimit) json_["lineLimit"] = *text.lineLimit;
        if (text.alignment != HorizontalAlignment::leading) json_["alignment"] = caseName(text.alignment);
    }
    void operator()(const node::Image& image) const {
        if (!image.bytes) {
            json_["name"] = image.name;
        } else {
            writeBytes(*image.bytes);
            json_["fallback"] = image.name;
        }
        json_["resizable"] = image.isResizable;
    }
    void operator()(const node::ColorFill& fill) const { json_["color"] = colorJson(fill.color); }
    void operator()(const node::RoundedRectangle& shape) const {
        writeRoundedCorners(shape.cornerRadius, shape.style);
        if (shape.fill) json_["fill"] = colorJson(*shape.fill);
        if (shape.stroke) json_["stroke"] = strokeJson(*shape.stroke);
    }
    void operator()(const node::Spacer& spacer) const { write("minLength", spacer.minLength); }
    void operator()(const node::Padding& padding) const {
        writeUnlessZero("top", padding.insets.top);
        writeUnlessZero("leading", padding.insets.leading);
        writeUnlessZero("bottom", padding.insets.bottom);
        writeUnlessZero("trailing", padding.insets.trailing);
    }
    void operator()(const node::Frame& frame) const {
        write("width", frame.width);
        write("height", frame.height);
        write("minWidth", frame.minWidth);
        write("maxWidth", frame.maxWidth);
        write("minHeight", frame.minHeight);
        write("maxHeight", frame.maxHeight);
        json_["alignment"] = alignmentName(frame.alignment);
    }
    void operator()(const node::Overlay& overlay) const {
        json_["alignment"] = alignmentName(overlay.alignment);
    }
    void operator()(const node::Background& background) const {
        json_["alignment"] = alignmentName(background.alignment);
    }
    void operator()(const node::ContainerBackground& background) const {
        json_["alignment"] = alignmentName(background.alignment);
    }
    void operator()(const node::ForegroundColor& foreground) const {
        json_["color"] = colorJson(foreground.color);
    }
    void operator()(const node::Opacity& opacity) const { json_["value"] = numberJson(opacity.value); }
    void operator()(const node::LayoutPriority& priority) const {
        json_["value"] = numberJson(priority.value);
    }
    void operator()(const node::AspectRatio& aspect) const {
        write("ratio", aspect.ratio);
        json_["contentMode"] = caseName(aspect.contentMode);
    }
    void operator()(const node::ClipShape& clip) const { writeRoundedCorners(clip.cornerRadius, clip.style); }
    void operator()(const node::Clipped& clipped) const {
        if (clipped.atChildEdge) json_["atChildEdge"] = true;
    }
    void operator()(const node::FixedSize& fixed) const {
        json_["horizontal"] = fixed.horizontal;
        json_["vertical"] = fixed.vertical;
    }
    void operator()(const node::Link& link) const { json_["url"] = link.url; }
    void operator()(const node::WidgetURL& link) const { json_["url"] = link.url; }
    void operator()(const node::Group&) const {}
    void operator()(const node::Divider&) const {}
    void operator()(const node::IgnoresSafeArea&) const {}

private:
    void write(const char* name, const std::optional<double>& length) const {
        if (length) json_[name] = *length == infinity ? Json("infinity") : numberJson(*length);
    }
    void writeUnlessZero(const char* name, double length) const {
        if (length != 0.0) json_[name] = numberJson(length);
    }
    void writeStack(std::string_view alignment, const std::optional<double>& spacing) const {
        json_["alignment"] = alignment;
        write("spacing", spacing);
    }
    void writeRoundedCorners(double radius, RoundedCornerStyle style) const {
        json_["cornerRadius"] = numberJson(radius);
        json_["style"] = caseName(style);
    }
    void writeBytes(const Bytes& bytes) const {
        if (attachments_ == nullptr) {
            json_["bytes"] = base64Encoded(bytes.view());
        } else {
            json_["attachment"] = attachments_->size();
            attachments_->push_back(bytes);
        }
    }

    Json& json_;
    std::vector<Bytes>* attachments_;
};

/// How many views a node holds, and under which names they stand.
enum class Children { none, any, content, layerAndContent };

template <typename Kind>
constexpr Children childrenOf() {
    if constexpr (std::is_same_v<Kind, node::Group> || std::is_same_v<Kind, node::VStack> ||
                  std::is_same_v<Kind, node::HStack> || std::is_same_v<Kind, node::ZStack>) {
        return Children::any;
    } else if constexpr (std::is_same_v<Kind, node::Overlay> || std::is_same_v<Kind, node::Background> ||
                         std::is_same_v<Kind, node::ContainerBackground>) {
        return Children::layerAndContent;
    } else if constexpr (std::is_same_v<Kind, node::Text> || std::is_same_v<Kind, node::Image> ||
                         std::is_same_v<Kind, node::ColorFill> ||
                         std::is_same_v<Kind, node::RoundedRectangle> ||
                         std::is_same_v<Kind, node::Divider> || std::is_same_v<Kind, node::Spacer>) {
        return Children::none;
    } else {
        return Children::content;
    }
}

Json written(const View& view, std::vector<Bytes>* attachments) {
    Json json;
    std::visit(
        [&](const auto& kind) {
            using Kind = std::decay_t<decltype(kind)>;
            json["type"] = Kind::type;
            MemberWriter(json, attachments)(kind);
            if constexpr (childrenOf<Kind>() == Children::any) {
                Json& children = json["children"] = Json::array();
                for (const View& child : view.children()) children.push_back(written(child, attachments));
            }
            if constexpr (childrenOf<Kind>() == Children::layerAndContent) {
                json["layer"] = written(view.layer(), attachments);
            }
            if constexpr (childrenOf<Kind>() == Children::content ||
                          childrenOf<Kind>() == Children::layerAndContent) {
                json["content"] = written(view.content(), attachments);
            }
        },
        view.kind());
    return json;
}

/// Reads a tree. The first thing that is wrong is kept, with its place; what is read after it does
/// not matter any more.
class Reader {
public:
    explicit Reader(std::span<const Bytes> attachments) : attachments_(attachments) {}

    const std::string& problem() const { return problem_; }

    View view(const Json& json) {
        if (++nodes_ > maximumNodes) return wrong("more than 100,000 nodes");
        if (depth_ == maximumDepth) return wrong("more than 64 levels deep");
        if (!json.is_object()) return wrong("a node is an object");
        ++depth_;
        View result = typedView(json, text(json, "type"));
        --depth_;
        return result;
    }

    Color color(const Json& json) {
        if (!json.is_object()) return wrongColor();
        const std::string hex = text(json, "hex");
        const bool isHex = hex.size() == 7 && hex[0] == '#' &&
                           hex.find_first_not_of("0123456789abcdefABCDEF", 1) == hex.npos;
        if (!isHex) return wrongColor();
        const auto step = [&](std::size_t at) { return std::stoi(hex.substr(at, 2), nullptr, 16) / 255.0; };
        const double alpha = std::clamp(number(json, "alpha").value_or(1.0), 0.0, 1.0);
        return Color::rgb(step(1), step(3), step(5), alpha);
    }

private:
    /// Goes one step down into the tree for the life of this object, so that a complaint names the place.
    class Step {
    public:
        Step(Reader& reader, const std::string& name) : reader_(reader), length_(reader.path_.size()) {
            reader.path_ += (reader.path_.empty() ? "" : ".") + name;
        }
        ~Step() { reader_.path_.resize(length_); }
        Step(const Step&) = delete;
        Step& operator=(const Step&) = delete;

    private:
        Reader& reader_;
        std::size_t length_;
    };

    View wrong(const std::string& complaint) {
        if (problem_.empty()) problem_ = (path_.empty() ? "the root" : path_) + ": " + complaint;
        return {};
    }
    void wrongMember(const char* name, const std::string& complaint) {
        const Step step(*this, name);
        wrong(complaint);
    }
    Color wrongColor() {
        wrong("a colour is {\"hex\":\"#RRGGBB\",\"alpha\":1}");
        return {};
    }

    /// Absent and null are the same.
    static const Json* member(const Json& json, const char* name) {
        const auto found = json.find(name);
        return found == json.end() || found->is_null() ? nullptr : &*found;
    }

    std::optional<double> number(const Json& json, const char* name, bool mayBeInfinite = false) {
        const Json* value = member(json, name);
        if (value == nullptr) return std::nullopt;
        if (mayBeInfinite && *value == "infinity") return infinity;
        if (value->is_number() && std::isfinite(value->get<double>())) return value->get<double>();
        wrongMember(name, "not a finite number");
        return std::nullopt;
    }
    std::optional<int> wholeNumber(const Json& json, const char* name) {
        const std::optional<double> value = number(json, name);
        if (!value) return std::nullopt;
        if (*value == std::trunc(*value) && std::abs(*value) <= 1e9) return static_cast<int>(*value);
        wrongMember(name, "not a whole number");
        return std::nullopt;
    }
    bool boolean(const Json& json, const char* name, bool whenAbsent) {
        const Json* value = member(json, name);
        if (value == nullptr) return whenAbsent;
        if (value->is_boolean()) return value->get<bool>();
        wrongMember(name, "neither true nor false");
        return whenAbsent;
    }
    std::optional<std::string> optionalText(const Json& json, const char* name) {
        const Json* value = member(json, name);
        if (value == nullptr) return std::nullopt;
        if (value->is_string()) return value->get<std::string>();
        wrongMember(name, "not a text");
        return std::nullopt;
    }
    std::string text(const Json& json, const char* name) {
        std::optional<std::string> value = optionalText(json, name);
        if (!value) wrongMember(name, "missing");
        return std::move(value).value_or("");
    }
    template <typename Enumeration>
    Enumeration oneOf(const Json& json, const char* name, Enumeration whenAbsent) {
        const std::optional<std::string> value = optionalText(json, name);
        if (!value) return whenAbsent;
        const std::optional<Enumeration> known = caseNamed<Enumeration>(*value);
        if (!known) wrongMember(name, "unknown name \"" + *value + "\"");
        return known.value_or(whenAbsent);
    }
    Alignment alignment(const Json& json) {
        const std::optional<std::string> value = optionalText(json, "alignment");
        if (!value) return {};
        const auto found = std::ranges::find(namedAlignments, *value, &NamedAlignment::name);
        if (found != namedAlignments.end()) return found->alignment;
        wrongMember("alignment", "unknown name \"" + *value + "\"");
        return {};
    }
    std::optional<Color> optionalColor(const Json& json, const char* name) {
        const Json* value = member(json, name);
        if (value == nullptr) return std::nullopt;
        const Step step(*this, name);
        return color(*value);
    }
    Color color(const Json& json, const char* name) {
        const std::optional<Color> value = optionalColor(json, name);
        if (!value) wrongMember(name, "missing");
        return value.value_or(Color());
    }
    View child(const Json& json, const char* name) {
        const Step step(*this, name);
        const Json* value = member(json, name);
        return value == nullptr ? wrong("missing") : view(*value);
    }
    std::vector<View> children(const Json& json) {
        std::vector<View> result;
        const Json* list = member(json, "children");
        if (list == nullptr) return result;
        if (!list->is_array()) wrongMember("children", "not a list");
        for (std::size_t i = 0; list->is_array() && i < list->size() && problem_.empty(); ++i) {
            const Step step(*this, "children[" + std::to_string(i) + "]");
            result.push_back(view((*list)[i]));
        }
        return result;
    }

    Font font(const Json& json) {
        const Json* value = member(json, "font");
        if (value == nullptr) return {};
        const Step step(*this, "font");
        if (!value->is_object()) wrong("a font is an object");
        if (!problem_.empty()) return {};
        const double size = number(*value, "size").value_or(17.0);
        if (size < 0.0 || size > maximumFontSize) wrongMember("size", "not between 0 and 1000");
        return {.name = optionalText(*value, "name").value_or("system"),
                .size = size,
                .weight = oneOf(*value, "weight", FontWeight::regular)};
    }
    TextRun run(const Json& json) {
        if (!json.is_object()) {
            wrong("a run is an object");
            return {};
        }
        if (std::optional<std::string> image = optionalText(json, "image")) {
            return {.text = {}, .font = {}, .color = {}, .image = std::move(image)};
        }
        return {.text = text(json, "text"),
                .font = font(json),
                .color = optionalColor(json, "color"),
                .image = std::nullopt};
    }

    View typedView(const Json& json, const std::string& type) {
        return typedView(json, type, std::make_index_sequence<std::variant_size_v<NodeKind>>());
    }
    template <std::size_t... Index>
    View typedView(const Json& json, const std::string& type, std::index_sequence<Index...>) {
        View result;
        const bool isKnown =
            ((type == std::variant_alternative_t<Index, NodeKind>::type &&
              (result = withChildren<std::variant_alternative_t<Index, NodeKind>>(json), true)) ||
             ...);
        if (!isKnown) wrongMember("type", "unknown type \"" + type + "\"");
        return result;
    }
    template <typename Kind>
    View withChildren(const Json& json) {
        Kind kind;
        read(json, kind);
        if (!problem_.empty()) return {};
        if constexpr (childrenOf<Kind>() == Children::any) return View(std::move(kind), children(json));
        if constexpr (childrenOf<Kind>() == Children::none) return View(std::move(kind));
        if constexpr (childrenOf<Kind>() == Children::content) {
            return View(std::move(kind), {child(json, "content")});
        }
        if constexpr (childrenOf<Kind>() == Children::layerAndContent) {
            View content = child(json, "content");
            return View(std::move(kind), {std::move(content), child(json, "layer")});
        }
    }

    void read(const Json& json, node::VStack& stack) {
        stack = {oneOf(json, "alignment", HorizontalAlignment::center), number(json, "spacing")};
    }
    void read(const Json& json, node::HStack& stack) {
        stack = {oneOf(json, "alignment", VerticalAlignment::center), number(json, "spacing")};
    }
    void read(const Json& json, node::ZStack& stack) { stack.alignment = alignment(json); }
    void read(const Json& json, node::Text& text) {
        text.lineLimit = wholeNumber(json, "lineLimit");
        text.alignment = oneOf(json, "alignment", HorizontalAlignment::leading);
        const Json* runs = member(json, "runs");
        if (runs == nullptr || !runs->is_array()) return wrongMember("runs", "not a list");
        for (std::size_t i = 0; i < runs->size() && problem_.empty(); ++i) {
            const Step step(*this, "runs[" + std::to_string(i) + "]");
            text.runs.push_back(run((*runs)[i]));
        }
    }
    void read(const Json& json, node::Image& image) {
        image.isResizable = boolean(json, "resizable", false);
        image.bytes = imageBytes(json);
        image.name = image.bytes ? optionalText(json, "fallback").value_or("") : text(json, "name");
    }
    std::optional<Bytes> imageBytes(const Json& json) {
        if (const std::optional<int> index = wholeNumber(json, "attachment")) {
            if (*index >= 0 && static_cast<std::size_t>(*index) < attachments_.size()) {
                return attachments_[static_cast<std::size_t>(*index)];
            }
            wrongMember("attachment", "no attachment of that number");
        }
        const std::optional<std::string> encoded = optionalText(json, "bytes");
        if (!encoded) return std::nullopt;
        std::optional<std::string> decoded = base64Decoded(*encoded);
        if (!decoded) wrongMember("bytes", "not base64");
        return Bytes(std::move(decoded).value_or(""));
    }
    void read(const Json& json, node::ColorFill& fill) { fill.color = color(json, "color"); }
    void read(const Json& json, node::RoundedRectangle& shape) {
        shape.cornerRadius = number(json, "cornerRadius").value_or(0.0);
        shape.style = oneOf(json, "style", RoundedCornerStyle::circular);
        shape.fill = optionalColor(json, "fill");
        const Json* stroke = member(json, "stroke");
        if (stroke == nullptr) return;
        const Step step(*this, "stroke");
        if (!stroke->is_object()) {
            wrong("a stroke is an object");
            return;
        }
        shape.stroke = node::Stroke{.color = color(*stroke, "color"),
                                    .lineWidth = number(*stroke, "lineWidth").value_or(1.0),
                                    .miterLimit = number(*stroke, "miterLimit").value_or(10.0)};
    }
    void read(const Json& json, node::Spacer& spacer) { spacer.minLength = number(json, "minLength"); }
    void read(const Json& json, node::Padding& padding) {
        padding.insets = {.top = number(json, "top").value_or(0.0),
                          .leading = number(json, "leading").value_or(0.0),
                          .bottom = number(json, "bottom").value_or(0.0),
                          .trailing = number(json, "trailing").value_or(0.0)};
    }
    void read(const Json& json, node::Frame& frame) {
        constexpr bool mayBeInfinite = true;
        frame.width = number(json, "width");
        frame.height = number(json, "height");
        frame.minWidth = number(json, "minWidth", mayBeInfinite);
        frame.maxWidth = number(json, "maxWidth", mayBeInfinite);
        frame.minHeight = number(json, "minHeight", mayBeInfinite);
        frame.maxHeight = number(json, "maxHeight", mayBeInfinite);
        frame.alignment = alignment(json);
    }
    void read(const Json& json, node::Overlay& overlay) { overlay.alignment = alignment(json); }
    void read(const Json& json, node::Background& background) { background.alignment = alignment(json); }
    void read(const Json& json, node::ContainerBackground& background) {
        background.alignment = alignment(json);
    }
    void read(const Json& json, node::ForegroundColor& foreground) {
        foreground.color = color(json, "color");
    }
    void read(const Json& json, node::Opacity& opacity) {
        opacity.value = number(json, "value").value_or(1.0);
    }
    void read(const Json& json, node::LayoutPriority& priority) {
        priority.value = number(json, "value").value_or(0.0);
    }
    void read(const Json& json, node::AspectRatio& aspect) {
        aspect = {number(json, "ratio"), oneOf(json, "contentMode", ContentMode::fit)};
    }
    void read(const Json& json, node::ClipShape& clip) {
        clip = {number(json, "cornerRadius").value_or(0.0),
                oneOf(json, "style", RoundedCornerStyle::circular)};
    }
    void read(const Json& json, node::Clipped& clipped) {
        clipped.atChildEdge = boolean(json, "atChildEdge", false);
    }
    void read(const Json& json, node::FixedSize& fixed) {
        fixed = {boolean(json, "horizontal", true), boolean(json, "vertical", true)};
    }
    void read(const Json& json, node::Link& link) { link.url = text(json, "url"); }
    void read(const Json& json, node::WidgetURL& link) { link.url = text(json, "url"); }
    void read(const Json&, node::Group&) {}
    void read(const Json&, node::Divider&) {}
    void read(const Json&, node::IgnoresSafeArea&) {}

    std::span<const Bytes> attachments_;
    std::string path_;
    std::string problem_;
    int depth_ = 0;
    int nodes_ = 0;
};

template <typename Value>
Result<Value> valueOrProblem(Value value, const Reader& reader) {
    if (!reader.problem().empty()) return failure("ViewError", 0, reader.problem());
    return value;
}

}  // namespace

Json numberJson(double value) {
    constexpr double largestExactWhole = 9007199254740992.0;
    if (!std::isfinite(value)) return nullptr;
    if (value == std::trunc(value) && std::abs(value) < largestExactWhole) {
        return static_cast<std::int64_t>(value);
    }
    return value;
}

Json colorJson(const Color& color) {
    std::array<char, 8> hex{};
    std::snprintf(hex.data(), hex.size(), "#%02X%02X%02X", colorStep(color.red()), colorStep(color.green()),
                  colorStep(color.blue()));
    return {{"hex", hex.data()}, {"alpha", numberJson(color.alpha())}};
}

Result<Color> colorFromJson(const Json& json) {
    Reader reader(std::span<const Bytes>{});
    return valueOrProblem(reader.color(json), reader);
}

Json fontJson(const Font& font) {
    return {{"name", font.name}, {"size", numberJson(font.size)}, {"weight", caseName(font.weight)}};
}

Json textRunJson(const TextRun& run) {
    if (run.image) return {{"image", *run.image}};
    Json json = {{"text", run.text}, {"font", fontJson(run.font)}};
    if (run.color) json["color"] = colorJson(*run.color);
    return json;
}

Json viewJson(const View& view) { return written(view, nullptr); }

Json viewJson(const View& view, std::vector<Bytes>& attachments) { return written(view, &attachments); }

Result<View> viewFromJson(const Json& json, const std::vector<Bytes>& attachments) {
    Reader reader(attachments);
    return valueOrProblem(reader.view(json), reader);
}

Result<View> viewFromJson(std::string_view text) {
    // The parser takes a NUL for the end and would let anything pass behind it.
    if (text.find('\0') != text.npos) return failure("ViewError", 0, "the text holds a NUL character");
    try {
        return viewFromJson(Json::parse(text), {});
    } catch (const Json::exception& error) {
        return failure("ViewError", 0, std::string("not JSON: ") + error.what());
    }
}

}  // namespace platform
