// View trees and colours as JSON.

#include "platform/view/view_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <cmath>
#include <nlohmann/json.hpp>

namespace platform {
namespace {

using Json = nlohmann::ordered_json;
using testing::HasSubstr;

const std::string text = R"({"type":"text","runs":[{"text":"a"}]})";

/// The tree as it is written again after it has been read.
std::string again(const std::string& json) {
    const Result<View> view = viewFromJson(json);
    return view ? viewJson(*view).dump() : view.error().message;
}

std::string problem(const std::string& json) {
    const Result<View> view = viewFromJson(json);
    if (view) return "no problem";
    EXPECT_EQ(view.error().domain, "ViewError");
    return view.error().message;
}

TEST(NumberJson, IsWrittenAsPeopleWriteIt) {
    EXPECT_EQ(numberJson(1.0).dump(), "1");
    EXPECT_EQ(numberJson(-0.0).dump(), "0");
    EXPECT_EQ(numberJson(0.29).dump(), "0.29");
    EXPECT_EQ(numberJson(1e300).dump(), "1e+300");
    EXPECT_EQ(numberJson(std::nan("")).dump(), "null");
    EXPECT_EQ(numberJson(infinity).dump(), "null");
}

TEST(ColorJson, GivesEveryColourEightBitsAChannelAndItsOwnAlpha) {
    EXPECT_EQ(colorJson(Color::rgb(26 / 255.0, 0.1, 1.0)).dump(), R"({"hex":"#1A1AFF","alpha":1})");
    EXPECT_EQ(colorJson(Color::gray().withAlpha(0.16)).dump(), R"({"hex":"#808080","alpha":0.16})");
    EXPECT_EQ(colorJson(Color()).dump(), R"({"hex":"#FFFFFF","alpha":0})");
    EXPECT_EQ(colorJson(Color::rgb(-1, 2, 0.5)).dump(), R"({"hex":"#00FF80","alpha":1})")
        << "held within its range";
}

TEST(ColorJson, IsReadInEitherCaseAndWithoutAlpha) {
    EXPECT_EQ(colorFromJson(Json::parse(R"({"hex":"#ff0000"})")), Color::rgb(1, 0, 0));
    EXPECT_EQ(colorFromJson(Json::parse(R"({"hex":"#0000FF","alpha":0.5})")), Color::rgb(0, 0, 1, 0.5));
    for (const char* wrong :
         {R"({"hex":"#ff00"})", R"({"hex":"ff00000"})", R"({"hex":"#gg0000"})", R"({"hex":12})",
          R"("#ff0000")", R"({})", R"({"hex":"#ff0000","alpha":"1"})", "null"}) {
        EXPECT_FALSE(colorFromJson(Json::parse(wrong))) << wrong;
    }
}

// Every type with all of its members, as `viewJson` writes them.
TEST(ViewJson, OfEveryTypeIsTheSameAfterItWasReadAndWritten) {
    const std::string color = R"({"hex":"#1A1A22","alpha":0.5})";
    const std::vector<std::string> trees{
        R"({"type":"vstack","alignment":"leading","spacing":0,"children":[]})",
        R"({"type":"hstack","alignment":"lastTextBaseline","spacing":-2.5,"children":[{"type":"divider"},{"type":"spacer","minLength":3}]})",
        R"({"type":"hstack","alignment":"firstTextBaseline","children":[{"type":"spacer"}]})",
        R"({"type":"zstack","alignment":"bottomTrailing","children":[]})",
        R"({"type":"group","children":[{"type":"group","children":[]}]})",
        R"({"type":"text","runs":[{"text":"a","font":{"name":"system","size":12,"weight":"bold"},"color":)" +
            color + R"(},{"image":"Live"}],"lineLimit":3})",
        R"({"type":"image","name":"Logo","resizable":true})",
        R"({"type":"image","bytes":"UElD","fallback":"Logo","resizable":false})",
        R"({"type":"color","color":)" + color + "}",
        R"({"type":"roundedRectangle","cornerRadius":6,"style":"continuous","fill":)" + color +
            R"(,"stroke":{"color":)" + color + R"(,"lineWidth":1,"miterLimit":10}})",
        R"({"type":"padding","top":1,"leading":2,"bottom":-3,"trailing":0.5,"content":{"type":"divider"}})",
        R"({"type":"frame","width":10,"height":0.5,"alignment":"topLeading","content":{"type":"divider"}})",
        R"({"type":"frame","minWidth":0,"maxWidth":"infinity","minHeight":1,"maxHeight":2,"alignment":"center","content":{"type":"divider"}})",
        R"({"type":"overlay","alignment":"top","layer":{"type":"divider"},"content":{"type":"spacer"}})",
        R"({"type":"background","alignment":"bottom","layer":{"type":"divider"},"content":{"type":"spacer"}})",
        R"({"type":"containerBackground","alignment":"leading","layer":{"type":"divider"},"content":{"type":"spacer"}})",
        R"({"type":"foregroundColor","color":)" + color + R"(,"content":{"type":"divider"}})",
        R"({"type":"opacity","value":0.5,"content":{"type":"divider"}})",
        R"({"type":"layoutPriority","value":-1,"content":{"type":"divider"}})",
        R"({"type":"aspectRatio","ratio":1.5,"contentMode":"fill","content":{"type":"divider"}})",
        R"({"type":"aspectRatio","contentMode":"fit","content":{"type":"divider"}})",
        R"({"type":"clipShape","cornerRadius":4,"style":"circular","content":{"type":"divider"}})",
        R"({"type":"clipped","content":{"type":"divider"}})",
        R"({"type":"clipped","atChildEdge":true,"content":{"type":"divider"}})",
        R"({"type":"ignoresSafeArea","content":{"type":"divider"}})",
        R"({"type":"fixedSize","horizontal":false,"vertical":true,"content":{"type":"divider"}})",
        R"({"type":"link","url":"a://1","content":{"type":"divider"}})",
        R"({"type":"widgetURL","url":"a://2","content":{"type":"divider"}})",
    };
    for (const std::string& tree : trees) EXPECT_EQ(again(tree), tree);
}

TEST(ViewJson, ReadsWhatAPersonLeavesOutAsItsDefault) {
    EXPECT_EQ(again(R"({"type":"vstack"})"), R"({"type":"vstack","alignment":"center","children":[]})");
    EXPECT_EQ(
        again(text),
        R"({"type":"text","runs":[{"text":"a","font":{"name":"system","size":17,"weight":"regular"}}]})");
    EXPECT_EQ(again(R"({"type":"divider","frame":[[1]],"note":null})"), R"({"type":"divider"})")
        << "members that are not known are passed over";
    EXPECT_EQ(again(R"({"type":"spacer","minLength":null})"), R"({"type":"spacer"})");
    EXPECT_EQ(
        again(R"({"type":"clipShape","content":{"type":"group"}})"),
        R"({"type":"clipShape","cornerRadius":0,"style":"circular","content":{"type":"group","children":[]}})");
}

TEST(ViewJson, KeepsPicturesBesideTheTreeWhenAskedTo) {
    const View tree =
        HStack({}, Image(Bytes("first"), "A"), Image(Bytes("second"), "B", {.isResizable = true}));
    std::vector<Bytes> attachments;
    const Json json = viewJson(tree, attachments);
    EXPECT_THAT(attachments, testing::ElementsAre(Bytes("first"), Bytes("second")));
    EXPECT_EQ(json["children"][1].dump(),
              R"({"type":"image","attachment":1,"fallback":"B","resizable":true})");

    const Result<View> read = viewFromJson(json, attachments);
    ASSERT_TRUE(read);
    EXPECT_EQ(viewJson(*read), viewJson(tree));
    attachments.pop_back();
    EXPECT_FALSE(viewFromJson(json, attachments)) << "an attachment is missing";
}

TEST(ViewJson, ThatIsWrongSaysWhere) {
    struct Wrong {
        std::string json;
        const char* complaint;
    };
    const auto inStack = [](const std::string& child) {
        return R"({"type":"vstack","children":[{"type":"divider"},)" + child + "]}";
    };
    const std::vector<Wrong> cases{
        {"", "not JSON"},
        {"[1", "not JSON"},
        {std::string(R"({"type":"divider"})") + '\0' + "x", "NUL"},
        {R"({"type":"opacity","value":1e999,"content":{"type":"divider"}})", "not JSON"},
        {"{\"type\":\"color\xff\"}", "not JSON"},
        {"7", "the root: a node is an object"},
        {"{}", "type: missing"},
        {R"({"type":"banner"})", R"(type: unknown type "banner")"},
        {inStack("3"), "children[1]: a node is an object"},
        {inStack(R"({"type":"padding","top":"1","content":{"type":"divider"}})"),
         "children[1].top: not a finite number"},
        {inStack(R"({"type":"padding"})"), "children[1].content: missing"},
        {inStack(R"({"type":"overlay","content":{"type":"divider"}})"), "children[1].layer: missing"},
        {R"({"type":"hstack","alignment":"leading"})", R"(alignment: unknown name "leading")"},
        {R"({"type":"frame","alignment":7,"content":{"type":"divider"}})", "alignment: not a text"},
        {R"({"type":"frame","width":"infinity","content":{"type":"divider"}})", "width: not a finite number"},
        {R"({"type":"vstack","children":{}})", "children: not a list"},
        {R"({"type":"text"})", "runs: missing"},
        {R"({"type":"text","runs":[{"text":"a"},{"font":{}}]})", "runs[1].text: missing"},
        {R"({"type":"text","runs":[{"text":"a","font":{"size":1e9}}]})",
         "runs[0].font.size: not between 0 and 1000"},
        {R"({"type":"text","runs":[],"lineLimit":1.5})", "lineLimit: not a whole number"},
        {R"({"type":"image"})", "name: missing"},
        {R"({"type":"image","bytes":"*"})", "bytes: not base64"},
        {R"({"type":"image","attachment":0})", "attachment: no attachment of that number"},
        {R"({"type":"image","name":"A","resizable":1})", "resizable: neither true nor false"},
        {R"({"type":"color"})", "color: missing"},
        {R"({"type":"color","color":"red"})", "color: a colour is"},
        {R"({"type":"roundedRectangle","stroke":{"lineWidth":1}})", "stroke.color: missing"},
        {R"({"type":"link","content":{"type":"divider"}})", "url: missing"},
    };
    for (const Wrong& wrong : cases)
        EXPECT_THAT(problem(wrong.json), HasSubstr(wrong.complaint)) << wrong.json;
}

std::string deep(int levels) {
    std::string json;
    for (int i = 1; i < levels; ++i) json += R"({"type":"opacity","content":)";
    json += R"({"type":"divider"})";
    return json.append(static_cast<std::size_t>(levels - 1), '}');
}

std::string wide(int nodes) {
    std::string json = R"({"type":"group","children":[{"type":"divider"})";
    for (int i = 2; i < nodes; ++i) json += R"(,{"type":"divider"})";
    return json + "]}";
}

TEST(ViewJson, IsBoundedInDepthAndInNumber) {
    EXPECT_EQ(problem(deep(64)), "no problem");
    EXPECT_THAT(problem(deep(65)), HasSubstr("more than 64 levels deep"));
    EXPECT_THAT(problem(deep(20'000)), HasSubstr("more than 64 levels deep"));
    EXPECT_THAT(problem(std::string(1'000'000, '[')), HasSubstr("not JSON"));
    EXPECT_EQ(problem(wide(100'000)), "no problem");
    EXPECT_THAT(problem(wide(100'001)), HasSubstr("more than 100,000 nodes"));
}

}  // namespace
}  // namespace platform
