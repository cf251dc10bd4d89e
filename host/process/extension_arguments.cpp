#include "host/process/extension_arguments.h"

#include <cstdlib>

namespace host {
namespace {

/// An option beats its variable; an empty variable counts as none.
std::optional<std::string> optionOrVariable(const std::optional<std::string>& option, const char* variable) {
    if (option) return option;
    const char* value = std::getenv(variable);
    if (value == nullptr || *value == '\0') return std::nullopt;
    return value;
}

}  // namespace

std::vector<std::string> extensionArguments(const platform::ProcessOptions& options,
                                            const platform::RuntimeOptions& resolved) {
    return platform::arguments({
        .dataDirectory = resolved.dataDirectory.string(),
        .infoPlist = optionOrVariable(options.infoPlist, "BRIGHTLEDGER_INFO_PLIST"),
        .now = optionOrVariable(options.now, "BRIGHTLEDGER_NOW"),
        .osVersion = std::to_string(resolved.osVersion),
        .screen = std::string(resolved.screen.name),
        .locale = resolved.locale.identifier,
        .timeZone = resolved.timeZone.identifier,
        .isVerbose = options.isVerbose,
    });
}

std::filesystem::path extensionProgram() { return platform::programDirectory() / "brightledger-extension"; }

}  // namespace host
