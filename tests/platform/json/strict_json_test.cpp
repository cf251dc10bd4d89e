#include "platform/json/strict_json.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace {

using namespace platform;

std::string nested(int levels) { return std::string(levels, '[') + std::string(levels, ']'); }

TEST(StrictJson, RefusesWhatIsNotWhollyOneDocument) {
    const std::vector<std::string> documents{"",
                                             "{",
                                             "{} x",
                                             "{}{}",
                                             "{'a':1}",
                                             "{\"a\":01}",
                                             "{\"a\":\"\x01\"}",
                                             "{\"a\":\"\xC3\"}",
                                             "{\"a\":\"\\uD800\"}",
                                             "{\"a\":1e400}",
                                             std::string("{}\0rubbish", 10),
                                             nested(100'000)};
    for (const std::string& document : documents) {
        EXPECT_FALSE(parseStrictJson(document)) << document.substr(0, 40);
    }
    EXPECT_FALSE(parseStrictJson(nested(513)));
    EXPECT_TRUE(parseStrictJson(nested(512)));
    EXPECT_TRUE(parseStrictJson("\xEF\xBB\xBF {\"a\": [1, null]} \r\n"));
}

TEST(StrictJson, RefusesADocumentOfSoManyValuesThatItWouldFillTheMemory) {
    const auto list = [](int values) {
        std::string text = "[0";
        for (int i = 1; i < values; ++i) text += i % 2 == 0 ? ",[]" : ",0";
        return text + "]";
    };
    EXPECT_TRUE(parseStrictJson(list(49'999))) << "the list itself is one as well";
    EXPECT_FALSE(parseStrictJson(list(50'000)));
}

TEST(StrictJson, SaysWhereADocumentBreaksAndNothingOfWhatItHolds) {
    const auto document = parseStrictJson(R"({"token": "secret-)");
    ASSERT_FALSE(document);
    EXPECT_EQ(document.error().message.find("secret"), std::string::npos);
}

TEST(StrictJson, ReadsWholeNumbersHoweverTheyAreWritten) {
    struct Case {
        const char* number;
        std::optional<std::int64_t> integer;
    };
    const std::vector<Case> cases{{"12", 12},
                                  {"12.0", 12},
                                  {"1.2e1", 12},
                                  {"120e-1", 12},
                                  {"-3", -3},
                                  {"9223372036854775807", INT64_MAX},
                                  {"-9223372036854775808", INT64_MIN},
                                  {"9223372036854775808", {}},
                                  {"-9223372036854775809", {}},
                                  {"1e19", {}},
                                  {"12.5", {}},
                                  {"\"12\"", {}},
                                  {"true", {}}};
    for (const Case& example : cases) {
        const auto document = parseStrictJson(std::string("{\"n\":") + example.number + "}");
        ASSERT_TRUE(document) << example.number;
        const auto integer = optionalInteger(*document, "n");
        EXPECT_EQ(integer.has_value(), example.integer.has_value()) << example.number;
        if (integer) {
            EXPECT_EQ(*integer, example.integer) << example.number;
        }
    }
}

}  // namespace
