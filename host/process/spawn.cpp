#include "host/process/spawn.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include "platform/base/file_descriptor.h"

namespace host {
namespace {

/// The child's environment: empty, except for the options of a sanitizer that it is built with.
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
    result.reserve(texts.size() + 1);
    for (std::string& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

constexpr rlim_t largestFile = 256U << 20;

void limit(__rlimit_resource_t resource, rlim_t most) {
    const rlimit both{most, most};
    setrlimit(resource, &both);
}

/// Between fork and exec nothing may allocate or lock: locks that other threads held stay locked here.
[[noreturn]] void execInChild(const SpawnOptions& options, pid_t parent, int trouble, char* const* arguments,
                              char* const* environment) {
    setpgid(0, 0);
    for (int signal = 1; signal < NSIG; ++signal) std::signal(signal, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(127);
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_FSIZE, largestFile);
    if (options.addressSpace != 0) limit(RLIMIT_AS, options.addressSpace);
    dup2(options.messages, STDIN_FILENO);
    dup2(options.messages, STDOUT_FILENO);
    dup2(options.log, STDERR_FILENO);
    close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    execve(arguments[0], arguments, environment);
    const int error = errno;
    [[maybe_unused]] const ssize_t written = write(trouble, &error, sizeof error);
    _exit(127);
}

tl::unexpected<platform::Error> cannotStart(int error) {
    return platform::failure("ProcessError", error,
                             "cannot be started: " + std::generic_category().message(error));
}

/// The error that the child wrote; 0 when it has become the program, since that closes the pipe.
int readError(const platform::FileDescriptor& trouble) {
    int error = 0;
    while (read(trouble.number(), &error, sizeof error) < 0 && errno == EINTR) {
    }
    return error;
}

}  // namespace

platform::Result<int> spawn(const SpawnOptions& options) {
    // Whatever allocates must come before the fork.
    std::vector<std::string> argumentTexts{options.program.string()};
    argumentTexts.insert(argumentTexts.end(), options.arguments.begin(), options.arguments.end());
    std::vector<std::string> environmentTexts = cleanEnvironment();
    const std::vector<char*> arguments = pointers(argumentTexts);
    const std::vector<char*> environment = pointers(environmentTexts);

    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return cannotStart(errno);
    const platform::FileDescriptor trouble(ends[0]);
    platform::FileDescriptor errorPipe = platform::aboveStandard(ends[1]);
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) execInChild(options, parent, errorPipe.number(), arguments.data(), environment.data());
    if (child < 0) return cannotStart(errno);
    errorPipe.reset();
    const int error = readError(trouble);
    if (error == 0) return child;
    waitpid(child, nullptr, 0);
    return cannotStart(error);
}

}  // namespace host
