#include "platform/settings/property_list.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>
#include "platform/settings/bundle_information.h"
#include "tests/platform/settings/samples.h"
#include "tests/support/expected_text.h"

namespace platform {
namespace {

using namespace std::chrono_literals;
using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;
using testing::HasSubstr;
using tests::TemporaryDirectory;

/// What property_lists.py calls everything.
PropertyList everything() {
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
    Array many;
    for (int i = 0; i < 300; ++i) many.emplace_back("number " + std::to_string(i));
    return Dictionary{
        {"text", "plain <&> 'text'"},
        {"hindi", "रुपया"},
        {"emoji", "up 🚀 down"},
        {"empty", ""},
        {"blank", " "},
        {"integers", Array{0, 1, 127, 128, 255, 256, 65535, 65536, std::int64_t{1} << 31,
                           std::int64_t{1} << 32, largest, -1, -128, smallest}},
        {"reals", Array{0.5, -2.25, 0.1, 1e300, 123456789.0, std::numeric_limits<double>::infinity()}},
        {"yes", true},
        {"no", false},
        {"bytes", Bytes(bytes)},
        {"date", *parseInstant("2026-11-22T03:30:00Z")},
        {"before", *parseInstant("1969-07-20T20:17:40Z")},
        {"nested", Dictionary{{"list", Array{Dictionary{{"inner", Array{}}}, Dictionary{}}}}},
        {"many", many},
        {"long", std::string(70000, 'x')},
    };
}

std::string inXml(const std::string& body) { return "<plist version=\"1.0\">" + body + "</plist>"; }

PropertyList nested(int levels) {
    PropertyList value = Array{};
    for (int i = 1; i < levels; ++i) value = Array{std::move(value)};
    return value;
}

TEST(PropertyLists, OfAnotherMakerAreReadInBothFormats) {
    const TemporaryDirectory folder;
    ASSERT_TRUE(otherMaker("make", folder.path()));
    for (const char* name : {"everything.binary", "everything.xml"}) {
        const auto list = parsePropertyList(contentOf(folder.path() / name));
        ASSERT_TRUE(list) << name << ": " << list.error().message;
        EXPECT_EQ(*list, everything()) << name;
    }
    const auto identifiers = parsePropertyList(contentOf(folder.path() / "identifiers.binary"));
    ASSERT_TRUE(identifiers);
    EXPECT_EQ(identifiers->array()->back(), (Dictionary{{"CF$UID", std::int64_t{1} << 40}}));
}

TEST(PropertyLists, ThatWeWriteAreReadByAnotherMaker) {
    const TemporaryDirectory folder;
    const auto xml = xmlPropertyList(everything());
    ASSERT_TRUE(xml);
    writeFile(folder.path() / "ours.xml", *xml);
    EXPECT_TRUE(otherMaker("check-everything", folder.path() / "ours.xml"));
}

TEST(PropertyLists, ThatCostTooMuchAreRefused) {
    const TemporaryDirectory folder;
    ASSERT_TRUE(otherMaker("make", folder.path()));
    const std::vector<std::pair<const char*, bool>> cases{
        {"nested32.binary", true}, {"nested33.binary", false}, {"nested32.xml", true},
        {"nested33.xml", false},   {"bomb.binary", false},     {"textbomb.binary", false},
        {"cycle.binary", false},   {"unsigned.binary", false},
    };
    for (const auto& [name, isRead] : cases) {
        EXPECT_EQ(parsePropertyList(contentOf(folder.path() / name)).has_value(), isRead) << name;
    }
    std::string many = "<array>";
    for (int i = 0; i < 1'000'000; ++i) many += "<true/>";
    EXPECT_FALSE(parsePropertyList(inXml(many + "</array>")));
    EXPECT_FALSE(parsePropertyList(inXml("<string>" + std::string(64U << 20, 'x') + "</string>")));
}

TEST(BinaryPropertyLists, ThatAreCutOrDamagedAreAnErrorOrAnotherListButNeverAnAccident) {
    const TemporaryDirectory folder;
    ASSERT_TRUE(otherMaker("make", folder.path()));
    const std::string whole = contentOf(folder.path() / "immutable.archive");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(parsePropertyList(whole.substr(0, length))) << length;
    }
    int refused = 0;
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const int change : {0x01, 0x10, 0x80, 0xFF}) {
            std::string damaged = whole;
            damaged[at] = static_cast<char>(damaged[at] ^ change);
            refused += parsePropertyList(damaged) ? 0 : 1;
        }
    }
    EXPECT_GT(refused, 100);
}

TEST(XmlPropertyLists, AreReadAsPhonesAndPeopleWriteThem) {
    const std::vector<std::pair<std::string, PropertyList>> cases{
        {"\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//X//DTD\" "
         "\"http://dtd.example/list.dtd\">\n<!-- note --><plist "
         "version=\"1.0\">\n<string>a</string>\n</plist>\n",
         "a"},
        {"<true/>", true},
        {inXml("<integer> 0x1F </integer>"), 31},
        {inXml("<integer>+7</integer>"), 7},
        {inXml("<integer>-9223372036854775808</integer>"), std::numeric_limits<std::int64_t>::min()},
        {inXml("<real>+infinity</real>"), std::numeric_limits<double>::infinity()},
        {inXml("<real>12</real>"), 12.0},
        {inXml("<data>\n\tAAEC\n\tAw==\n</data>"), Bytes(std::string("\0\1\2\3", 4))},
        {inXml("<string></string>"), ""},
        {inXml("<string/>"), ""},
        {inXml("<string>  </string>"), "  "},
        {inXml("<string> a&#13;&#xa;&amp;&lt;<![CDATA[<b & c=\"d\">]]><!-- x -->e </string>"),
         " a\r\n&<<b & c=\"d\">e "},
        {inXml("<array> </array>"), Array{}},
        {inXml("<dict><key>a</key><integer>1</integer><key>a</key><integer>2</integer></dict>"),
         Dictionary{{"a", 2}}},
        {inXml("<date>2026-11-22T03:30:00.250Z</date>"), *parseInstant("2026-11-22T03:30:00.250Z")},
        {inXml("<date>2205-03-01T00:00:00Z</date>"), Instant(std::chrono::sys_days(2205y / 3 / 1))},
        {inXml("<date>1699-12-31T23:59:59Z</date>"), Instant(std::chrono::sys_days(1700y / 1 / 1) - 1s)},
        {inXml("<date>4001-01-01T00:00:00Z</date>"), Instant::max()},
        {inXml("<date>0001-01-01T00:00:00Z</date>"), Instant::min()},
    };
    for (const auto& [xml, expected] : cases) {
        const auto list = parsePropertyList(xml);
        ASSERT_TRUE(list) << xml << ": " << list.error().message;
        EXPECT_EQ(*list, expected) << xml;
    }
}

TEST(XmlPropertyLists, ThatAreNotWellMadeAreRefused) {
    EXPECT_TRUE(tests::answersAsExpected("platform/damaged_property_lists.txt", [](const std::string& xml) {
        const auto list = parsePropertyList(xml.starts_with("<!") || xml.empty() ? xml : inXml(xml));
        return list ? "read" : list.error().message;
    }));
    for (const std::string& xml :
         {std::string("hello"), std::string("<plist>"), inXml("<string>\xFF</string>"),
          inXml("<string>\x01</string>"), inXml("<true/>") + std::string(1, '\0') + "<rubbish",
          inXml("<string>a</string>") + "<string>b</string>"})
        EXPECT_FALSE(parsePropertyList(xml)) << xml;
}

TEST(XmlPropertyLists, KeepEveryTextThatXmlCanHold) {
    const PropertyList value = Dictionary{{"line\r\nend\ttab ", "\r \n\r\n <![CDATA[ ]]> & \"'\xEF\xBF\xBD"},
                                          {"tiny", Array{5e-324, -0.0, 1.0 / 3.0, 1e16, 1e17, 1e-5}}};
    const auto xml = xmlPropertyList(value);
    ASSERT_TRUE(xml);
    const auto again = parsePropertyList(*xml);
    ASSERT_TRUE(again) << again.error().message;
    EXPECT_EQ(*again, value);
    EXPECT_TRUE(std::signbit(*again->dictionary()->at("tiny").array()->at(1).real()));
}

TEST(XmlPropertyLists, NameTheKeyOfWhatXmlCannotHold) {
    const std::vector<std::pair<PropertyList, std::string>> cases{
        {Dictionary{{"token", std::string("a\0b", 3)}}, "\"token\""},
        {Dictionary{{"outer", Array{Dictionary{{"inner", "\x1B"}}}}}, "\"outer.inner\""},
        {Dictionary{{"a\x01\n", 1}}, "\"a\\x01\\x0A\""},
        {Dictionary{{"half", "\xC3"}}, "\"half\""},
        {Dictionary{{"last", "\xEF\xBF\xBF"}}, "\"last\""},
        {Dictionary{{"deep", nested(32)}}, "\"deep\""},
    };
    for (const auto& [value, name] : cases) {
        const auto xml = xmlPropertyList(value);
        ASSERT_FALSE(xml) << name;
        EXPECT_THAT(xml.error().message, HasSubstr(name));
        EXPECT_EQ(xml.error().message.find('\n'), std::string::npos);
    }
}

TEST(BundleInformation, IsTheDictionaryOfItsFile) {
    const TemporaryDirectory folder;
    const auto file = folder.path() / "Info.plist";
    writeFile(
        file,
        inXml("<dict><key>ENVIRONMENT</key><string>prod</string><key>N</key><integer>1</integer></dict>"));
    const auto bundle = BundleInformation::read(file);
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->text("ENVIRONMENT"), "prod");
    EXPECT_EQ(bundle->text("N"), std::nullopt);
    EXPECT_EQ(bundle->text("AD_TEST_MODE"), std::nullopt);

    writeFile(file, inXml("<array/>"));
    EXPECT_FALSE(BundleInformation::read(file));
    EXPECT_FALSE(BundleInformation::read(folder.path() / "missing.plist"));
    EXPECT_FALSE(BundleInformation::read(folder.path()));
}

}  // namespace
}  // namespace platform
