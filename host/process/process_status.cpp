#include "host/process/process_status.h"

#include <charconv>
#include <fstream>
#include <string>
#include <string_view>

namespace host {
namespace {

/// Of a line such as "VmHWM:	    9284 kB".
long kibibytes(std::string_view line) {
    line.remove_prefix(line.find_first_of("0123456789"));
    long value = 0;
    std::from_chars(line.data(), line.data() + line.size(), value);
    return value;
}

}  // namespace

ProcessMemory memoryOf(int processId) {
    ProcessMemory memory;
    std::ifstream status("/proc/" + std::to_string(processId) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) memory.peakResident = kibibytes(line);
        if (line.starts_with("RssAnon:")) memory.anonymous = kibibytes(line);
    }
    return memory;
}

}  // namespace host
