#include "platform/runtime/process_options.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>
#include "platform/text/calendar.h"
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
                                 "BRIGHTLEDGER_OS_VERSION", "BRIGHTLEDGER_SCREEN", "BRIGHTLEDGER_LOCALE",
                                 "BRIGHTLEDGER_TIME_ZONE", "XDG_DATA_HOME", "HOME", "LC_ALL", "LANG", "TZ"}) {
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
    EXPECT_TRUE(tests::answersAsExpected("platform/process_options.txt", [](const std::string& input) {
        std::vector<std::string> words = tests::parts(input, ' ');
        std::vector<std::pair<std::string, std::string>> values;
        std::erase_if(words, [&](const std::string& word) {
            const std::size_t end = word.find('=');
            if (!word.starts_with("--")) values.emplace_back(word.substr(0, end), word.substr(end + 1));
            return !word.starts_with("--");
        });
        const Variables variables(values);
        const auto made = runtimeOptions(*takeProcessOptions(words), "");
        if (!made) return made.error().domain + ": " + made.error().message;
        return made->dataDirectory.string() + ", version " + std::to_string(made->osVersion) + ", " +
               std::string(made->screen.name) + ", " + made->locale.identifier + ", " +
               made->timeZone.identifier + ", " +
               (made->now ? formatInstant(*made->now) : "the system's clock") + (made->log ? ", log" : "");
    }));
}

TEST(ProcessOptions, KeepTheSystemsZoneWhenTZNamesNone) {
    const auto zoneWith = [](const std::vector<std::pair<std::string, std::string>>& values) {
        const Variables variables(values);
        return systemTimeZone();
    };
    for (const char* value : {"", "Mars/Olympus", "../../../etc/hostname", "Asia", "zone.tab", "Factory"})
        EXPECT_EQ(zoneWith({{"TZ", value}}), zoneWith({})) << value;
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
