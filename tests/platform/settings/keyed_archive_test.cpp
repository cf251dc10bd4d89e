#include "platform/settings/keyed_archive.h"

#include <gmock/gmock.h>

#include <chrono>
#include <string>
#include <utility>
#include <vector>
#include "tests/platform/settings/samples.h"
#include "tests/support/expected_text.h"

namespace platform {
namespace {

using namespace std::chrono_literals;
using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;
using tests::TemporaryDirectory;

Result<PropertyList> sample(const TemporaryDirectory& folder, const std::string& name) {
    return unarchivedObject(contentOf(folder.path() / (name + ".archive")));
}

TEST(KeyedArchives, GiveTheObjectsThatWereArchived) {
    const TemporaryDirectory folder;
    ASSERT_TRUE(otherMaker("make", folder.path()));
    const Bytes data(std::string("\0\1\2", 3));
    const std::vector<std::pair<std::string, PropertyList>> cases{
        {"immutable", Dictionary{{"newsWidgetApiUrl", "https://news.example/feed"}}},
        {"mutable", Dictionary{{"key", "value"}}},
        {"older", Dictionary{{"one", 1}, {"two", true}}},
        {"shared", Array{data, data, *parseInstant("2001-01-01T00:00:00.5Z")}},
        {"hinted", Array{}},
        {"text only", "just a text"},
    };
    for (const auto& [name, expected] : cases) {
        const auto object = sample(folder, name);
        ASSERT_TRUE(object) << name << ": " << object.error().message;
        EXPECT_EQ(*object, expected) << name;
    }
}

TEST(KeyedArchives, ThatAreWrongAnywhereGiveNoObject) {
    const TemporaryDirectory folder;
    ASSERT_TRUE(otherMaker("make", folder.path()));
    EXPECT_TRUE(tests::answersAsExpected("platform/wrong_archives.txt", [&](const std::string& name) {
        const auto object = sample(folder, name);
        return object ? "read" : object.error().message;
    }));
    EXPECT_FALSE(unarchivedObject(""));
    EXPECT_TRUE(unarchivedObject(archivedObject(Array(9'000, PropertyList(1)))));
    EXPECT_FALSE(unarchivedObject(archivedObject(Array(30'000, PropertyList(1)))));
    EXPECT_FALSE(unarchivedObject(archivedObject(std::string(300'000, 'x'))));
    EXPECT_FALSE(unarchivedObject("noise"));
}

TEST(KeyedArchives, MayBeWrittenInXml) {
    const auto object = unarchivedObject(
        "<plist><dict><key>$archiver</key><string>NSKeyedArchiver</string><key>$version</key>"
        "<integer>100000</integer><key>$top</key><dict><key>root</key><dict><key>CF$UID</key>"
        "<integer>1</integer></dict></dict><key>$objects</key><array><string>$null</string>"
        "<string>text</string></array></dict></plist>");
    ASSERT_TRUE(object);
    EXPECT_EQ(*object, "text");
}

TEST(KeyedArchives, ThatWeWriteAreReadByUsAndByAnotherMaker) {
    const PropertyList root = Dictionary{{"name", "रुपया"},
                                         {"count", 3},
                                         {"share", 0.25},
                                         {"isLive", true},
                                         {"bytes", Bytes(std::string("\0\xFF", 2))},
                                         {"rows", Array{Dictionary{{"id", "1"}}, Dictionary{{"id", "2"}}}}};
    const TemporaryDirectory folder;
    writeFile(folder.path() / "ours", archivedObject(root));
    EXPECT_TRUE(otherMaker("check-archive", folder.path() / "ours"));

    for (const PropertyList& value : {root, PropertyList(*parseInstant("2026-11-22T03:30:00.125Z")),
                                      PropertyList("$null"), PropertyList(Dictionary{{"CF$UID", 5}}),
                                      PropertyList(std::string(300, 'x')), PropertyList(Array{})}) {
        const auto again = unarchivedObject(archivedObject(value));
        ASSERT_TRUE(again) << again.error().message;
        EXPECT_EQ(*again, value);
    }
}

}  // namespace
}  // namespace platform
