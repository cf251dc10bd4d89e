#include "host/cli/surroundings.h"

#include "host/cli/output.h"
#include "host/process/extension_arguments.h"

namespace host {

platform::Result<platform::RuntimeOptions> surroundings(const platform::ProcessOptions& process) {
    return platform::runtimeOptions(process, platform::resourcesDirectory() / "Info.plist");
}

ExtensionOptions extensionOptions(const platform::ProcessOptions& process,
                                  const platform::RuntimeOptions& resolved) {
    return {.program = extensionProgram(),
            .arguments = extensionArguments(process, resolved),
            .log = process.isVerbose ? [](const std::string& line) { printLine(line); }
                                     : std::function<void(std::string)>()};
}

}  // namespace host
