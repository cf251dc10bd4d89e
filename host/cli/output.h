#pragma once

// Where results and error messages go.

#include <filesystem>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include "platform/base/result.h"

namespace host {

/// To standard output, indented, with a line break at the end.
platform::Result<void> print(const nlohmann::ordered_json& json);
/// To standard output, with control characters other than line breaks shown as text.
platform::Result<void> printLines(std::string_view text);
/// To standard output as it is.
platform::Result<void> printText(std::string_view text);
/// One line on standard error.
void printLine(const std::string& text);

/// Replaces the file's content. When `isPrivate`, only the user can read a new file.
platform::Result<void> writeFile(const std::filesystem::path& file, std::string_view content,
                                 bool isPrivate = false);
/// "-" is standard input. At most 64 MiB.
platform::Result<std::string> readFile(const std::filesystem::path& file);

/// Prints the error in one line on standard error. Returns the exit code: 2 for wrong usage, otherwise 1.
int complain(const platform::Error& error);

}  // namespace host
