#include "platform/runtime/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

TEST(CommandLine, CommonOptionsAreTakenWhereverTheyStandAndTheRestStaysInOrder) {
    std::vector<std::string> arguments{"--data-dir", "/d",      "draw",     "--now=2026-11-22T03:30:00Z",
                                       "KIND",       "--scale", "2",        "--verbose",
                                       "--locale",   "en_IN",   "--locale", "hi_IN"};
    const auto options = platform::takeProcessOptions(arguments);
    ASSERT_TRUE(options);
    EXPECT_EQ(options->dataDirectory, "/d");
    EXPECT_EQ(options->now, "2026-11-22T03:30:00Z");
    EXPECT_EQ(options->locale, "hi_IN");
    EXPECT_TRUE(options->isVerbose);
    EXPECT_EQ(options->timeZone, std::nullopt);
    EXPECT_THAT(arguments, ElementsAre("draw", "KIND", "--scale", "2"));
}

TEST(CommandLine, BehindTwoDashesEverythingIsAWord) {
    std::vector<std::string> arguments{"store", "set", "--", "--now", "string", "--verbose"};
    const auto options = platform::takeProcessOptions(arguments);
    ASSERT_TRUE(options);
    EXPECT_EQ(options->now, std::nullopt);
    EXPECT_FALSE(options->isVerbose);
    EXPECT_THAT(arguments, ElementsAre("store", "set", "--", "--now", "string", "--verbose"));
}

TEST(CommandLine, AnOptionWithoutItsValueIsWrongUsageAndAnEmptyValueIsOne) {
    std::vector<std::string> missing{"gallery", "--now"};
    const auto options = platform::takeProcessOptions(missing);
    ASSERT_FALSE(options);
    EXPECT_EQ(options.error().domain, "UsageError");

    std::vector<std::string> empty{"--now="};
    EXPECT_EQ(platform::takeProcessOptions(empty)->now, "");
}

}  // namespace
