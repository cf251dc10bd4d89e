#include "platform/runtime/process_options.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>
#include "platform/runtime/command_line.h"
#include "tests/support/expected_text.h"
#include "tests/support/temporary_directory.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using tests::TemporaryDirectory;

/// Sets variables for a test and brings the old values back after it.
class Variables {
public:
    explicit Variables(const std::vector<std::pair<std::string, std::string>>& values = {}) {
        for (const char* name : {"BRIGHTLEDGER_DATA_DIR", "BRIGHTLEDGER_INFO_PLIST", "BRIGHTLEDGER_NOW",
                                 "BRIGHTLEDGER_OS_VERSION", "BRIGHTLEDGER_LOCALE", "BRIGHTLEDGER_TIME_ZONE",
                                 "XDG_DATA_HOME", "HOME", "LC_ALL", "LANG", "TZ"}) {
            const char* value = std::getenv(name);
            before_.emplace_back(name, value == nullptr ? std::nullopt : std::optional<std::string>(value));
            unsetenv(name);
        }
        for (const auto& [name, value] : values) setenv(name.c_str(), value.c_str(), 1);
    }
    ~Variables() {
        for (const auto& [name, value] : before_) {
            if (value) {
                setenv(name.c_str(), value->c_str(), 1);
            } else {
                unsetenv(name.c_str());
            }
        }
    }
    Variables(const Variables&) = delete;
    Variables& operator=(const Variables&) = delete;

private:
    std::vector<std::pair<std::string, std::optional<std::string>>> before_;
};

TEST(ProcessOptions, BeatTheirVariablesWhichBeatTheSystem) {
    const Variables variables({{"BRIGHTLEDGER_DATA_DIR", "/variable"},
                               {"BRIGHTLEDGER_OS_VERSION", "16"},
                               {"BRIGHTLEDGER_LOCALE", "hi_IN"},
                               {"BRIGHTLEDGER_TIME_ZONE", "Europe/Berlin"},
                               {"BRIGHTLEDGER_NOW", "2026-11-22T09:00:00+05:30"}});
    const auto fromVariables = runtimeOptions({}, "");
    ASSERT_TRUE(fromVariables) << fromVariables.error().message;
    EXPECT_EQ(fromVariables->dataDirectory, "/variable");
    EXPECT_EQ(fromVariables->osVersion, 16);
    EXPECT_EQ(fromVariables->locale.identifier, "hi_IN");
    EXPECT_EQ(fromVariables->timeZone.identifier, "Europe/Berlin");
    EXPECT_EQ(fromVariables->now, parseInstant("2026-11-22T03:30:00Z"));
    EXPECT_FALSE(fromVariables->log);

    const auto fromOptions = runtimeOptions({.dataDirectory = "/option",
                                             .now = "2026-01-01T00:00:00Z",
                                             .osVersion = "17",
                                             .locale = "en_IN",
                                             .timeZone = "Asia/Kolkata",
                                             .isVerbose = true},
                                            "");
    ASSERT_TRUE(fromOptions) << fromOptions.error().message;
    EXPECT_EQ(fromOptions->dataDirectory, "/option");
    EXPECT_EQ(fromOptions->osVersion, 17);
    EXPECT_EQ(fromOptions->locale.identifier, "en_IN");
    EXPECT_EQ(fromOptions->timeZone.identifier, "Asia/Kolkata");
    EXPECT_EQ(fromOptions->now, parseInstant("2026-01-01T00:00:00Z"));
    EXPECT_TRUE(fromOptions->log);
}

TEST(ProcessOptions, ComeFromTheSystemWhenNobodySaysOtherwise) {
    const std::vector<std::tuple<std::string, std::string, fs::path>> homes{
        {"/home/me", "/xdg", "/xdg/brightledger"},
        {"/home/me", "", "/home/me/.local/share/brightledger"},
        {"/home/me", "relative", "/home/me/.local/share/brightledger"},
    };
    for (const auto& [home, xdg, expected] : homes) {
        const Variables variables(
            {{"HOME", home}, {"XDG_DATA_HOME", xdg}, {"BRIGHTLEDGER_DATA_DIR", ""}, {"TZ", "Asia/Kolkata"}});
        const auto options = runtimeOptions({}, "");
        ASSERT_TRUE(options);
        EXPECT_EQ(options->dataDirectory, expected);
        EXPECT_EQ(options->osVersion, 18);
        EXPECT_EQ(options->locale.identifier, "en_US");
        EXPECT_EQ(options->timeZone.identifier, "Asia/Kolkata");
        EXPECT_FALSE(options->now);
    }
}

TEST(ProcessOptions, ThatMakeNoSenseAreWrongUsage) {
    const Variables variables;
    EXPECT_TRUE(tests::answersAsExpected("platform/wrong_options.txt", [](const std::string& option) {
        std::vector<std::string> arguments{option};
        const auto options = takeProcessOptions(arguments);
        const auto result = runtimeOptions(*options, "");
        return result ? "accepted" : result.error().domain + ": " + result.error().message;
    }));
    const Variables wrong(std::vector<std::pair<std::string, std::string>>{{"BRIGHTLEDGER_NOW", "noon"}});
    EXPECT_THAT(runtimeOptions({}, "").error().message, HasSubstr("BRIGHTLEDGER_NOW \"noon\""));
}

TEST(ProcessOptions, NameABundleThatMustBeThereUnlikeTheInstalledOne) {
    const Variables variables;
    const TemporaryDirectory folder;
    const fs::path installed = folder.path() / "Info.plist";
    EXPECT_TRUE(runtimeOptions({}, installed)->bundle.entries.empty());
    std::ofstream(installed) << "<plist><dict><key>ENVIRONMENT</key><string>staging</string></dict></plist>";
    EXPECT_EQ(runtimeOptions({}, installed)->bundle.text("ENVIRONMENT"), "staging");

    const std::string missing = (folder.path() / "missing.plist").string();
    const auto refused = runtimeOptions({.infoPlist = missing}, installed);
    ASSERT_FALSE(refused);
    EXPECT_NE(refused.error().domain, "UsageError");
    EXPECT_THAT(refused.error().message, HasSubstr("missing.plist"));
}

TEST(ProcessOptions, AreHandedOnWithWholePaths) {
    EXPECT_THAT(arguments({.dataDirectory = "data"}),
                ElementsAre("--data-dir", (fs::current_path() / "data").string()));
}

TEST(ThePrograms, FindTheirFilesBesideThemselves) {
    EXPECT_EQ(programDirectory(), fs::read_symlink("/proc/self/exe").parent_path());
    EXPECT_TRUE(resourcesDirectory() == programDirectory() / "resources" ||
                resourcesDirectory() == programDirectory().parent_path() / "share" / "brightledger");
}

}  // namespace
}  // namespace platform
