// The extension's process: a child of the widget host that answers over its standard input and output.

#include <malloc.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>
#include "extension/app/bundle/message_loop.h"
#include "extension/app/bundle/perch_widget_bundle.h"
#include "platform/base/program_start.h"
#include "platform/base/terminal_text.h"
#include "platform/runtime/process_options.h"

namespace {

/// The exit code.
int complain(const platform::Error& error) {
    std::fprintf(stderr, "brightledger-extension: %s\n", platform::terminalText(error.message).c_str());
    return error.domain == "UsageError" ? 2 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    platform::fillStandardStreams();
    // There are few threads and they allocate little: an arena for each would only cost memory.
    mallopt(M_ARENA_MAX, 1);
    std::signal(SIGPIPE, SIG_IGN);

    std::vector<std::string> arguments(argv + 1, argv + argc);
    const auto given = platform::takeProcessOptions(arguments);
    if (!given) return complain(given.error());
    if (!arguments.empty())
        return complain({"UsageError", 2, "cannot use the argument " + arguments.front()});
    auto options = platform::runtimeOptions(*given, platform::resourcesDirectory() / "Info.plist");
    if (!options) return complain(options.error());

    const platform::Runtime runtime(std::move(*options));
    runtime.makeCurrent();
    const extension::PerchWidgetBundle bundle(runtime);
    const auto ended = extension::runMessageLoop(runtime, bundle, STDIN_FILENO, STDOUT_FILENO);
    return ended ? 0 : complain(ended.error());
}
