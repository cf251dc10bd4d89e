#include "host/process/demo_child.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include "host/process/spawn.h"
#include "platform/base/file_descriptor.h"

namespace host {
namespace {

std::string readLine(const platform::FileDescriptor& output) {
    std::string line;
    pollfd readable{output.number(), POLLIN, 0};
    char byte = 0;
    while (poll(&readable, 1, 5000) > 0 && read(output.number(), &byte, 1) == 1 && byte != '\n') line += byte;
    return byte == '\n' ? line : "";
}

}  // namespace

platform::Result<std::unique_ptr<DemoChild>> DemoChild::start(const std::filesystem::path& program) {
    const std::string name = "the demo service " + program.string() + " ";
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        return platform::failure("DemoError", 1, name + "cannot be started: too many open files");
    const platform::FileDescriptor output(ends[0]);
    platform::FileDescriptor childOutput = platform::aboveStandard(ends[1]);
    const auto process =
        spawn({.program = program, .arguments = {}, .messages = childOutput.number(), .log = STDERR_FILENO});
    if (!process) return platform::failure("DemoError", 1, name + process.error().message);
    std::unique_ptr<DemoChild> demo(new DemoChild(*process));
    childOutput.reset();
    demo->origin_ = readLine(output);
    if (demo->origin_.empty()) return platform::failure("DemoError", 2, name + "does not answer");
    return demo;
}

DemoChild::~DemoChild() {
    kill(process_, SIGKILL);
    while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
    }
}

}  // namespace host
