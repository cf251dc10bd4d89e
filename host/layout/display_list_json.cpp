#include <nlohmann/json.hpp>
#include "host/layout/display_list.h"
#include "platform/view/view_json.h"

namespace host {
namespace {

using Json = nlohmann::ordered_json;
using platform::colorJson;
using platform::numberJson;

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

}  // namespace host
