#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>
#include "extension/ui/common/dynamic_stack.h"
#include "extension/ui/common/widget_item_texts.h"
#include "platform/view/view_json.h"

namespace extension {
namespace {

const platform::Color ink = platform::Color::rgb(0.2, 0.4, 0.6);

platform::View stackOf(bool isCompact, std::optional<double> spacing) {
    return DynamicStack{.horizontalAlignment = platform::HorizontalAlignment::leading,
                        .verticalAlignment = platform::VerticalAlignment::top,
                        .spacing = spacing,
                        .isCompact = isCompact,
                        .content = [] { return std::vector<platform::View>{platform::Divider()}; }}
        .body();
}

TEST(SharedElements, TurnAndChangeTheirSizeAndWeightInTheCompactForm) {
    const auto group = [](const std::string& stack) {
        return R"({"type":"group","children":[{"type":)" + stack + R"(,"children":[{"type":"divider"}]}]})";
    };
    const auto text = [](const std::string& sizeAndWeight) {
        return R"({"type":"text","runs":[{"text":"a","font":{"name":"system","size":)" + sizeAndWeight +
               R"("},"color":{"hex":"#336699","alpha":1}}],"lineLimit":1})";
    };
    const auto divider = [](const char* inner, const char* outer) {
        return std::string(R"({"type":"frame","height":)") + outer +
               R"(,"alignment":"center","content":{"type":"frame","height":)" + inner +
               R"(,"alignment":"center","content":{"type":"opacity","value":0.5,"content":)" +
               R"({"type":"foregroundColor","color":{"hex":"#336699","alpha":1},"content":{"type":"divider"}}}}})";
    };
    const struct {
        platform::View view;
        std::string json;
    } cases[] = {
        {stackOf(true, 3.0), group(R"("hstack","alignment":"top","spacing":3)")},
        {stackOf(false, 3.0), group(R"("vstack","alignment":"leading","spacing":3)")},
        {stackOf(true, {}), group(R"("hstack","alignment":"top")")},
        {stackOf(false, {}), group(R"("vstack","alignment":"leading")")},
        {WidgetItemTitle{"a", ink, true}, text(R"(12,"weight":"regular)")},
        {WidgetItemTitle{"a", ink, false}, text(R"(14,"weight":"bold)")},
        {WidgetItemSubTitle{"a", ink, true}, text(R"(10,"weight":"regular)")},
        {WidgetItemSubTitle{"a", ink, false}, text(R"(12,"weight":"regular)")},
        {WidgetItemSmallTitle{"a", ink, true}, text(R"(8,"weight":"regular)")},
        {WidgetItemSmallTitle{"a", ink, false}, text(R"(10,"weight":"regular)")},
        {WidgetDivider{ink, true}.body(), divider("2", "4")},
        {WidgetDivider{ink, false}.body(), divider("10", "10")},
    };
    for (const auto& [view, json] : cases) EXPECT_EQ(platform::viewJson(view).dump(), json);
}

}  // namespace
}  // namespace extension
