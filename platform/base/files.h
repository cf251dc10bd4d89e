#pragma once

// Whole files: read within a limit, and replaced in one step.

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include "platform/base/result.h"

namespace platform {

/// The content of a regular file (or of a link to one) of at most `limit` bytes. Never waits for another
/// process, as reading a pipe would. Errors (domain "FileError", code errno) name the file and the reason.
Result<std::string> readFile(const std::filesystem::path& path, std::size_t limit);

/// Replaces the file, mode 0600, or creates it: others see the old content or the new one, also after a
/// crash. Error as above.
Result<void> writeFile(const std::filesystem::path& path, std::string_view content);

/// After it returns, a power cut does not bring back the names that files in the folder had before.
void syncFolder(const std::filesystem::path& folder);

}  // namespace platform
