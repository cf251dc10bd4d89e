#include "companion/operations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <cctype>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>
#include "platform/settings/user_defaults.h"
#include "tests/support/test_runtime.h"

namespace companion {
namespace {

using nlohmann::ordered_json;
using testing::ElementsAre;
using testing::HasSubstr;
using Words = std::vector<std::string>;

/// Speaks to one phone app in lines, as a person does.
class Conversation {
public:
    explicit Conversation(const tests::TestRuntimeOptions& options = {}) : runtime_(options) {}

    platform::Result<ordered_json> operator()(std::string_view line) {
        const auto words = splitCallLine(line);
        if (!words) return tl::unexpected(words.error());
        return app_.call(words->at(0), words->at(1), Words(words->begin() + 2, words->end()));
    }

    /// The answer as JSON text, or the domain of the error.
    std::string said(std::string_view line) {
        const auto answer = (*this)(line);
        return answer ? answer->dump() : answer.error().domain;
    }

private:
    tests::TestRuntime runtime_;
    PhoneApp app_{runtime_};
};

TEST(PhoneApp, OneConversationKeepsWhatItSets) {
    // A moment after 19:00 in India.
    Conversation phone({.now = "2026-11-22T13:30:01Z"});
    const std::pair<const char*, const char*> lines[] = {
        {"KeyConstants GROUP_TODAY_EXTENSION", R"("group.shareWithTodayExtension")"},
        {"KeyConstants refresh_rate", R"("refresh_rate")"},
        {"KeyConstants reloadWidgetOnThemeChange", R"("reloadWidgetOnThemeChange")"},
        {"KeyConstants appleEmailId", "null"},
        {"KeyConstants setAppleEmailId: a@example.invalid", "null"},
        {"KeyConstants appleEmailId", R"("a@example.invalid")"},
        {"KeyConstants setAppleEmailId: null", "null"},
        {"KeyConstants appleEmailId", "null"},
        {R"(KeyConstants setStorylyURL: "two words")", "null"},
        {"KeyConstants storylyURL", R"("two words")"},
        {"WidgetHelper checkAndRemoveExpiredFutureWidgets", "null"},
        {"WidgetKitHelper getCurrentConfigurations", "null"},
        {"WidgetKitHelper reloadAllWidgets: NewsWidget", "null"},
        {"WidgetKitHelper reloadAllWidgets: null", "null"},
        {"WidgetKitHelper updatePortfolioArrayUserDefaults", "null"},
        {"ThemeManager lightThemeIdentifier", "0"},
        {"ThemeManager darkThemeIdentifier", "1"},
        {"ThemeManager autoThemeIdentifier", "2"},
        {"ThemeManager currentAutoThemeTypeKey", R"("AutoThemeType")"},
        {"NSString getTheDirectionColor +1", R"({"hex":"#808080","alpha":1})"},
        {"ThemeManager setDefaultThemeIfNotSet", "null"},
        {"ThemeManager getCurrentSelectedThemeType", "0"},
        {"NSString getTheDirectionColor +1", R"({"hex":"#2DC300","alpha":1})"},
        {R"(NSString getTheDirectionColor "")", R"({"hex":"#FFFFFF","alpha":1})"},
        {"ThemeManager setCurrentSelectedThemeTypeWithType: 2", "null"},
        {"ThemeManager currentThemeForAutoMode", "0"},
        {"ThemeManager currentDisplayTheme", "0"},
        {"ThemeManager currentSelectedThemeType", "0"},
        {"ThemeManager setCurrentSelectedThemeType: 7", "null"},
        {"ThemeManager setCurrentSelectedThemeTypeWithType: 3", "null"},
        {"ThemeManager currentSelectedThemeType", "7"},
        {"ThemeManager currentDisplayTheme", "0"},
        {"ThemeManager currentFinalSelectedThemeType", "3"},
        {"ThemeManager currentDisplayThemeKey", R"("dark")"},
        {"ThemeManager currentFinalDisplayThemeKey", R"("dark")"},
        {"ThemeManager getThemeColorFromHexString:lightHex: #000000 #FAFAFA",
         R"({"hex":"#FAFAFA","alpha":1})"},
        {"ThemeManager getThemeColorFromHexString:lightHex: #000000 null", R"({"hex":"#808080","alpha":1})"},
        {"ThemeManager setReloadWidgetExtensionWithReload: true", "null"},
        {"ThemeManager getReloadWidgetExtension", "true"},
        {R"(ThemeManager getColorHexValueWithColor: {"hex":"#1a2b3c","alpha":0.5})", R"("#1A2B3C")"},
        {"AppDefaultColors colorGreen", R"({"hex":"#369614","alpha":1})"},
        {"AppDefaultColors colorBlueGray", R"({"hex":"#000000","alpha":1})"},
        {"UIColor colorFromHexString: FF9D00", R"({"hex":"#FF9D00","alpha":1})"},
        {"UIColor colorFromHexString: null", R"({"hex":"#808080","alpha":1})"},
        {"UIColor colorFromHexStringAndOpacity:alpha: #FF9D00 0.5", R"({"hex":"#FF9D00","alpha":0.5})"},
        {R"(UIColor hexString { "hex": "#1A1A22", "alpha": 1 })", R"("#1A1A22")"},
        {R"(UIColor hexString {"components": [0.5, 0, 1, 1]})", R"("#8000FF")"},
        {R"(UIColor hexString {"components":[]})", R"("#ffffff")"},
    };
    for (const auto& [line, answer] : lines) EXPECT_EQ(phone.said(line), answer) << line;
}

TEST(PhoneApp, EachPresencePropertyIsSetWithoutTheOthers) {
    const std::pair<std::string, std::string> properties[] = {
        {"IsWigetAdded", "true"},          {"IsNewsWidgetAdded", "true"},
        {"IsPortfolioWigetAdded", "true"}, {"WidgetFamily", "\"systemSmall\""},
        {"NewsWidgetFamily", "\"a\""},     {"PortfolioWidgetFamily", "\"b\""}};
    for (const auto& [set, value] : properties) {
        Conversation phone;
        EXPECT_EQ(phone.said("WidgetKitHelper set" + set + ": " + value), "null");
        for (const auto& [each, other] : properties) {
            const std::string getter = static_cast<char>(std::tolower(each[0])) + each.substr(1);
            EXPECT_EQ(phone.said("WidgetKitHelper " + getter),
                      each == set ? value : (other == "true" ? "false" : "\"\""))
                << set << " and " << each;
        }
    }
}

TEST(PhoneApp, TheCurrentThemeIsEveryColourByItsName) {
    Conversation phone;
    ASSERT_TRUE(phone("ThemeManager setCurrentSelectedThemeTypeWithType: 1"));
    const ordered_json theme = phone("ThemeManager currentTheme").value();
    EXPECT_EQ(theme.size(), 211U);
    EXPECT_EQ(theme.begin().key(), "textColor");
    EXPECT_EQ(theme["backgroundColor"].dump(), R"({"hex":"#FFFFFF","alpha":1})");
}

/// Notes which widgets are to be reloaded.
struct ReloadNotes final : platform::WidgetCenter {
    void reloadTimelines(std::string_view ofKind) override { kinds.emplace_back(ofKind); }
    void reloadAllTimelines() override { kinds.emplace_back("all"); }
    void getCurrentConfigurations(
        std::function<void(platform::Result<std::vector<platform::PlacedWidget>>)> completion) override {
        completion({});
    }

    std::vector<std::string> kinds;
};

TEST(PhoneApp, EveryChoiceIsStoredAndReloadsTheWidgetsThatShowIt) {
    const auto notes = std::make_shared<ReloadNotes>();
    const tests::TestRuntime runtime({.widgetCenter = notes});
    PhoneApp app(runtime);
    const auto store = runtime.defaults("group.shareWithTodayExtension").value();
    const Session anna{"token", "anna", "http://127.0.0.1/portfolio?x=1"};
    ASSERT_TRUE(app.signIn(anna));
    // Signing in again as the same user also drops the rows: the widget then fetches afresh.
    ASSERT_TRUE(store->set("portfolioArray", platform::Bytes("[]")));
    ASSERT_TRUE(app.signIn(anna));
    EXPECT_FALSE(store->object("portfolioArray").value());
    ASSERT_TRUE(app.setTheme(2));
    EXPECT_EQ(app.theme(), 2);
    ASSERT_TRUE(app.chooseAssets({}));
    ASSERT_TRUE(app.setNewsFeed("http://127.0.0.1/news"));
    EXPECT_EQ(newsFeedAddress(runtime).value(), "http://127.0.0.1/news");
    EXPECT_THAT(notes->kinds,
                ElementsAre("PortfolioWidget", "PortfolioWidget", "all", "PerchWidget", "NewsWidget"));
}

TEST(PhoneApp, AGrayScaleColourHasNoHexTextButDoesNotEndThisProcess) {
    Conversation phone;
    for (const char* line : {R"(UIColor hexString {"components":[0.5,1]})",
                             R"(ThemeManager getColorHexValueWithColor: {"components":[0.5,1]})"}) {
        EXPECT_EQ(phone.said(line), "FatalError") << line;
    }
}

TEST(PhoneApp, WhatDoesNotFitIsWrongUsage) {
    Conversation phone;
    for (const char* line : {
             "Theme currentTheme",
             "thememanager currentTheme",
             "ThemeManager theme",
             "ThemeManager setCurrentSelectedThemeTypeWithType 2",
             "ThemeManager setCurrentSelectedThemeTypeWithType:",
             "ThemeManager setCurrentSelectedThemeTypeWithType: 1 2",
             "ThemeManager setCurrentSelectedThemeTypeWithType: one",
             "ThemeManager setCurrentSelectedThemeTypeWithType: 1.0",
             "ThemeManager setCurrentSelectedThemeTypeWithType: 9223372036854775808",
             "ThemeManager setReloadWidgetExtensionWithReload: 1",
             "ThemeManager currentTheme now",
             "UIColor colorFromHexStringAndOpacity:alpha: #FF9D00 half",
             "UIColor colorFromHexStringAndOpacity:alpha: #FF9D00 0x1",
             "UIColor hexString #FF9D00",
             "UIColor hexString null",
             R"(UIColor hexString {"hex":"#FF9D0","alpha":1})",
             R"(UIColor hexString {"components":[1]})",
             R"(UIColor hexString {"components":[1,1,1]})",
             R"(UIColor hexString {"components":[2,1]})",
             R"(UIColor hexString {"components":["1","1"]})",
             R"(UIColor hexString {"components":{}})",
             "UIColor hexString {",
             "KeyConstants setAppleEmailId: \xFF",
         }) {
        EXPECT_EQ(phone.said(line), "UsageError") << line;
    }
    EXPECT_THAT(phone("ThemeManager currentTheme now").error().message,
                HasSubstr("ThemeManager currentTheme"));
}

TEST(PhoneApp, ListsEveryOperationOnceWithTheKindsOfItsArguments) {
    const std::vector<std::string> lines = listOperations();
    EXPECT_EQ(std::set<std::string>(lines.begin(), lines.end()).size(), lines.size());
    for (const char* line :
         {"KeyConstants setAppleEmailId: TEXT|null", "WidgetKitHelper setIsNewsWidgetAdded: true|false",
          "ThemeManager setCurrentSelectedThemeTypeWithType: INTEGER", "UIColor hexString COLOR",
          "UIColor colorFromHexStringAndOpacity:alpha: TEXT|null NUMBER", "AppDefaultColors sliderThumbColor",
          "NSString getTheDirectionColor TEXT"}) {
        EXPECT_THAT(lines, testing::Contains(line));
    }
}

TEST(CallLine, WordsArePartedByBlanksAndJSONStandsWhole) {
    EXPECT_THAT(splitCallLine("  A  b:\t1 \r\n").value(), ElementsAre("A", "b:", "1"));
    EXPECT_THAT(splitCallLine(R"(A b: "x \"y\" \u00e9" "")").value(),
                ElementsAre("A", "b:", "x \"y\" é", ""));
    EXPECT_THAT(splitCallLine(R"(A b {"hex": "} {", "alpha": [1, 2]} null)").value(),
                ElementsAre("A", "b", R"({"hex": "} {", "alpha": [1, 2]})", "null"));
    EXPECT_THAT(splitCallLine(" \t ").value(), testing::IsEmpty());
    for (const char* line :
         {R"(A "b)", R"(A "b\")", "A {", R"(A {"x": "})", R"(A "b"c)", "A {}{}", R"(A "\q")"}) {
        EXPECT_EQ(splitCallLine(line).error().domain, "UsageError") << line;
    }
}

}  // namespace
}  // namespace companion
