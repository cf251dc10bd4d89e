#include "host/cli/commands.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <system_error>
#include "companion/demo_service.h"
#include "companion/operations.h"
#include "host/cli/output.h"
#include "host/home/host_socket.h"
#include "host/process/program_options.h"
#include "platform/runtime/runtime.h"
#include "platform/wire/host_channel.h"

namespace host {
namespace {

using platform::ProcessOptions;
using platform::Result;

constexpr std::chrono::seconds galleryLimit{5};

Result<void> callWords(companion::PhoneApp& app, const std::vector<std::string>& words) {
    if (words.size() < 2)
        return platform::failure("UsageError", 2, "a call needs a class and a selector; \"call\" lists them");
    const auto result = TRY(app.call(words[0], words[1], {words.begin() + 2, words.end()}));
    // One line per call, so that the results of several calls can be told apart.
    return printLines(result.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
}

Result<void> callLines(companion::PhoneApp& app, std::istream& input) {
    int number = 0;
    for (std::string line; std::getline(input, line);) {
        ++number;
        const auto words = companion::splitCallLine(line);
        const Result<void> called = !words           ? tl::unexpected(words.error())
                                    : words->empty() ? Result<void>()
                                                     : callWords(app, *words);
        if (!called) {
            return platform::failure(called.error().domain, called.error().code,
                                     "line " + std::to_string(number) + ": " + called.error().message);
        }
    }
    return {};
}

/// Looks the user up at the service that the information dictionary names.
Result<companion::Session> sessionOf(const std::string& name, const platform::Runtime& runtime) {
    const auto users =
        companion::DemoService(runtime, runtime.bundle().text("ProductionWebHost").value_or("")).users();
    if (!users) {
        return platform::failure(
            "UserError", 1,
            "cannot look up the user \"" + name +
                "\": no home screen is running, and the web host did not list its users (" +
                users.error().message + ")");
    }
    const auto user = std::ranges::find(*users, name, &companion::DemoUser::name);
    if (user == users->end()) return platform::failure("UserError", 2, "unknown user \"" + name + "\"");
    return user->session;
}

Result<void> printOperations() {
    std::string lines;
    for (const std::string& line : companion::listOperations()) lines += line + "\n";
    return printText(lines);
}

}  // namespace

Result<void> callOperation(const ProcessOptions& process, const std::vector<std::string>& words) {
    if (words.empty()) return printOperations();
    auto resolved = TRY(resolvedOptions(process));
    resolved.widgetCenter = std::make_shared<platform::HostWidgetCenter>(resolved.dataDirectory);
    const platform::Runtime runtime(std::move(resolved));
    runtime.makeCurrent();
    companion::PhoneApp app(runtime);
    return words == std::vector<std::string>{"-"} ? callLines(app, std::cin) : callWords(app, words);
}

Result<void> signInUser(const ProcessOptions& process, const std::string& name) {
    auto resolved = TRY(resolvedOptions(process));
    const std::filesystem::path socket = platform::hostSocketPath(resolved.dataDirectory);
    if (isHostRunning(socket)) return askToSignIn(socket, name == "none" ? "" : name);
    const platform::Runtime runtime(std::move(resolved));
    std::optional<companion::Session> session;
    if (name != "none") {
        auto found = TRY(sessionOf(name, runtime));
        session = std::move(found);
    }
    return companion::PhoneApp(runtime).signIn(session);
}

Result<void> explainReloads(const ProcessOptions& process, const std::string& kind) {
    const auto resolved = TRY(resolvedOptions(process));
    Result<std::string> answer = askWhy(platform::hostSocketPath(resolved.dataDirectory), kind);
    if (!answer) {
        const Result<void> known =
            ExtensionProcess(extensionOptions(process, resolved))
                .gallery(galleryLimit)
                .and_then([&](const auto& gallery) { return checkKind(gallery, kind); });
        return tl::unexpected(known ? answer.error() : known.error());
    }
    if (!answer->ends_with('\n')) *answer += '\n';
    return printLines(*answer);
}

Result<void> becomeDemo(int port) {
    const std::string program = platform::programDirectory() / "brightledger-demo";
    execl(program.c_str(), program.c_str(), "--port", std::to_string(port).c_str(), nullptr);
    return platform::failure("FileError", errno,
                             "cannot start " + program + ": " + std::generic_category().message(errno));
}

}  // namespace host
