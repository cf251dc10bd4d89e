#include "extension/theme/theme_manager.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <atomic>
#include <fstream>
#include <set>
#include <thread>
#include "extension/app/settings/key_constants.h"
#include "extension/theme/direction_color.h"
#include "extension/theme/entry_theme.h"
#include "extension/theme/hex_codec.h"
#include "extension/theme/palette.h"
#include "platform/settings/store_file.h"
#include "tests/extension/shared_settings.h"
#include "tests/support/expected_text.h"
#include "tests/support/test_runtime.h"

namespace extension {
namespace {

using platform::Bytes;
using platform::Color;
using platform::PropertyList;
using tests::TestRuntime;

/// A phone of its own.
struct ThemedPhone {
    explicit ThemedPhone(const tests::TestRuntimeOptions& options = {}) : runtime(options) {}

    TestRuntime runtime;
    ProcessState state{runtime};
    ThemeService themes{state};
};

TEST(ThemeManager, AnEmptyStoreIsDarkAndAllItsColoursAreGray) {
    ThemedPhone phone;
    EXPECT_EQ(phone.themes.selectedThemeType(), 0);
    EXPECT_EQ(phone.themes.displayThemeKey(), "dark");
    EXPECT_TRUE(entryColors(phone.runtime).isDark);
    for (const auto& [name, color] : phone.themes.currentTheme()->colors())
        EXPECT_EQ(color, Color::gray()) << name;
}

TEST(ThemeManager, EveryChoiceIsStoredAndShownAsItsNumberSays) {
    EXPECT_TRUE(tests::answersAsExpected("extension/theme_choices.txt", [](const std::string& chosen) {
        ThemedPhone phone;
        phone.themes.setSelectedThemeType(std::stoll(chosen));
        return "stored " + std::to_string(*stored(phone.runtime, "ThemeType")->integer()) + ", selected " +
               std::to_string(phone.themes.selectedThemeType()) + ", display " +
               std::to_string(phone.themes.displayTheme()) + ", final " +
               std::to_string(phone.themes.finalSelectedThemeType()) + ", key " +
               std::string(phone.themes.displayThemeKey()) + ", colour " +
               hexString(phone.themes.themeColor("#111111", "#EEEEEE")) +
               (entryColors(phone.runtime).isDark ? ", dark entry" : ", light entry");
    }));
}

TEST(ThemeManager, AStoredChoiceOfAnyOtherTypeOrRangeReadsAsDark) {
    for (const PropertyList& value :
         {PropertyList(4), PropertyList(-2), PropertyList(1'000'000), PropertyList("abc"),
          PropertyList(PropertyList::Array{PropertyList(1)}), PropertyList(platform::Bytes("1"))}) {
        ThemedPhone phone;
        store(phone.runtime, "ThemeType", value);
        EXPECT_EQ(phone.themes.selectedThemeType(), 0);
        EXPECT_TRUE(entryColors(phone.runtime).isDark);
    }
    // The platform reads a text as the number that it begins with, and cuts a real number.
    ThemedPhone phone;
    store(phone.runtime, "ThemeType", "1");
    EXPECT_EQ(phone.themes.selectedThemeType(), 1);
    store(phone.runtime, "ThemeType", 1.9);
    EXPECT_EQ(phone.themes.selectedThemeType(), 1);
}

TEST(ThemeManager, TheAutomaticThemeIsLightByDayInIndiaWhateverTheDevicesZone) {
    for (const char* zone : {"Asia/Kolkata", "America/Los_Angeles", "Pacific/Kiritimati", "No/Zone"}) {
        EXPECT_TRUE(tests::answersAsExpected("extension/automatic_theme.txt", [zone](const std::string& now) {
            ThemedPhone phone({.now = now, .timeZone = {zone}});
            store(phone.runtime, "ThemeType", 2);
            EXPECT_EQ(phone.themes.displayTheme(), phone.themes.themeForAutoMode()) << now;
            EXPECT_EQ(entryColors(phone.runtime).isDark, phone.themes.themeForAutoMode() == 0) << now;
            return phone.themes.displayThemeKey();
        })) << zone;
    }
}

TEST(ThemeManager, ApplyingWritesThePaletteAndReplacesTheCurrentTheme) {
    ThemedPhone phone;
    const auto before = phone.themes.currentTheme();
    phone.themes.setSelectedThemeType(1);
    EXPECT_NE(phone.themes.currentTheme(), before);
    EXPECT_EQ(before->textColor(), Color::gray());

    const auto light = phone.themes.currentTheme();
    for (const PaletteColor& color : palette()) {
        EXPECT_EQ(light->color(color.name), color.light) << color.name;
        EXPECT_EQ(decodedColor(stored(phone.runtime, color.name)), color.light) << color.name;
    }
    EXPECT_EQ(light->refreshControlColor(), light->color("refreshControlColor"));
    EXPECT_EQ(light->color("noSuchColor"), std::nullopt);
    EXPECT_EQ(stored(phone.runtime, "AutoThemeType"), std::nullopt);
}

TEST(ThemeManager, AColourThatCannotBeDecodedIsGrayAndTheOthersStay) {
    ThemedPhone phone;
    phone.themes.setSelectedThemeType(1);
    sqlite3* file = nullptr;
    const std::string path = platform::storeFile(phone.runtime.dataDirectory(), keys::GROUP_TODAY_EXTENSION);
    ASSERT_EQ(sqlite3_open(path.c_str(), &file), SQLITE_OK);
    const char* damage = "UPDATE settings SET value = x'FF00' WHERE key = 'textColor'";
    ASSERT_EQ(sqlite3_exec(file, damage, nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(file);
    store(phone.runtime, "backgroundColor", Bytes("not an archive"));

    const Theme theme(phone.runtime);
    for (const PaletteColor& color : palette()) {
        const bool isDamaged = color.name == "textColor" || color.name == "backgroundColor";
        EXPECT_EQ(theme.color(color.name), isDamaged ? Color::gray() : color.light) << color.name;
    }
}

TEST(ThemeManager, AutomaticStoresItsResultAndThreeLeavesThePaletteAlone) {
    ThemedPhone phone({.now = "2026-11-22T13:30:01Z"});
    phone.themes.setSelectedThemeType(1);
    phone.themes.setSelectedThemeType(2);
    EXPECT_EQ(stored(phone.runtime, "AutoThemeType"), PropertyList(0));
    EXPECT_EQ(hexString(phone.themes.currentTheme()->backgroundColor()), "#1A1A22");

    phone.themes.setSelectedThemeType(3);
    EXPECT_EQ(stored(phone.runtime, "ThemeType"), PropertyList(3));
    EXPECT_EQ(hexString(phone.themes.currentTheme()->backgroundColor()), "#1A1A22");
}

TEST(ThemeManager, TheFirstDefaultIsDarkAndALaterOneAppliesTheChoiceAgain) {
    ThemedPhone phone({.now = "2026-11-22T13:30:00Z"});
    phone.themes.setDefaultThemeIfNotSet();
    EXPECT_EQ(stored(phone.runtime, "ThemeType"), PropertyList(0));
    EXPECT_EQ(stored(phone.runtime, "IsThemeTypeSet"), PropertyList(true));
    EXPECT_EQ(hexString(phone.themes.currentTheme()->textColor()), "#FFFFFF");

    phone.themes.setSelectedThemeType(2);
    EXPECT_EQ(stored(phone.runtime, "AutoThemeType"), PropertyList(1));
    // Night falls.
    phone.runtime.clock().set(*platform::parseInstant("2026-11-22T13:30:01Z"), 0.0);
    phone.themes.setDefaultThemeIfNotSet();
    EXPECT_EQ(stored(phone.runtime, "ThemeType"), PropertyList(2));
    EXPECT_EQ(stored(phone.runtime, "AutoThemeType"), PropertyList(0));
    EXPECT_EQ(hexString(phone.themes.currentTheme()->textColor()), "#FFFFFF");
}

TEST(ThemeManager, AnotherProcessSeesTheNewPaletteWholeOrTheOldOne) {
    ThemedPhone writer;
    writer.themes.setSelectedThemeType(0);
    const TestRuntime reader({.dataDirectory = writer.runtime.dataDirectory()});

    std::atomic isDone = false;
    std::thread writing([&] {
        for (std::int64_t turn = 0; turn < 30; ++turn) writer.themes.setSelectedThemeType(turn % 2);
        isDone = true;
    });
    std::set<std::pair<std::string, std::string>> seen;
    while (!isDone) {
        const Theme theme(reader);
        seen.emplace(hexString(theme.textColor()), hexString(theme.emptyStateIconColor()));
    }
    writing.join();
    for (const auto& [first, last] : seen) {
        EXPECT_TRUE((first == "#FFFFFF" && last == "#6F7280") || (first == "#000000" && last == "#9AA0AE"))
            << first << " with " << last;
    }
}

TEST(ThemeManager, ARequestForReloadsIsKeptInTheStore) {
    ThemedPhone phone;
    EXPECT_FALSE(phone.themes.reloadsWidgets());
    phone.themes.setReloadsWidgets(true);
    EXPECT_TRUE(phone.themes.reloadsWidgets());
    EXPECT_EQ(stored(phone.runtime, "reloadWidgetOnThemeChange"), PropertyList(true));
    phone.themes.setReloadsWidgets(false);
    EXPECT_FALSE(phone.themes.reloadsWidgets());
}

TEST(ThemeManager, AStoreThatCannotBeOpenedIsDarkWithGrayColours) {
    ThemedPhone phone;
    std::ofstream(platform::storeFile(phone.runtime.dataDirectory(), keys::GROUP_TODAY_EXTENSION))
        << std::string(8192, 'x');
    phone.themes.setSelectedThemeType(1);
    phone.themes.setDefaultThemeIfNotSet();
    phone.themes.setReloadsWidgets(true);
    EXPECT_EQ(phone.themes.selectedThemeType(), 0);
    EXPECT_FALSE(phone.themes.reloadsWidgets());
    EXPECT_TRUE(entryColors(phone.runtime).isDark);
    EXPECT_EQ(phone.themes.currentTheme()->textColor(), Color::gray());
}

TEST(ThemeManager, ItsObservableTypeIsZeroUntilItIsSetAndTellsItsObservers) {
    ThemedPhone phone;
    ThemeManager manager;
    std::vector<std::int64_t> seen;
    const auto note = [&seen](std::int64_t type) { seen.push_back(type); };
    auto observation = manager.currentSelectedThemeType.observe(note);
    phone.themes.setSelectedThemeType(1);
    EXPECT_EQ(manager.currentSelectedThemeType.get(), 0);
    manager.currentSelectedThemeType.set(2);
    EXPECT_EQ(manager.currentSelectedThemeType.get(), 2);
    {
        const auto second = manager.currentSelectedThemeType.observe(note);
        manager.currentSelectedThemeType.set(3);
    }
    manager.currentSelectedThemeType.set(1);
    observation.stopObserving();
    manager.currentSelectedThemeType.set(0);
    EXPECT_EQ(seen, (std::vector<std::int64_t>{2, 3, 3, 1}));
    EXPECT_EQ(ThemeManager().currentSelectedThemeType.get(), 0);
    EXPECT_EQ(phone.themes.selectedThemeType(), 1);
}

TEST(DirectionColor, ComparesTheCodeExactly) {
    ThemedPhone phone;
    phone.themes.setSelectedThemeType(0);
    EXPECT_TRUE(tests::answersAsExpected("extension/direction_colors.txt",
                                         [theme = Theme(phone.runtime)](const std::string& code) {
                                             return hexString(getTheDirectionColor(code, theme));
                                         }));
}

/// Calls the class-level operations as the phone app does; true when all answered well. For a process of its
/// own: the runtime stays the current one.
bool isAnsweredByTheProcesssOwn() {
    const TestRuntime runtime;
    runtime.makeCurrent();
    ThemeManager::setCurrentSelectedThemeTypeWithType(ThemeManager::darkThemeIdentifier);
    KeyConstants::setAppleEmailId("a@example.invalid");
    // The published identifiers are the reverse of what the numbers look like.
    return ThemeManager::getCurrentSelectedThemeType() == 1 &&
           ThemeManager::currentDisplayThemeKey() == "light" &&
           ThemeManager::currentTheme()->textColor() == Color::rgb(0.0, 0.0, 0.0) &&
           ThemeManager::currentTheme() == ThemeManager::currentTheme() &&
           getTheDirectionColor("0") == Color::rgb(0.0, 0.0, 0.0) &&
           KeyConstants::appleEmailId() == "a@example.invalid" && !KeyConstants::storylyURL();
}

TEST(ThemeManagerDeathTest, TheClassLevelOperationsShareTheProcesssState) {
    EXPECT_EXIT(std::exit(isAnsweredByTheProcesssOwn() ? 0 : 1), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace extension
