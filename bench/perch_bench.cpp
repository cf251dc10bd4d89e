// Decodes quotes and makes rows, for lists of three sizes. The time must grow linearly.

#include <benchmark/benchmark.h>
#include <string>
#include <vector>
#include "extension/widgets/perch/model/perch_timeline_entry.h"
#include "extension/widgets/perch/model/selected_assets.h"
#include "extension/widgets/perch/proto/market_package.h"
#include "tests/support/test_runtime.h"

namespace {

using namespace extension;

MarketPackage_MultiAssetInfo quotes(std::int64_t count) {
    MarketPackage_MultiAssetInfo info;
    for (std::int64_t i = 0; i < count; ++i) {
        MarketPackage_MultiAssetDataListItem& quote = *info.mutable_data()->add_datalist();
        const std::string number = std::to_string(i);
        quote.set_assetid("asset" + number);
        quote.set_symbol("in;" + number);
        quote.set_shortname("Asset " + number);
        quote.set_currentprice(std::to_string(1000 + i) + ".455");
        quote.set_change("-12.5");
        quote.set_perchange("-0.3");
        quote.set_direction(i % 2 == 0 ? "1" : "-1");
        quote.set_disptime("15:30");
        quote.set_priceidentifier("in;" + number + "-II");
    }
    return info;
}

std::vector<DefaultMultiAssetsVM> assets(std::int64_t count) {
    std::vector<DefaultMultiAssetsVM> list;
    list.reserve(static_cast<std::size_t>(count));
    for (std::int64_t i = 0; i < count; ++i) {
        DefaultMultiAssetsVM asset;
        asset.id = "asset" + std::to_string(i);
        asset.type = "stock";
        asset.exchg = "nse";
        asset.title = "Asset " + std::to_string(i);
        asset.priceIdentifier = "in;" + std::to_string(i) + "-II";
        list.push_back(std::move(asset));
    }
    return list;
}

void decode(benchmark::State& state) {
    const std::string bytes = quotes(state.range(0)).SerializeAsString();
    for (auto _ : state) {
        auto info = decodeMultiAssetInfo(bytes);
        benchmark::DoNotOptimize(info);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetComplexityN(state.range(0));
}

void format(benchmark::State& state) {
    const tests::TestRuntime runtime;
    for (auto _ : state) {
        std::string text = formatNumber("1234567.891", runtime);
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations());
}

void matchAndMakeRows(benchmark::State& state) {
    const tests::TestRuntime runtime;
    const MarketPackage_MultiAssetInfo info = quotes(state.range(0));
    const std::vector<DefaultMultiAssetsVM> list = assets(state.range(0));
    for (auto _ : state) {
        auto rows = makeRows(info.data().datalist(), list, runtime);
        benchmark::DoNotOptimize(rows);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetComplexityN(state.range(0));
}

BENCHMARK(decode)->Arg(5)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMicrosecond)->Complexity(benchmark::oN);
BENCHMARK(format);
BENCHMARK(matchAndMakeRows)
    ->Arg(5)
    ->Arg(1'000)
    ->Arg(100'000)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity(benchmark::oN);

}  // namespace
