// The programs as users and scripts call them: exit codes, the shape of the output, and bad input.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <vector>
#include "demo/service.h"
#include "platform/settings/property_list.h"
#include "tests/support/expected_text.h"
#include "tests/support/files.h"
#include "tests/support/temporary_directory.h"

namespace {

using nlohmann::ordered_json;
using platform::PropertyList;
using testing::HasSubstr;
using testing::MatchesRegex;
using tests::contentOf;
using tests::written;

struct Outcome {
    int exitCode = -1;
    std::string output;
    std::string complaint;
};

/// A shell in a folder of its own, in which `brightledger` has a data directory, a stopped clock and a
/// service.
class CommandLineTest : public testing::Test {
protected:
    CommandLineTest() { serve("http://127.0.0.1:1"); }

    void serve(const std::string& origin) {
        written(directory_.path() / "Info.plist",
                *platform::xmlPropertyList(
                    PropertyList::Dictionary{{"ProductionAPIHost", origin}, {"ProductionWebHost", origin}}));
    }

    Outcome shell(const std::string& command) const {
        written(path("command"), command);
        const std::string line =
            "cd '" + directory_.path().string() +
            "' && PATH='" BRIGHTLEDGER_PROGRAM_DIR
            "':\"$PATH\" BRIGHTLEDGER_DATA_DIR=$PWD/data "
            "BRIGHTLEDGER_INFO_PLIST=$PWD/Info.plist BRIGHTLEDGER_NOW=2026-11-23T06:30:00Z "
            "BRIGHTLEDGER_TIME_ZONE=Asia/Kolkata BRIGHTLEDGER_LOCALE=en_IN "
            "sh command >output 2>complaint";
        const int status = std::system(line.c_str());
        return {WEXITSTATUS(status), contentOf(path("output")), contentOf(path("complaint"))};
    }

    Outcome run(const std::string& words, const std::string& input = {}) const {
        written(path("input"), input);
        return shell("brightledger " + words + " <input");
    }

    ordered_json json(const std::string& words, const std::string& input = {}) const {
        const Outcome outcome = run(words, input);
        EXPECT_EQ(outcome.exitCode, 0) << words << ": " << outcome.complaint;
        return ordered_json::parse(outcome.output);
    }

    std::string path(const std::string& name) const { return directory_.path() / name; }

    tests::TemporaryDirectory directory_;
};

/// The file of tests/expected/ with the answer of every command ("$ ...") below it: its output, its
/// complaints
/// ("! ...") and its exit code when that is not 0.
class Transcript : public CommandLineTest {
protected:
    std::string transcriptOf(const std::string& file) const {
        std::string text;
        for (const std::string& line : tests::linesOf(tests::expectedText(file))) {
            if (line.empty() || line.starts_with("# ")) text += line + "\n";
            if (!line.starts_with("$ ")) continue;
            const Outcome outcome = shell(line.substr(2));
            text += line + "\n" + outcome.output;
            for (const std::string& complaint : tests::linesOf(outcome.complaint))
                text += "! " + complaint + "\n";
            if (outcome.exitCode != 0) text += "=> " + std::to_string(outcome.exitCode) + "\n";
        }
        static const std::regex identifier("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}");
        const std::regex directory(directory_.path().string());
        return std::regex_replace(std::regex_replace(text, identifier, "ID"), directory, "DIR");
    }

    void expectTranscript(const std::string& file) const {
        EXPECT_TRUE(tests::isAsExpected(file, transcriptOf(file)));
    }
};

TEST_F(Transcript, OfWrongUsage) { expectTranscript("programs/wrong_usage.txt"); }

TEST_F(Transcript, OfFailures) { expectTranscript("programs/failures.txt"); }

TEST_F(Transcript, OfTheStore) { expectTranscript("programs/store.txt"); }

TEST_F(Transcript, OfAnswers) { expectTranscript("programs/answers.txt"); }

TEST_F(CommandLineTest, AHomeScreenEndsWhenItsTimeIsUpAndLogsWhenAskedTo) {
    const Outcome outcome = run("run --for 1 --verbose");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, MatchesRegex("http://127.0.0.1:[0-9]+/.token=[0-9a-f]+\n"));
    EXPECT_THAT(outcome.complaint, HasSubstr("debug: "));
}

TEST_F(CommandLineTest, AUserIsSignedInAndOutAndTheirRowsGoWithThem) {
    EXPECT_EQ(run("user asha").exitCode, 1);  // no service knows them
    const auto service = demo::DemoService::start();
    ASSERT_TRUE(service);
    serve((*service)->origin());
    EXPECT_EQ(run("user nobody").exitCode, 1);
    ASSERT_EQ(run("user asha").exitCode, 0);

    const ordered_json timeline = json("timeline PortfolioWidget --family systemMedium");
    EXPECT_EQ(timeline["entries"][0]["apiError"], "success");
    EXPECT_EQ(run("store get portfolioArray").exitCode, 0);

    ASSERT_EQ(run("user none").exitCode, 0);
    for (const char* key : {"token", "userId", "userPortfolio", "portfolioArray"}) {
        EXPECT_EQ(run(std::string("store get ") + key).exitCode, 1) << key;
    }
    EXPECT_EQ(json("timeline PortfolioWidget --family systemMedium")["entries"][0]["apiError"], "nonLogin");
}

}  // namespace
