// brightledger_simulation [--seed N] [--days N] [--each N]: devices live through days in virtual time, ten
// days each, and the rules of the home screen are checked after every step.

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include "platform/base/ascii.h"
#include "tests/simulation/device.h"
#include "tests/simulation/faulty_disk.h"
#include "tests/support/temporary_directory.h"

namespace {

struct Options {
    std::uint64_t seed = 1;
    int days = 40;
    int daysOfADevice = 10;
};

bool takeOptions(int count, char** words, Options& options) {
    for (int i = 1; i + 1 < count; i += 2) {
        const auto number = platform::parsedNumber<std::uint64_t>(words[i + 1]);
        if (!number) return false;
        if (std::strcmp(words[i], "--seed") == 0) {
            options.seed = *number;
        } else if (*number == 0 || *number >= 1'000'000'000) {
            return false;
        } else if (std::strcmp(words[i], "--days") == 0) {
            options.days = static_cast<int>(*number);
        } else if (std::strcmp(words[i], "--each") == 0) {
            options.daysOfADevice = static_cast<int>(*number);
        } else {
            return false;
        }
    }
    return count % 2 == 1;
}

/// Prints what a device found; whether it kept all rules.
bool liveAndPrint(std::uint64_t seed, int days) {
    const tests::TemporaryDirectory folder;
    const simulation::Findings found = simulation::live(seed, days, folder.path());
    std::printf("seed %llu: %d days, %llu steps, fingerprint %016llx, bytes in use %zu to %zu, %s\n",
                static_cast<unsigned long long>(seed), days, static_cast<unsigned long long>(found.steps),
                static_cast<unsigned long long>(found.fingerprint), found.bytesOnDayTwo, found.bytesOnLastDay,
                found.broken.empty() ? "nothing found" : found.broken.c_str());
    if (!found.broken.empty()) {
        for (const std::string& event : found.lastEvents) std::printf("    %s\n", event.c_str());
        std::printf("  again: --seed %llu --days %d --each %d\n", static_cast<unsigned long long>(seed), days,
                    days);
    }
    std::fflush(stdout);
    return found.broken.empty();
}

}  // namespace

int main(int count, char** words) {
    Options options;
    if (!takeOptions(count, words, options)) {
        std::fprintf(stderr, "usage: brightledger_simulation [--seed N] [--days N] [--each N]\n");
        return 1;
    }
    simulation::installFaultyDisk();
    // One device after the other in each of a few processes: a device knows one thread only.
    const int devices = (options.days + options.daysOfADevice - 1) / options.daysOfADevice;
    const int workers = std::min<int>(devices, static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN)));
    const auto start = std::chrono::steady_clock::now();
    for (int worker = 0; worker < workers; ++worker) {
        if (fork() != 0) continue;
        bool isSound = true;
        for (int device = worker; device < devices && isSound; device += workers) {
            const int days = std::min(options.daysOfADevice, options.days - device * options.daysOfADevice);
            isSound = liveAndPrint(options.seed + static_cast<std::uint64_t>(device), days);
        }
        std::_Exit(isSound ? 0 : 1);
    }
    int findings = 0;
    for (int status = 0; wait(&status) > 0;) findings += status == 0 ? 0 : 1;
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("%d days in %.1f s (%.0f an hour), %d findings\n", options.days, seconds,
                options.days / seconds * 3600, findings);
    return findings == 0 ? 0 : 1;
}
