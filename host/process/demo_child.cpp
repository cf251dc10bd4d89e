#include "host/process/demo_child.h"
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <array>
#include <csignal>

namespace host {

namespace {

/// In the child: nothing but what is safe after a fork.
[[noreturn]] void becomeDemo(const char* program, int output, pid_t parent) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(127);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::dup2(output, STDOUT_FILENO);
    ::execl(program, program, static_cast<char*>(nullptr));
    ::_exit(127);
}

std::string readLine(int descriptor) {
    std::string line;
    pollfd readable{descriptor, POLLIN, 0};
    char byte = 0;
    while (::poll(&readable, 1, 5000) > 0 && ::read(descriptor, &byte, 1) == 1 && byte != '\n') line += byte;
    return byte == '\n' ? line : "";
}

void end(pid_t process) {
    ::kill(process, SIGKILL);
    while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
    }
}

}  // namespace

platform::Result<std::unique_ptr<DemoChild>> DemoChild::start(const std::filesystem::path& program) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return platform::failure("DemoError", 1, "no pipe to be had");
    const pid_t parent = ::getpid();
    const pid_t process = ::fork();
    if (process == 0) becomeDemo(program.c_str(), ends[1], parent);
    ::close(ends[1]);
    std::string origin = process > 0 ? readLine(ends[0]) : "";
    ::close(ends[0]);
    if (!origin.empty()) return std::unique_ptr<DemoChild>(new DemoChild(process, std::move(origin)));
    if (process > 0) end(process);
    return platform::failure("DemoError", 2, "the demo service " + program.string() + " does not start");
}

DemoChild::~DemoChild() { end(process_); }

}  // namespace host
