// Lays out and draws a card with warm caches. whole_processes.py measures what the first drawing costs.

#include <benchmark/benchmark.h>
#include <string>
#include "extension/widgets/perch/model/perch_timeline_entry.h"
#include "extension/widgets/perch/views/perch_widget_entry_view.h"
#include "host/layout/layout.h"
#include "host/paint/painter.h"
#include "tests/support/test_runtime.h"

namespace {

using namespace extension;
using platform::WidgetFamily;

platform::View card(WidgetFamily family, const platform::Runtime& runtime) {
    std::vector<PerchMultiAssetsVM> rows;
    for (int i = 0; i < 8; ++i) {
        PerchMultiAssetsVM row;
        row.title = "NIFTY " + std::to_string(i);
        row.currentPrice = "24,5" + std::to_string(i) + "1.05";
        row.changeWithPercent = "-12.50 (-0.30%)";
        row.exchgWithTime = "NSE: 15:30";
        row.isProfit = i % 2 == 0;
        row.deeplinkURL = "brightledgerwidget://indices/?id=9";
        rows.push_back(std::move(row));
    }
    const PerchTimelineEntry entry(runtime, std::move(rows));
    return PerchWidgetEntryView{entry}
        .body({.widgetFamily = family})
        .containerBackground(platform::ColorFill(entry.backgroundColor));
}

host::LayoutOptions optionsFor(WidgetFamily family) {
    return {.size = platform::Screen().widgetSize(family),
            .osVersion = 18,
            .kind = "PerchWidget",
            .family = std::string(platform::description(family)),
            .isRedacted = false};
}

void layoutCard(benchmark::State& state) {
    const tests::TestRuntime runtime;
    const auto family = static_cast<WidgetFamily>(state.range(0));
    const auto painter = *host::Painter::make(BRIGHTLEDGER_RESOURCES);
    const platform::View view = card(family, runtime);
    for (auto _ : state) {
        auto list = host::makeDisplayList(view, optionsFor(family), painter->measurer(3));
        benchmark::DoNotOptimize(list);
    }
}

void paintAndEncodeCard(benchmark::State& state) {
    const tests::TestRuntime runtime;
    const auto family = static_cast<WidgetFamily>(state.range(0));
    const auto painter = *host::Painter::make(BRIGHTLEDGER_RESOURCES);
    const auto list = host::makeDisplayList(card(family, runtime), optionsFor(family), painter->measurer(3));
    double paintMs = 0.0;
    double encodeMs = 0.0;
    for (auto _ : state) {
        host::Painter::Timing timing;
        auto png = painter->png(list, 3, &timing);
        benchmark::DoNotOptimize(png);
        paintMs += timing.paintMs;
        encodeMs += timing.encodeMs;
    }
    state.counters["paintMs"] = benchmark::Counter(paintMs, benchmark::Counter::kAvgIterations);
    state.counters["pngMs"] = benchmark::Counter(encodeMs, benchmark::Counter::kAvgIterations);
}

/// Small, medium, large.
void everyFamily(benchmark::internal::Benchmark* benchmark) { benchmark->DenseRange(0, 2); }

BENCHMARK(layoutCard)->Apply(everyFamily)->Unit(benchmark::kMicrosecond);
BENCHMARK(paintAndEncodeCard)->Apply(everyFamily)->Unit(benchmark::kMillisecond);

}  // namespace
