#include "platform/base/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>
#include <initializer_list>

namespace platform {

void fillStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) != -1) continue;
        // The lowest free number is this one. Nobody can write into a file that is open for reading.
        ::open("/dev/null", descriptor == STDERR_FILENO ? O_WRONLY : O_RDONLY);
    }
}

}  // namespace platform
