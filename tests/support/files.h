#pragma once

// Reading and writing whole files without caring for errors.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace tests {

/// Empty when there is no such file.
inline std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// The file, with that content.
inline std::filesystem::path written(const std::filesystem::path& file, const std::string& content) {
    std::ofstream(file, std::ios::binary) << content;
    return file;
}

}  // namespace tests
