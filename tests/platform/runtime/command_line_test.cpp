#include "platform/runtime/process_options.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>
#include "tests/support/expected_text.h"

namespace platform {
namespace {

std::string joined(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) line += (line.empty() ? "" : " ") + word;
    return line;
}

TEST(CommandLine, CommonOptionsAreTakenWhereverTheyStandAndTheRestStaysInOrder) {
    EXPECT_TRUE(tests::answersAsExpected("platform/command_lines.txt", [](const std::string& line) {
        std::vector<std::string> words = tests::parts(line, ' ');
        const auto options = takeProcessOptions(words);
        if (!options) return options.error().domain + ": " + options.error().message;
        return joined(arguments(*options)) + "; " + joined(words);
    }));
}

}  // namespace
}  // namespace platform
