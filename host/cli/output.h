#pragma once

// Where results and complaints go.

#include <filesystem>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include "platform/base/result.h"

namespace host {

/// To standard output, indented, with a line break.
platform::Result<void> print(const nlohmann::ordered_json& json);
/// To standard output as it is.
platform::Result<void> printText(std::string_view text);
/// One line on standard error.
void printLine(const std::string& text);

/// Replaces the file's content; a new file is only the user's own when `isPrivate`.
platform::Result<void> writeFile(const std::filesystem::path& file, std::string_view content,
                                 bool isPrivate = false);
/// "-" is standard input. At most 64 MiB.
platform::Result<std::string> readFile(const std::filesystem::path& file);

/// Tells the error in one line on standard error; the exit code is 2 for wrong usage, else 1.
int complain(const platform::Error& error);

}  // namespace host
