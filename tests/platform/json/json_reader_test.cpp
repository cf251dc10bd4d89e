#include "platform/json/json_reader.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>
#include "platform/json/json_coding.h"

namespace {

using namespace platform;

std::string nested(int levels) { return std::string(levels, '[') + std::string(levels, ']'); }

/// Whether the document is accepted when nobody asks for anything in it.
bool isSkipped(const std::string& document) {
    JSONReader reader(document);
    reader.skip();
    return reader.finish().has_value();
}

struct Sample {
    std::string title;
    std::optional<std::int64_t> count;

    static void members(auto& self, auto&& member) {
        member("title", self.title);
        member("count", self.count);
    }
};

TEST(JsonReader, RefusesWhatIsNotOneWellFormedDocument) {
    std::vector<std::string> documents{"",
                                       std::string("{}\0rubbish", 10),
                                       std::string("{}\0", 3),
                                       std::string("\"\0\"", 3),
                                       nested(513),
                                       nested(100'000)};
    for (const char* text : {" ",         "{",
                             "[",         "[1",
                             "[1,]",      "[1 2]",
                             "[,1]",      "{} x",
                             "{}{}",      "{a:1}",
                             "{\"a\"}",   "{\"a\" 1}",
                             "{\"a\":}",  "{\"a\":1,}",
                             "[1}",       "{'a':1}",
                             "01",        "+1",
                             "-",         ".5",
                             "1.",        "1.e2",
                             "1e",        "1e+",
                             "0x1",       "tru",
                             "True",      "nulll",
                             "NaN",       "\"",
                             "\"\x01\"",  "\"\n\"",
                             "\"\xC3\"",  "\"\xED\xA0\x80\"",
                             "\"\\\"",    "\"\\x\"",
                             "\"\\u12\"", "\"\\u12G4\""})
        documents.emplace_back(text);
    for (const std::string& document : documents) {
        EXPECT_FALSE(isSkipped(document)) << document.substr(0, 40);
    }
}

TEST(JsonReader, SkipsWhatIsWellFormedWhateverItSays) {
    for (const std::string& document :
         std::vector<std::string>{"\xEF\xBB\xBF {\"a\": [1, null, true, false, {}]} \r\n", "-0.5e-7", "1e400",
                                  std::string(5000, '9'), R"("\ud800 \u0000 \" \\ \/ \b\f\n\r\t")",
                                  R"({"\udc00":[]})", nested(512)}) {
        EXPECT_TRUE(isSkipped(document)) << document.substr(0, 40);
    }
}

TEST(JsonReader, IsStrictAboutWhatIsAskedFor) {
    const auto sample = decodedJSON<Sample>(R"({"x":1e400, "t\u0069tle":"\ud83d\ude00 \"", "count":null})");
    ASSERT_TRUE(sample);
    EXPECT_EQ(sample->title, "😀 \"");
    const std::vector<std::pair<const char*, const char*>> faults{
        {R"({"title":"\ud800"})", "not a JSON document, at byte 18"},
        {R"({"title":5})", "\"title\" is not a text"},
        {R"({"title":null})", "\"title\" is not a text"},
        {R"({"count":5})", "\"title\" is missing"},
        {R"({"title":"","count":1e400})", "\"count\" is not a 64-bit integer"},
        {R"(["secret"])", "the document is not an object"},
        {R"({"token": "secret-)", "not a JSON document, at byte 19"}};
    for (const auto& [document, message] : faults) {
        const auto read = decodedJSON<Sample>(document);
        ASSERT_FALSE(read) << document;
        EXPECT_EQ(read.error().message, message);
    }
    const auto list = decodedJSON<std::vector<Sample>>("[{\"title\":\"\"},[]]");
    ASSERT_FALSE(list);
    EXPECT_EQ(list.error().message, "an element of the document is not an object");
}

TEST(JsonReader, RefusesAListOfSoManyValuesThatItWouldFillTheMemory) {
    const auto list = [](int values) {
        std::string text = "[0";
        for (int i = 1; i < values; ++i) text += ",0";
        return text + "]";
    };
    EXPECT_TRUE(decodedJSON<std::vector<std::int64_t>>(list(10'000)));
    EXPECT_FALSE(decodedJSON<std::vector<std::int64_t>>(list(10'001)));
    EXPECT_TRUE(isSkipped(list(200'000))) << "nothing of it is kept";
}

TEST(JsonReader, ReadsWholeNumbersHoweverTheyAreWritten) {
    struct Case {
        const char* number;
        std::optional<std::int64_t> integer;
    };
    const std::vector<Case> cases{{"12", 12},
                                  {"12.0", 12},
                                  {"1.2e1", 12},
                                  {"120e-1", 12},
                                  {"-3", -3},
                                  {"-0", 0},
                                  {"9223372036854775807", INT64_MAX},
                                  {"-9223372036854775808", INT64_MIN},
                                  {"9223372036854775808", {}},
                                  {"-9223372036854775809", {}},
                                  {"1e19", {}},
                                  {"12.5", {}},
                                  {"\"12\"", {}},
                                  {"true", {}}};
    for (const Case& example : cases) {
        const auto integer = decodedJSON<std::int64_t>(example.number);
        EXPECT_EQ(integer.has_value(), example.integer.has_value()) << example.number;
        if (integer) {
            EXPECT_EQ(*integer, example.integer) << example.number;
        }
    }
}

}  // namespace
