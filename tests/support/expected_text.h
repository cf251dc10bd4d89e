#pragma once

// Texts that are kept under tests/expected/ and compared with what the programs make today.

#include <gtest/gtest.h>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>
#include "tests/support/files.h"

namespace tests {

/// What stands between the separators: one part more than there are separators.
inline std::vector<std::string> parts(const std::string& text, char separator) {
    std::vector<std::string> found{""};
    for (const char character : text) {
        if (character == separator)
            found.emplace_back();
        else
            found.back() += character;
    }
    return found;
}

inline std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines = parts(text, '\n');
    if (lines.back().empty()) lines.pop_back();
    return lines;
}

inline std::filesystem::path expectedFile(const std::string& name) {
    return std::filesystem::path(BRIGHTLEDGER_SOURCE_DIR) / "tests/expected" / name;
}

inline std::string expectedText(const std::string& name) { return contentOf(expectedFile(name)); }

/// Whether BRIGHTLEDGER_RECORD=1 stands in the environment: then tests write what they expect, and fail, so
/// that no run that records passes.
inline bool isRecording() {
    const char* record = std::getenv("BRIGHTLEDGER_RECORD");
    return record != nullptr && std::string(record) == "1";
}

inline testing::AssertionResult recorded(const std::string& name, const std::string& content) {
    const std::filesystem::path file = expectedFile(name);
    std::filesystem::create_directories(file.parent_path());
    written(file, content);
    return testing::AssertionFailure() << name << " is recorded; read the difference and run again";
}

/// Whether `text` is what the file `name` of tests/expected/ holds. The message shows the first lines that
/// differ, below the title ("# ...") that they stand under.
inline testing::AssertionResult isAsExpected(const std::string& name, const std::string& text) {
    if (isRecording()) return recorded(name, text);
    const std::string expected = expectedText(name);
    if (text.empty()) return testing::AssertionFailure() << name << " is missing";
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

/// Whether `answer` gives what stands behind every "[input] => " of the file; its other lines are for the
/// reader.
inline testing::AssertionResult answersAsExpected(const std::string& name, const auto& answer) {
    std::string text;
    for (const std::string& line : linesOf(expectedText(name))) {
        const std::size_t end = line.rfind("] => ");
        const bool isCase = line.starts_with("[") && end != std::string::npos;
        text +=
            (isCase ? line.substr(0, end + 5) + std::string(answer(line.substr(1, end - 1))) : line) + "\n";
    }
    return isAsExpected(name, text);
}

}  // namespace tests
