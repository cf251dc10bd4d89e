// The time of opening, reading and writing the settings store.

#include <benchmark/benchmark.h>
#include "platform/settings/user_defaults.h"
#include "tests/support/temporary_directory.h"

namespace {

using platform::UserDefaults;

void storeOpen(benchmark::State& state) {
    const tests::TemporaryDirectory directory;
    const auto keepsStoreOpen = UserDefaults::open(directory.path(), "bench");
    for (auto _ : state) {
        auto defaults = UserDefaults::open(directory.path(), "bench");
        benchmark::DoNotOptimize(defaults);
    }
}

void storeRead(benchmark::State& state) {
    const tests::TemporaryDirectory directory;
    const auto defaults = *UserDefaults::open(directory.path(), "bench");
    if (!defaults->set("key", "value")) state.SkipWithError("cannot write to the store");
    for (auto _ : state) {
        auto value = defaults->object("key");
        benchmark::DoNotOptimize(value);
    }
}

void storeWrite(benchmark::State& state) {
    const tests::TemporaryDirectory directory;
    const auto defaults = *UserDefaults::open(directory.path(), "bench");
    int number = 0;
    for (auto _ : state) {
        if (!defaults->set("key", ++number)) state.SkipWithError("cannot write to the store");
    }
}

BENCHMARK(storeOpen)->Unit(benchmark::kMicrosecond);
BENCHMARK(storeRead)->Unit(benchmark::kMicrosecond);
BENCHMARK(storeWrite)->Unit(benchmark::kMicrosecond);

}  // namespace
