#include "platform/base/program_start.h"

#include <fcntl.h>
#include <unistd.h>
#include <initializer_list>

namespace platform {

void fillStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) != -1) continue;
        // open() takes the lowest free number, which is this one. Standard output is opened for reading, so
        // that writing to it fails.
        ::open("/dev/null", descriptor == STDERR_FILENO ? O_WRONLY : O_RDONLY);
    }
}

sigset_t blockEndingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

}  // namespace platform
