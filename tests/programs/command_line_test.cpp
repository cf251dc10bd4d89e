// The programs as users and scripts call them: exit codes, the shape of the output, and bad input.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <regex>
#include <string>
#include "demo/service.h"
#include "platform/settings/property_list.h"
#include "tests/support/expected_text.h"
#include "tests/support/files.h"
#include "tests/support/temporary_directory.h"

namespace {

using platform::PropertyList;
using tests::contentOf;
using tests::written;

/// A shell in a folder of its own, in which `brightledger` has a data directory, a stopped clock and an
/// address at which no service listens. $SERVICE is the address of one that does.
class Transcript : public testing::Test {
protected:
    Transcript() {
        const PropertyList nobody("http://127.0.0.1:1");
        written(path("Info.plist"), *platform::xmlPropertyList(PropertyList::Dictionary{
                                        {"ProductionAPIHost", nobody}, {"ProductionWebHost", nobody}}));
    }

    /// The file of tests/expected/ with the answer of every command ("$ ...") below it: its output, its
    /// complaints ("! ...") and its exit code when that is not 0.
    void expectTranscript(const std::string& file) const {
        std::string text;
        for (const std::string& line : tests::linesOf(tests::expectedText(file))) {
            if (line.empty() || line.starts_with("# ")) text += line + "\n";
            if (!line.starts_with("$ ")) continue;
            const int exitCode = shell(line.substr(2));
            text += line + "\n" + contentOf(path("output"));
            for (const std::string& complaint : tests::linesOf(contentOf(path("complaint"))))
                text += "! " + complaint + "\n";
            if (exitCode != 0) text += "=> " + std::to_string(exitCode) + "\n";
        }
        static const std::regex identifier("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}");
        const std::regex directory(directory_.path().string());
        text = std::regex_replace(std::regex_replace(text, identifier, "ID"), directory, "DIR");
        EXPECT_TRUE(tests::isAsExpected(file, text));
    }

private:
    int shell(const std::string& command) const {
        written(path("command"), command);
        const std::string line =
            "cd '" + directory_.path().string() + "' && SERVICE=" + service_->origin() +
            " PATH='" BRIGHTLEDGER_PROGRAM_DIR
            "':\"$PATH\" BRIGHTLEDGER_DATA_DIR=$PWD/data "
            "BRIGHTLEDGER_INFO_PLIST=$PWD/Info.plist BRIGHTLEDGER_NOW=2026-11-23T06:30:00Z "
            "BRIGHTLEDGER_TIME_ZONE=Asia/Kolkata BRIGHTLEDGER_LOCALE=en_IN "
            "sh command >output 2>complaint";
        return WEXITSTATUS(std::system(line.c_str()));
    }

    std::string path(const std::string& name) const { return directory_.path() / name; }

    tests::TemporaryDirectory directory_;
    std::unique_ptr<demo::DemoService> service_ =
        std::move(*demo::DemoService::start(BRIGHTLEDGER_SOURCE_DIR "/resources/demo"));
};

TEST_F(Transcript, OfWrongUsage) { expectTranscript("programs/wrong_usage.txt"); }

TEST_F(Transcript, OfFailures) { expectTranscript("programs/failures.txt"); }

TEST_F(Transcript, OfTheStore) { expectTranscript("programs/store.txt"); }

TEST_F(Transcript, OfAnswers) { expectTranscript("programs/answers.txt"); }

TEST_F(Transcript, OfUsers) { expectTranscript("programs/users.txt"); }

}  // namespace
