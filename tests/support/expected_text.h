#pragma once

// Texts that are kept under tests/expected/ and compared with what the programs make today.

#include <gtest/gtest.h>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace tests {

inline std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

/// Whether BRIGHTLEDGER_RECORD=1 stands in the environment: then tests write what they expect, and fail, so
/// that no run that records passes.
inline bool isRecording() {
    const char* record = std::getenv("BRIGHTLEDGER_RECORD");
    return record != nullptr && std::string(record) == "1";
}

inline testing::AssertionResult recorded(const std::filesystem::path& file, const std::string& content) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
    return testing::AssertionFailure()
           << file.filename() << " is recorded; read the difference and run again";
}

/// Whether `text` is what the file `name` of tests/expected/ holds. The message shows the first lines that
/// differ, below the title ("# ...") that they stand under.
///
/// With BRIGHTLEDGER_RECORD=1 in the environment it writes the file and fails nevertheless, so that no run
/// that records passes.
inline testing::AssertionResult isAsExpected(const std::string& name, const std::string& text) {
    const std::filesystem::path file =
        std::filesystem::path(BRIGHTLEDGER_SOURCE_DIR) / "tests/expected" / name;
    if (isRecording()) return recorded(file, text);
    std::ifstream stream(file, std::ios::binary);
    const std::string expected{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (text == expected) return testing::AssertionSuccess();

    constexpr std::ptrdiff_t most = 6;
    const std::vector<std::string> before = linesOf(expected);
    const std::vector<std::string> now = linesOf(text);
    const auto [left, right] = std::ranges::mismatch(before, now);
    auto result = testing::AssertionFailure() << name << ", line " << left - before.begin() + 1;
    const auto isTitle = [](const std::string& line) { return line.starts_with("#"); };
    const auto title = std::find_if(std::reverse_iterator(left), before.rend(), isTitle);
    if (title != before.rend()) result << ", in \"" << *title << "\"";
    for (auto line = left; line != before.end() && line - left < most; ++line) result << "\n- " << *line;
    for (auto line = right; line != now.end() && line - right < most; ++line) result << "\n+ " << *line;
    return result;
}

}  // namespace tests
