// The extension's process: a child of the widget host that answers over its standard input and output.

#include <malloc.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include "extension/app/bundle/message_loop.h"
#include "extension/app/bundle/perch_widget_bundle.h"
#include "platform/runtime/process_options.h"

namespace {

constexpr int wrongUsage = 2;

/// Reads "--name value" and "--name=value"; the first argument that is neither, when there is one.
std::optional<std::string_view> readArguments(int count, char** arguments,
                                              platform::ProcessOptions& options) {
    const std::pair<std::string_view, std::optional<std::string>*> known[] = {
        {"--data-dir", &options.dataDirectory},
        {"--info-plist", &options.infoPlist},
        {"--now", &options.now},
        {"--os-version", &options.osVersion},
        {"--locale", &options.locale},
        {"--time-zone", &options.timeZone}};
    for (int i = 1; i < count; ++i) {
        const std::string_view argument = arguments[i];
        if (argument == "--verbose") {
            options.isVerbose = true;
            continue;
        }
        const std::string_view name = argument.substr(0, argument.find('='));
        bool isKnown = false;
        for (const auto& [option, value] : known) {
            if (option != name) continue;
            isKnown = name.size() < argument.size() || i + 1 < count;
            if (isKnown) {
                *value = name.size() < argument.size() ? std::string(argument.substr(name.size() + 1))
                                                       : std::string(arguments[++i]);
            }
        }
        if (!isKnown) return argument;
    }
    return std::nullopt;
}

void complain(std::string_view message) {
    std::fprintf(stderr, "brightledger-extension: %.*s\n", static_cast<int>(message.size()), message.data());
}

}  // namespace

int main(int argc, char** argv) {
    // Few threads that allocate little: arenas of their own would only cost memory.
    mallopt(M_ARENA_MAX, 1);
    std::signal(SIGPIPE, SIG_IGN);

    platform::ProcessOptions arguments;
    if (const auto unknown = readArguments(argc, argv, arguments)) {
        complain("cannot use the argument " + std::string(*unknown));
        return wrongUsage;
    }
    auto options = platform::runtimeOptions(arguments, platform::resourcesDirectory() / "Info.plist");
    if (!options) {
        complain(options.error().message);
        return options.error().domain == "UsageError" ? wrongUsage : 1;
    }

    const platform::Runtime runtime(std::move(*options));
    runtime.makeCurrent();
    const extension::PerchWidgetBundle bundle(runtime);
    const auto ended = extension::runMessageLoop(runtime, bundle, STDIN_FILENO, STDOUT_FILENO);
    if (!ended) {
        complain(ended.error().message);
        return 1;
    }
    return 0;
}
