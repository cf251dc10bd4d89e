#pragma once

// A laid out tree as lines of text: what tests compare.

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>
#include "tests/host/layout/plain_measurer.h"

namespace host {

inline std::string frameText(const nlohmann::ordered_json& frame) {
    const auto number = [&](const char* name) {
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%.5g", frame.at(name).get<double>() + 0.0);
        return std::string(text.data());
    };
    return number("x") + "," + number("y") + " " + number("width") + "x" + number("height");
}

inline void appendLeaves(std::string& lines, const nlohmann::ordered_json& node) {
    if (node.contains("children")) {
        for (const auto& child : node["children"]) appendLeaves(lines, child);
        return;
    }
    if (node.contains("content")) appendLeaves(lines, node["content"]);
    if (node.contains("layer")) appendLeaves(lines, node["layer"]);
    if (!node.contains("content")) {
        lines += node["type"].get<std::string>() + " " + frameText(node["frame"]) + "\n";
    }
}

inline nlohmann::ordered_json laidOut(const platform::View& root, platform::Size size) {
    LayoutOptions options;
    options.size = size;
    return laidOutJson(root, options, PlainMeasurer());
}

/// One line for every view that draws something: "text 0,0 25x10".
inline std::string leaves(const platform::View& root, platform::Size size = {100.0, 100.0}) {
    std::string lines = "\n";
    appendLeaves(lines, laidOut(root, size));
    return lines;
}

/// The root's own frame: "0,0 100x100".
inline std::string rootFrame(const platform::View& root, platform::Size size = {100.0, 100.0}) {
    return frameText(laidOut(root, size)["frame"]);
}

struct LayoutCase {
    const char* rule;
    platform::View root;
    /// As `leaves` writes it, in a widget of 100 x 100.
    std::string expected;
};

}  // namespace host
