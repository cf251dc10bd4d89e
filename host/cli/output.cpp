#include "host/cli/output.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <system_error>
#include "platform/base/file_descriptor.h"
#include "platform/base/terminal_text.h"
#include "platform/wire/framing.h"

namespace host {
namespace {

using platform::Error;
using platform::Result;

constexpr std::size_t longestFile = 64U << 20;

tl::unexpected<Error> fileFailure(const std::filesystem::path& file, std::string_view what, int code) {
    return platform::failure(
        "FileError", code,
        "cannot " + std::string(what) + " " + file.string() + ": " + std::generic_category().message(code));
}

}  // namespace

Result<void> print(const nlohmann::ordered_json& json) {
    return printLines(json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
}

Result<void> printLines(std::string_view text) {
    return printText(platform::terminalText(text, /*keepsLineBreaks=*/true));
}

Result<void> printText(std::string_view text) {
    const Result<void> written = platform::writeAll(STDOUT_FILENO, text);
    if (!written) return fileFailure("standard output", "write", written.error().code);
    return {};
}

void printLine(const std::string& text) {
    std::fprintf(stderr, "%s\n", platform::terminalText(text).c_str());
}

Result<void> writeFile(const std::filesystem::path& file, std::string_view content, bool isPrivate) {
    const platform::FileDescriptor output(
        open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, isPrivate ? 0600 : 0666));
    if (!output.isOpen()) return fileFailure(file, "write", errno);
    const Result<void> written = platform::writeAll(output.number(), content);
    if (!written) return fileFailure(file, "write", written.error().code);
    return {};
}

Result<std::string> readFile(const std::filesystem::path& file) {
    const platform::FileDescriptor input(file == "-" ? dup(STDIN_FILENO)
                                                     : open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!input.isOpen()) return fileFailure(file, "read", errno);
    std::string content;
    for (;;) {
        const Result<std::string> piece = platform::readSome(input.number());
        if (!piece) return fileFailure(file, "read", piece.error().code);
        if (piece->empty()) return content;
        content += *piece;
        if (content.size() > longestFile) return fileFailure(file, "read", EFBIG);
    }
}

int complain(const Error& error) {
    std::string line = "brightledger: " + error.message;
    std::ranges::replace(line, '\n', ' ');
    printLine(line);
    return error.domain == "UsageError" ? 2 : 1;
}

}  // namespace host
