#include "host/layout/display_list.h"

#include <array>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <utility>
#include "platform/view/view_json.h"

namespace host {
namespace {

using Json = nlohmann::ordered_json;
using platform::Color;
using platform::colorJson;
using platform::HorizontalAlignment;
using platform::numberJson;
using platform::RoundedCornerStyle;
using platform::TextRun;

Json sizeJson(const platform::Size& size) {
    return {{"width", numberJson(size.width)}, {"height", numberJson(size.height)}};
}

std::string wholeText(const TextItem& item) {
    std::string text;
    for (const platform::TextRun& run : item.runs) text += run.text;
    return text;
}

Json clipJson(const Clip& clip) {
    Json json = rectJson(clip.frame);
    json["cornerRadius"] = numberJson(clip.cornerRadius);
    return json;
}

/// A picture's corners are round too when it is larger than the round shape that cuts it.
double visibleCornerRadius(const ImageItem& image, const std::vector<Clip>& clips) {
    return image.cornerRadius == 0.0 && !clips.empty() ? clips.back().cornerRadius : image.cornerRadius;
}

/// The members of an item in their order: what it is, where it stands, and the rest of its kind.
class ItemWriter {
public:
    explicit ItemWriter(const DisplayItem& item) : item_(item) {}

    Json operator()(const TextItem& text) const {
        Json json = {{"kind", "text"}, {"text", wholeText(text)}};
        place(json);
        if (text.lineLimit) json["lineLimit"] = *text.lineLimit;
        json["lines"] = text.lines;
        if (text.alignment == platform::HorizontalAlignment::center) json["alignment"] = "center";
        if (text.alignment == platform::HorizontalAlignment::trailing) json["alignment"] = "trailing";
        Json& runs = json["runs"] = Json::array();
        for (const platform::TextRun& run : text.runs) runs.push_back(platform::textRunJson(run));
        return json;
    }
    Json operator()(const ImageItem& image) const {
        Json json;
        json["kind"] = "image";
        if (image.bytes) {
            json["bytes"] = image.bytes->size();
        } else {
            json["name"] = image.name;
        }
        place(json);
        json["cornerRadius"] = numberJson(visibleCornerRadius(image, item_.clips));
        return json;
    }
    Json operator()(const FillItem& fill) const {
        Json json = {{"kind", "fill"}, {"color", colorJson(fill.color)}};
        place(json);
        json["cornerRadius"] = numberJson(fill.cornerRadius);
        return json;
    }
    Json operator()(const StrokeItem& stroke) const {
        Json json = {{"kind", "stroke"},
                     {"color", colorJson(stroke.color)},
                     {"lineWidth", numberJson(stroke.lineWidth)}};
        place(json);
        json["cornerRadius"] = numberJson(stroke.cornerRadius);
        return json;
    }
    Json operator()(const GroupItem&) const { return nullptr; }

private:
    void place(Json& json) const {
        json["frame"] = rectJson(item_.frame);
        json["opacity"] = numberJson(item_.opacity);
    }

    const DisplayItem& item_;
};

Json itemJson(const DisplayItem& item) {
    Json json = std::visit(ItemWriter(item), item.content);
    if (!item.clips.empty()) {
        Json& clips = json["clips"] = Json::array();
        for (const Clip& clip : item.clips) clips.push_back(clipJson(clip));
    }
    return json;
}

/// To a hundredth, without zeros at the end and without a minus before zero.
std::string shortNumber(double value) {
    return platform::numberJson(std::round(value * 100.0) / 100.0 + 0.0).dump();
}

std::string quoted(const std::string& text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

/// "#FF0000", or "#FF0000@0.5" where it is not opaque.
std::string colorText(const Color& color) {
    const nlohmann::ordered_json json = platform::colorJson(color);
    const double alpha = json["alpha"];
    return json["hex"].get<std::string>() + (alpha == 1.0 ? "" : "@" + shortNumber(alpha));
}

/// Tells two pictures apart (FNV-1a, 64 bits).
std::string hashText(std::string_view bytes) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    std::array<char, 17> text{};
    std::snprintf(text.data(), text.size(), "%016" PRIx64, hash);
    return text.data();
}

std::string cornersText(double radius, RoundedCornerStyle style) {
    if (radius == 0.0) return "";
    return " radius " + shortNumber(radius) + (style == RoundedCornerStyle::continuous ? " continuous" : "");
}

std::string runName(const TextRun& run) {
    return run.image ? "image " + quoted(*run.image) : quoted(run.text);
}

std::string runStyle(const TextRun& run) {
    if (run.image) return "";
    std::string text = " " + run.font.name + " " + shortNumber(run.font.size);
    if (run.font.weight == platform::FontWeight::medium) text += " medium";
    if (run.font.weight == platform::FontWeight::bold) text += " bold";
    if (run.color) text += " " + colorText(*run.color);
    return text;
}

/// An item's line up to its opacity.
class ContentText {
public:
    explicit ContentText(const Rect& frame) : frame_(" " + rectText(frame)) {}

    std::string operator()(const TextItem& item) const {
        std::string text = "text";
        std::string separator = " ";
        for (const TextRun& run : item.runs) {
            text += separator + runName(run);
            if (separator == " ") text += frame_;
            text += runStyle(run);
            separator = " + ";
        }
        if (item.lineLimit) text += " limit " + std::to_string(*item.lineLimit);
        if (item.lines != 1) text += " lines " + std::to_string(item.lines);
        if (item.alignment == HorizontalAlignment::center) text += " alignment center";
        if (item.alignment == HorizontalAlignment::trailing) text += " alignment trailing";
        return text;
    }
    std::string operator()(const ImageItem& image) const {
        const std::string what = image.bytes ? "picture " + std::to_string(image.bytes->size()) + " bytes " +
                                                   hashText(image.bytes->view())
                                             : "image " + quoted(image.name);
        return what + frame_ + cornersText(image.cornerRadius, image.style);
    }
    std::string operator()(const FillItem& fill) const {
        return "fill " + colorText(fill.color) + frame_ + cornersText(fill.cornerRadius, fill.style);
    }
    std::string operator()(const StrokeItem& stroke) const {
        std::string text = "stroke " + colorText(stroke.color) + frame_ + " width " +
                           shortNumber(stroke.lineWidth) + cornersText(stroke.cornerRadius, stroke.style);
        if (stroke.miterLimit != 10.0) text += " miter " + shortNumber(stroke.miterLimit);
        return text;
    }
    std::string operator()(const GroupItem& group) const {
        return (group.isBegin ? "begin " : "end ") + shortNumber(group.opacity);
    }

private:
    std::string frame_;
};

}  // namespace

Json rectJson(const Rect& rect) {
    return {{"x", numberJson(rect.x)},
            {"y", numberJson(rect.y)},
            {"width", numberJson(rect.width)},
            {"height", numberJson(rect.height)}};
}

Json displayListJson(const DisplayList& list) {
    Json json = {{"kind", list.kind},
                 {"family", list.family},
                 {"size", sizeJson(list.size)},
                 {"background", colorJson(list.background)}};
    if (list.widgetURL) json["widgetURL"] = *list.widgetURL;
    Json& links = json["links"] = Json::array();
    for (const LinkArea& link : list.links) {
        links.push_back({{"url", link.url}, {"frame", rectJson(link.frame)}});
    }
    Json& items = json["items"] = Json::array();
    for (const DisplayItem& item : list.items) {
        if (!std::holds_alternative<GroupItem>(item.content)) items.push_back(itemJson(item));
    }
    return json;
}

std::string rectText(const Rect& rect) {
    return shortNumber(rect.x) + "," + shortNumber(rect.y) + " " + shortNumber(rect.width) + "x" +
           shortNumber(rect.height);
}

std::string displayItemText(const DisplayItem& item) {
    std::string text = std::visit(ContentText(item.frame), item.content);
    if (std::holds_alternative<GroupItem>(item.content)) return text;
    if (item.ownOpacity != 1.0) text += " own " + shortNumber(item.ownOpacity);
    if (item.opacity != 1.0) text += " opacity " + shortNumber(item.opacity);
    for (const Clip& clip : item.clips)
        text += " within " + rectText(clip.frame) + cornersText(clip.cornerRadius, clip.style);
    return text;
}

std::string displayListText(const DisplayList& list) {
    std::string text = list.kind + " " + list.family + " " + shortNumber(list.size.width) + "x" +
                       shortNumber(list.size.height) + " background " + colorText(list.background) + "\n";
    if (list.widgetURL) text += "opens " + *list.widgetURL + "\n";
    for (const LinkArea& link : list.links) text += "link " + rectText(link.frame) + " " + link.url + "\n";
    for (const DisplayItem& item : list.items) text += displayItemText(item) + "\n";
    return text;
}

}  // namespace host
