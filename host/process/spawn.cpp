#include "host/process/spawn.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>

namespace host {
namespace {

/// What the child sees of the environment: the ways of a sanitizer, when it has one.
std::vector<std::string> cleanEnvironment() {
    std::vector<std::string> environment;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    for (const char* name : {"ASAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS"}) {
        if (const char* value = std::getenv(name)) environment.push_back(std::string(name) + "=" + value);
    }
#endif
    return environment;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

/// Between fork and exec nothing may allocate or lock: other threads' locks stay locked here.
[[noreturn]] void becomeProgram(const SpawnOptions& options, pid_t parent, char* const* arguments,
                                char* const* environment) {
    setpgid(0, 0);
    for (int signal = 1; signal < NSIG; ++signal) std::signal(signal, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(127);
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    dup2(options.messages, STDIN_FILENO);
    dup2(options.messages, STDOUT_FILENO);
    dup2(options.log, STDERR_FILENO);
    close_range(STDERR_FILENO + 1, ~0U, 0);
    execve(arguments[0], arguments, environment);
    _exit(127);
}

}  // namespace

platform::Result<int> spawn(const SpawnOptions& options) {
    // Everything that allocates comes before the fork.
    std::vector<std::string> argumentTexts{options.program.string()};
    argumentTexts.insert(argumentTexts.end(), options.arguments.begin(), options.arguments.end());
    std::vector<std::string> environmentTexts = cleanEnvironment();
    const std::vector<char*> arguments = pointers(argumentTexts);
    const std::vector<char*> environment = pointers(environmentTexts);

    if (access(argumentTexts.front().c_str(), X_OK) != 0) {
        return platform::failure("ExtensionError", errno,
                                 "the extension " + argumentTexts.front() +
                                     " cannot be started: " + std::generic_category().message(errno));
    }
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) becomeProgram(options, parent, arguments.data(), environment.data());
    if (child < 0) {
        return platform::failure("ExtensionError", errno,
                                 "no process can be started: " + std::generic_category().message(errno));
    }
    return child;
}

}  // namespace host
