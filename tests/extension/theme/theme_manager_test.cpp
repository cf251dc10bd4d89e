#include "extension/theme/theme_manager.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <atomic>
#include <fstream>
#include <set>
#include <thread>
#include "extension/app/settings/store_keys.h"
#include "extension/theme/hex_codec.h"
#include "extension/theme/theme.h"
#include "extension/theme/theme_type.h"
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
};

TEST(ThemeManager, AnEmptyStoreIsDarkAndAllItsColoursAreGray) {
    ThemedPhone phone;
    EXPECT_EQ(ThemeManager::getCurrentSelectedThemeType(phone.state), 0);
    EXPECT_EQ(ThemeManager::currentDisplayThemeKey(phone.state), "dark");
    EXPECT_TRUE(entryColors(phone.runtime).isDark);
    for (const auto& [name, color] : ThemeManager::currentTheme(phone.state)->colors())
        EXPECT_EQ(color, Color::gray()) << name;
}

TEST(ThemeManager, EveryChoiceIsStoredAndShownAsItsNumberSays) {
    EXPECT_TRUE(tests::answersAsExpected("extension/theme_choices.txt", [](const std::string& chosen) {
        ThemedPhone phone;
        ThemeManager::setCurrentSelectedThemeTypeWithType(std::stoll(chosen), phone.state);
        return "stored " + std::to_string(*stored(phone.runtime, "ThemeType")->integer()) + ", selected " +
               std::to_string(ThemeManager::getCurrentSelectedThemeType(phone.state)) + ", display " +
               std::to_string(ThemeManager::currentDisplayTheme(phone.state)) + ", final " +
               std::to_string(ThemeManager::currentFinalSelectedThemeType(phone.state)) + ", key " +
               std::string(ThemeManager::currentDisplayThemeKey(phone.state)) + ", colour " +
               hexString(ThemeManager::getThemeColorFromHexString("#111111", "#EEEEEE", phone.state)) +
               (entryColors(phone.runtime).isDark ? ", dark entry" : ", light entry");
    }));
}

TEST(ThemeManager, AStoredChoiceOfAnyOtherTypeOrRangeReadsAsDark) {
    for (const PropertyList& value :
         {PropertyList(4), PropertyList(-2), PropertyList(1'000'000), PropertyList("abc"),
          PropertyList(PropertyList::Array{PropertyList(1)}), PropertyList(platform::Bytes("1"))}) {
        ThemedPhone phone;
        store(phone.runtime, "ThemeType", value);
        EXPECT_EQ(ThemeManager::getCurrentSelectedThemeType(phone.state), 0);
        EXPECT_TRUE(entryColors(phone.runtime).isDark);
    }
    // The platform reads a text as the number that it begins with, and cuts a real number.
    ThemedPhone phone;
    store(phone.runtime, "ThemeType", "1");
    EXPECT_EQ(ThemeManager::getCurrentSelectedThemeType(phone.state), 1);
    store(phone.runtime, "ThemeType", 1.9);
    EXPECT_EQ(ThemeManager::getCurrentSelectedThemeType(phone.state), 1);
}

TEST(ThemeManager, TheAutomaticThemeIsLightByDayInIndiaWhateverTheDevicesZone) {
    for (const char* zone : {"Asia/Kolkata", "America/Los_Angeles", "Pacific/Kiritimati", "No/Zone"}) {
        EXPECT_TRUE(tests::answersAsExpected("extension/automatic_theme.txt", [zone](const std::string& now) {
            ThemedPhone phone({.now = now, .timeZone = {zone}});
            store(phone.runtime, "ThemeType", 2);
            EXPECT_EQ(ThemeManager::currentDisplayTheme(phone.state),
                      ThemeManager::currentThemeForAutoMode(phone.state))
                << now;
            EXPECT_EQ(entryColors(phone.runtime).isDark,
                      ThemeManager::currentThemeForAutoMode(phone.state) == 0)
                << now;
            return ThemeManager::currentDisplayThemeKey(phone.state);
        })) << zone;
    }
}

TEST(ThemeManager, ApplyingWritesThePaletteAndReplacesTheCurrentTheme) {
    ThemedPhone phone;
    const auto before = ThemeManager::currentTheme(phone.state);
    ThemeManager::setCurrentSelectedThemeTypeWithType(1, phone.state);
    EXPECT_NE(ThemeManager::currentTheme(phone.state), before);
    EXPECT_EQ(before->textColor(), Color::gray());

    const auto light = ThemeManager::currentTheme(phone.state);
    for (const PaletteColor& color : palette()) {
        EXPECT_EQ(light->color(color.name), color.light) << color.name;
        EXPECT_EQ(decodedColor(stored(phone.runtime, color.name)), color.light) << color.name;
    }
    EXPECT_EQ(light->refreshControlColor(), light->color("refreshControlColor"));
    EXPECT_EQ(light->color("noSuchColor"), std::nullopt);
    EXPECT_EQ(stored(phone.runtime, "AutoThemeType"), std::nullopt);

    for (const bool reloads : {true, false}) {
        ThemeManager::setReloadWidgetExtensionWithReload(reloads, phone.state);
        EXPECT_EQ(ThemeManager::getReloadWidgetExtension(phone.state), reloads);
        EXPECT_EQ(stored(phone.runtime, "reloadWidgetOnThemeChange"), PropertyList(reloads));
    }
}

TEST(ThemeManager, AColourThatCannotBeDecodedIsGrayAndTheOthersStay) {
    ThemedPhone phone;
    ThemeManager::setCurrentSelectedThemeTypeWithType(1, phone.state);
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

TEST(ThemeManager, TheFirstDefaultIsDarkALaterOneAppliesTheChoiceAgainAndThreeLeavesThePaletteAlone) {
    ThemedPhone phone({.now = "2026-11-22T13:30:00Z"});
    ThemeManager::setDefaultThemeIfNotSet(phone.state);
    EXPECT_EQ(stored(phone.runtime, "ThemeType"), PropertyList(0));
    EXPECT_EQ(stored(phone.runtime, "IsThemeTypeSet"), PropertyList(true));
    EXPECT_EQ(hexString(ThemeManager::currentTheme(phone.state)->textColor()), "#FFFFFF");

    ThemeManager::setCurrentSelectedThemeTypeWithType(2, phone.state);
    EXPECT_EQ(stored(phone.runtime, "AutoThemeType"), PropertyList(1));
    // Night falls.
    phone.runtime.clock().set(*platform::parseInstant("2026-11-22T13:30:01Z"), 0.0);
    ThemeManager::setDefaultThemeIfNotSet(phone.state);
    EXPECT_EQ(stored(phone.runtime, "ThemeType"), PropertyList(2));
    EXPECT_EQ(stored(phone.runtime, "AutoThemeType"), PropertyList(0));
    EXPECT_EQ(hexString(ThemeManager::currentTheme(phone.state)->backgroundColor()), "#1A1A22");

    ThemeManager::setCurrentSelectedThemeTypeWithType(3, phone.state);
    EXPECT_EQ(stored(phone.runtime, "ThemeType"), PropertyList(3));
    EXPECT_EQ(hexString(ThemeManager::currentTheme(phone.state)->backgroundColor()), "#1A1A22");
}

TEST(ThemeManager, AnotherProcessSeesTheNewPaletteWholeOrTheOldOne) {
    ThemedPhone writer;
    ThemeManager::setCurrentSelectedThemeTypeWithType(0, writer.state);
    const TestRuntime reader({.dataDirectory = writer.runtime.dataDirectory()});

    std::atomic isDone = false;
    std::thread writing([&] {
        for (std::int64_t turn = 0; turn < 30; ++turn)
            ThemeManager::setCurrentSelectedThemeTypeWithType(turn % 2, writer.state);
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

TEST(ThemeManager, AStoreThatCannotBeOpenedIsDarkWithGrayColours) {
    ThemedPhone phone;
    std::ofstream(platform::storeFile(phone.runtime.dataDirectory(), keys::GROUP_TODAY_EXTENSION))
        << std::string(8192, 'x');
    ThemeManager::setCurrentSelectedThemeTypeWithType(1, phone.state);
    ThemeManager::setDefaultThemeIfNotSet(phone.state);
    ThemeManager::setReloadWidgetExtensionWithReload(true, phone.state);
    EXPECT_EQ(ThemeManager::getCurrentSelectedThemeType(phone.state), 0);
    EXPECT_FALSE(ThemeManager::getReloadWidgetExtension(phone.state));
    EXPECT_TRUE(entryColors(phone.runtime).isDark);
    EXPECT_EQ(ThemeManager::currentTheme(phone.state)->textColor(), Color::gray());
}

TEST(ThemeManager, ItsObservableTypeIsZeroUntilItIsSetAndTellsItsObservers) {
    ThemedPhone phone;
    ThemeManager manager;
    std::vector<std::int64_t> seen;
    const auto note = [&seen](std::int64_t type) { seen.push_back(type); };
    auto observation = manager.currentSelectedThemeType.observe(note);
    ThemeManager::setCurrentSelectedThemeTypeWithType(1, phone.state);
    EXPECT_EQ(manager.currentSelectedThemeType.get(), 0);
    manager.currentSelectedThemeType.set(2);
    {
        const auto second = manager.currentSelectedThemeType.observe(note);
        manager.currentSelectedThemeType.set(3);
    }
    manager.currentSelectedThemeType.set(1);
    observation.stopObserving();
    manager.currentSelectedThemeType.set(0);
    EXPECT_EQ(seen, (std::vector<std::int64_t>{2, 3, 3, 1}));
    EXPECT_EQ(ThemeManager::getCurrentSelectedThemeType(phone.state), 1);
}

TEST(DirectionColor, ComparesTheCodeExactly) {
    ThemedPhone phone;
    ThemeManager::setCurrentSelectedThemeTypeWithType(0, phone.state);
    EXPECT_TRUE(tests::answersAsExpected("extension/direction_colors.txt", [&phone](const std::string& code) {
        return hexString(getTheDirectionColor(code, phone.state));
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
