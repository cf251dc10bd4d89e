#include "host/web/run.h"
#include <poll.h>
#include <unistd.h>
#include <climits>
#include <csignal>
#include <iostream>
#include <memory>
#include <string>
#include "host/home/home_screen.h"
#include "host/home/host_socket.h"
#include "host/process/demo_child.h"
#include "host/process/program_options.h"
#include "host/web/page_server.h"
#include "platform/base/program_start.h"
#include "platform/wire/host_channel.h"

namespace host {
namespace {

/// To standard error. Never waits: lines that nobody reads in time are dropped.
void writeLogLine(std::string_view line) {
    std::string text(line.substr(0, PIPE_BUF - 1));
    text += '\n';
    pollfd reader{.fd = STDERR_FILENO, .events = POLLOUT, .revents = 0};
    if (::poll(&reader, 1, 0) != 1 || (reader.revents & POLLOUT) == 0) return;
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
}

void waitForEnd(const sigset_t& signals, std::chrono::nanoseconds duration) {
    using std::chrono::steady_clock;
    const auto start = steady_clock::now();
    for (auto rest = duration; rest.count() > 0; rest = duration - (steady_clock::now() - start)) {
        const timespec limit{rest.count() / 1'000'000'000, rest.count() % 1'000'000'000};
        if (::sigtimedwait(&signals, nullptr, &limit) > 0) return;
    }
}

}  // namespace

platform::Result<void> runHomeScreen(const RunOptions& options) {
    const sigset_t signals = platform::blockEndingSignals();
    const std::filesystem::path resources = platform::resourcesDirectory();
    auto runtime = TRY(resolvedOptions(options.process));

    std::unique_ptr<DemoChild> demo;
    if (options.isDemo) {
        auto started = TRY(DemoChild::start(platform::programDirectory() / "brightledger-demo"));
        demo = std::move(started);
    }

    // First, since it makes the folder and finds out whether this home screen is running already.
    const std::filesystem::path socketPath = platform::hostSocketPath(runtime.dataDirectory);
    HomeScreen* answering = nullptr;
    std::mutex mutex;
    auto socket =
        HostSocket::open(socketPath, [&](std::string_view question) -> platform::Result<std::string> {
            const std::lock_guard lock(mutex);
            if (answering == nullptr)
                return platform::failure("WidgetCenterError", 1, "the home screen is starting or ending");
            return answerQuestion(*answering, question);
        });
    if (!socket) return tl::unexpected(socket.error());

    platform::ProcessOptions child = options.process;
    // The inspector shows the log, whoever reads standard error.
    child.isVerbose = true;
    child.infoPlist = std::filesystem::path(socketPath).replace_extension(".plist").string();
    HomeScreenOptions homeOptions{.runtime = runtime,
                                  .extension = extensionOptions(child, runtime),
                                  .infoPlist = *child.infoPlist,
                                  .resources = resources,
                                  .demoOrigin = demo ? std::optional(demo->origin()) : std::nullopt};
    if (options.process.isVerbose) homeOptions.log = writeLogLine;
    auto home = TRY(HomeScreen::start(std::move(homeOptions)));
    auto page = TRY(PageServer::start(*home, options.port, resources / "web"));
    {
        const std::lock_guard lock(mutex);
        answering = home.get();
    }
    std::cout << page->address() << '\n' << std::flush;
    waitForEnd(signals, options.duration);
    // The page waits for its handlers, and they wait for the extension.
    home->stop();
    const std::lock_guard lock(mutex);
    answering = nullptr;
    return {};
}

}  // namespace host
