#include "platform/json/json_document.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>

namespace platform {
namespace {

std::string brackets(std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }

/// The document as it is written again, or what is wrong with it.
std::string again(const std::string& text, const JSONLimits& limits = {}) {
    const auto json = parsedJson(text, limits);
    return json ? json->dump() : json.error().message;
}

TEST(JSONDocument, IsReadWholeOrSaysWhereItIsWrong) {
    for (const char* text :
         {"null", "-1", "1.5", R"("\u0041")", "[]", "{}", R"({"b":[1,{"a":true}],"a":false})"})
        EXPECT_EQ(again(text), nlohmann::ordered_json::parse(text).dump());
    EXPECT_EQ(again(R"({"a":1,"a":2})"), R"({"a":2})");
    EXPECT_EQ(again(""), "not JSON at line 1, column 1");
    EXPECT_EQ(again("[1,\n 2,]"), "not JSON at line 2, column 4");
    EXPECT_EQ(again("1e400"), "not JSON at line 1, column 5");
    EXPECT_EQ(again(std::string("1\0", 2)), "not JSON: it holds a NUL character");
}

TEST(JSONDocument, IsRefusedWhenItIsTooDeepOrTooLarge) {
    EXPECT_EQ(again(brackets(200)), brackets(200));
    EXPECT_EQ(again(brackets(201)), "nested too deeply");
    // A list of members that grows beside what is nested copies it.
    EXPECT_EQ(again("{\"a\":" + brackets(100'000) + ",\"b\":1,\"c\":1}"), "nested too deeply");
    EXPECT_EQ(again("[1,[2,3]]", {.values = 5}), "[1,[2,3]]");
    EXPECT_EQ(again("[1,[2,3]]", {.values = 4}), "too many values");
    EXPECT_EQ(again(R"({"a":1,"b":2})", {.members = 1}), "an object has too many members");
}

}  // namespace
}  // namespace platform
