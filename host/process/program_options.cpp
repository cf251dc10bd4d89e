#include "host/process/program_options.h"

#include <cstdio>

namespace host {

using platform::ProcessOptions;

platform::Result<platform::RuntimeOptions> resolvedOptions(const ProcessOptions& options) {
    return platform::runtimeOptions(options, platform::resourcesDirectory() / "Info.plist");
}

ExtensionOptions extensionOptions(const ProcessOptions& options, const platform::RuntimeOptions& resolved) {
    ExtensionOptions extension{.program = platform::programDirectory() / "brightledger-extension",
                               .arguments = platform::arguments({
                                   .dataDirectory = resolved.dataDirectory.string(),
                                   .infoPlist = platform::chosenOption(options, &ProcessOptions::infoPlist),
                                   .now = platform::chosenOption(options, &ProcessOptions::now),
                                   .osVersion = std::to_string(resolved.osVersion),
                                   .screen = std::string(resolved.screen.name),
                                   .locale = resolved.locale.identifier,
                                   .timeZone = resolved.timeZone.identifier,
                                   .isVerbose = options.isVerbose,
                               }),
                               .log = {}};
    if (options.isVerbose)
        extension.log = [](const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); };
    return extension;
}

}  // namespace host
