#include "host/layout/layout.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include "host/layout/display_list_builder.h"
#include "host/layout/layout_engine.h"
#include "platform/view/view_json.h"

namespace host {
namespace {

using Json = nlohmann::ordered_json;

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
    return buildDisplayList(layOut(content, options.size, measurer), options, measurer);
}

Json laidOutJson(const platform::View& root, const LayoutOptions& options, const Measurer& measurer) {
    const platform::View content = withMargins(root, options);
    Json json = platform::viewJson(content);
    addFrames(json, layOut(content, options.size, measurer), 0);
    return json;
}

}  // namespace host
