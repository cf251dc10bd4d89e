// brightledger-demo: the demo service as a program.

#include <csignal>
#include <iostream>
#include <optional>
#include <string_view>
#include "demo/service.h"
#include "platform/base/ascii.h"
#include "platform/base/program_start.h"
#include "platform/runtime/process_options.h"

namespace {

int usage() {
    std::cerr << "usage: brightledger-demo [--port N]\n";
    return 2;
}

}  // namespace

int main(int count, char** arguments) {
    platform::fillStandardStreams();
    std::uint16_t port = 0;
    for (int i = 1; i < count; ++i) {
        const std::string_view argument = arguments[i];
        std::optional<std::uint16_t> given;
        if (argument == "--port" && i + 1 < count)
            given = platform::parsedNumber<std::uint16_t>(arguments[++i]);
        if (argument.starts_with("--port="))
            given = platform::parsedNumber<std::uint16_t>(argument.substr(7));
        if (!given) return usage();
        port = *given;
    }
    const sigset_t signals = platform::blockEndingSignals();
    std::signal(SIGPIPE, SIG_IGN);

    const auto service = demo::DemoService::start(platform::resourcesDirectory() / "demo", port);
    if (!service) {
        std::cerr << "brightledger-demo: " << service.error().message << "\n";
        return 1;
    }
    std::cout << (*service)->origin() << '\n' << std::flush;
    int received = 0;
    sigwait(&signals, &received);
    return 0;
}
