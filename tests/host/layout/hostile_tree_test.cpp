// Trees that nobody would draw: layout answers in bounded time, and with frames that are numbers.

#include <gtest/gtest.h>
#include <chrono>
#include <cmath>
#include <limits>
#include "platform/view/view_json.h"
#include "tests/host/layout/frames.h"

namespace host {
namespace {

using namespace platform;

void expectFiniteFrames(const nlohmann::ordered_json& node) {
    for (const auto& [name, length] : node["frame"].items()) {
        ASSERT_TRUE(length.is_number() && std::isfinite(length.get<double>())) << node.dump();
    }
    for (const char* name : {"content", "layer"}) {
        if (node.contains(name)) expectFiniteFrames(node[name]);
    }
    if (node.contains("children")) {
        for (const auto& child : node["children"]) expectFiniteFrames(child);
    }
}

TEST(HostileTree, WithHugeOrMeaninglessNumbersHasFiniteFrames) {
    const std::vector<double> numbers{
        1e308, -1e308, std::numeric_limits<double>::quiet_NaN(), infinity, -infinity, 1e-308, 0.0};
    for (const double number : numbers) {
        node::Frame limits;
        limits.minWidth = limits.maxWidth = limits.minHeight = limits.maxHeight = number;
        const View leaf =
            VStack({.spacing = number}, ColorFill(Color::gray()), Spacer(number), words("ab"),
                   RoundedRectangle({.cornerRadius = number, .stroke = node::Stroke{.lineWidth = number}}));
        const View root = HStack(
            {.spacing = number}, leaf.padding(number).clipShape(number, RoundedCornerStyle::circular),
            leaf.frame(limits).opacity(number), leaf.frame({.width = number}).layoutPriority(number),
            leaf.aspectRatio(number, ContentMode::fill), leaf.fixedSize(true, true).clippedAtChildEdge());
        expectFiniteFrames(laidOut(root, {100, 100}));
        expectFiniteFrames(laidOut(root, {number, number}));
        LayoutOptions options;
        options.size = {100, 100};
        EXPECT_EQ(displayListJson(makeDisplayList(root, options, PlainMeasurer()))["items"].size(), 15U);
    }
}

View nested(int levels, int width) {
    View view = words("ab cd ef");
    for (int level = 0; level < levels; ++level) {
        std::vector<View> children(static_cast<std::size_t>(width),
                                   Image("Icon", {.isResizable = true}).aspectRatio(1.5, ContentMode::fit));
        children.push_back(view);
        children.push_back(words("gh ij"));
        view = level % 2 == 0 ? HStack({}, std::move(children)) : VStack({}, std::move(children));
    }
    return view;
}

double seconds(const View& root) {
    const auto begin = std::chrono::steady_clock::now();
    expectFiniteFrames(laidOut(root, {338, 354}));
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// The limits are far above what it takes, and far below what a cost that doubles with every level would take.
TEST(HostileTree, OfManyLevelsOrManyNodesIsLaidOutInSeconds) {
    EXPECT_LT(seconds(nested(62, 1)), 20.0);
    EXPECT_LT(seconds(nested(62, 20)), 20.0);
    EXPECT_LT(seconds(VStack({}, std::vector<View>(30'000, words("ab")))), 20.0);
    EXPECT_LT(
        seconds(VStack({}, std::vector<View>(6'000, HStack({}, words("ab cd"), Spacer(), words("ef"))))),
        20.0);
}

}  // namespace
}  // namespace host
