// View trees and colours as JSON.

#include "platform/view/view_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <cmath>
#include <nlohmann/json.hpp>
#include "tests/support/expected_text.h"

namespace platform {
namespace {

using Json = nlohmann::ordered_json;
using testing::HasSubstr;

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

TEST(ViewJson, IsReadWithItsDefaultsAndWrittenAgainOrSaysWhatIsWrong) {
    EXPECT_TRUE(tests::answersAsExpected("platform/view_trees.txt", [](const std::string& tree) {
        return again(tree) == tree ? "the same" : again(tree);
    }));
}

TEST(ViewJson, KeepsPicturesBesideTheTreeWhenAskedTo) {
    const View tree =
        HStack({}, Image(Bytes("first"), "A"), Image(Bytes("second"), "B", {.isResizable = true}));
    std::vector<Bytes> attachments;
    const Json json = viewJson(tree, attachments);
    EXPECT_THAT(attachments, testing::ElementsAre(Bytes("first"), Bytes("second")));
    EXPECT_EQ(json["children"][1].dump(),
              R"({"type":"image","attachment":1,"fallback":"B","resizable":true})");

    const Result<View> read = viewFromJson(json.dump(), attachments);
    ASSERT_TRUE(read);
    EXPECT_EQ(viewJson(*read), viewJson(tree));
    attachments.pop_back();
    EXPECT_FALSE(viewFromJson(json.dump(), attachments)) << "an attachment is missing";
}

TEST(ViewJson, IsRefusedWithBytesThatNoTextHas) {
    EXPECT_THAT(problem(std::string(R"({"type":"divider"})") + '\0' + "x"), HasSubstr("NUL"));
    EXPECT_THAT(problem("{\"type\":\"color\xff\"}"), HasSubstr("not JSON"));
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
    EXPECT_THAT(problem(deep(20'000)), HasSubstr("nested too deeply"));
    EXPECT_THAT(problem(std::string(1'000'000, '[')), HasSubstr("nested too deeply"));
    EXPECT_EQ(problem(wide(100'000)), "no problem");
    EXPECT_THAT(problem(wide(100'001)), HasSubstr("more than 100,000 nodes"));
}

}  // namespace
}  // namespace platform
