#include <nlohmann/json.hpp>
#include "companion/operations.h"

namespace companion {
namespace {

constexpr std::string_view blanks = " \t\r\n";

/// Where the JSON value that begins at `start` ends; npos when it does not. Only texts and nesting are
/// looked at: what the value is worth is for its reader to say.
std::size_t endOfValue(std::string_view line, std::size_t start) {
    int depth = 0;
    bool isInText = false;
    for (std::size_t at = start; at < line.size(); ++at) {
        const char character = line[at];
        if (isInText) {
            if (character == '\\') {
                ++at;
            } else if (character == '"') {
                isInText = false;
            }
        } else if (character == '"') {
            isInText = true;
        } else if (character == '{' || character == '[') {
            ++depth;
        } else if (character == '}' || character == ']') {
            --depth;
        }
        if (!isInText && depth == 0) return at + 1;
    }
    return std::string_view::npos;
}

platform::Result<std::string> wordOf(std::string_view value) {
    if (!value.starts_with('"')) return std::string(value);
    const auto text = nlohmann::json::parse(value, nullptr, /*allow_exceptions=*/false);
    if (!text.is_string())
        return platform::failure("UsageError", 0, std::string(value) + " is not JSON text");
    return text.get<std::string>();
}

}  // namespace

platform::Result<std::vector<std::string>> splitCallLine(std::string_view line) {
    std::vector<std::string> words;
    for (std::size_t at = line.find_first_not_of(blanks); at < line.size();
         at = line.find_first_not_of(blanks, at)) {
        const bool isValue = line[at] == '"' || line[at] == '{' || line[at] == '[';
        const std::size_t end =
            isValue ? endOfValue(line, at) : std::min(line.find_first_of(blanks, at), line.size());
        if (end == std::string_view::npos)
            return platform::failure("UsageError", 0, std::string(line.substr(at)) + " is not closed");
        if (end < line.size() && blanks.find(line[end]) == std::string_view::npos) {
            return platform::failure("UsageError", 0,
                                     "a blank is missing after " + std::string(line.substr(at, end - at)));
        }
        words.push_back(TRY(wordOf(line.substr(at, end - at))));
        at = end;
    }
    return words;
}

}  // namespace companion
