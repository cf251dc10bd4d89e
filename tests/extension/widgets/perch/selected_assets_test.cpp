#include "extension/widgets/perch/model/selected_assets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <fstream>
#include <string>
#include <vector>
#include "extension/app/settings/store_keys.h"
#include "tests/extension/shared_settings.h"
#include "tests/support/test_runtime.h"

namespace extension {
namespace {

using platform::PropertyList;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::TestRuntime;

PropertyList records(const std::vector<std::string>& ids) {
    PropertyList::Array list;
    for (const auto& id : ids) list.emplace_back(PropertyList::Dictionary{{"id", id}});
    return list;
}

std::vector<std::string> loadedIds(const TestRuntime& runtime) {
    std::vector<std::string> ids;
    for (const auto& asset : loadSelectedAssets(runtime).defaultAssetsList) ids.push_back(asset.id);
    return ids;
}

TEST(FirstRun, ChoosesThreeIndicesInTheirOrder) {
    const TestRuntime runtime;
    seedDefaultsAtFirstRun(runtime);

    const auto index = [](const char* id, const char* exchange, const std::string& symbol,
                          const char* title) {
        return DefaultMultiAssetsVM{id, exchange, "indices", symbol, "", title,         "",
                                    "", "",       "",        "",     "", symbol + "-II"};
    };
    EXPECT_THAT(loadSelectedAssets(runtime).defaultAssetsList,
                ElementsAre(index("4", "bse", "in;SEN", "SENSEX"), index("9", "nse", "in;NSX", "NIFTY 50"),
                            index("23", "nse", "in;nbx", "NIFTY BANK")));
    EXPECT_EQ(stored(runtime, "firstTimeAppInstalledForWidget"), PropertyList(true));
    EXPECT_EQ(stored(runtime, "INDICES_WIDGET")->array()->front().dictionary()->size(), 7U);
}

TEST(FirstRun, ReplacesIndicesThatWereThereBefore) {
    const TestRuntime runtime;
    store(runtime, "INDICES_WIDGET", records({"99"}));
    seedDefaultsAtFirstRun(runtime);
    EXPECT_THAT(loadedIds(runtime), ElementsAre("4", "9", "23"));
}

TEST(FirstRun, HappensOnceWhateverTheMarkHolds) {
    const PropertyList marks[] = {false, true, "", 0, PropertyList::Array{}};
    for (const PropertyList& mark : marks) {
        const TestRuntime runtime;
        store(runtime, "firstTimeAppInstalledForWidget", mark);
        store(runtime, "INDICES_WIDGET", PropertyList::Array{});
        seedDefaultsAtFirstRun(runtime);
        EXPECT_THAT(loadedIds(runtime), IsEmpty());
        EXPECT_EQ(stored(runtime, "firstTimeAppInstalledForWidget"), mark);
    }
}

TEST(FirstRun, LeavesADamagedStoreAsItIs) {
    const tests::TemporaryDirectory directory;
    const auto file = platform::storeFile(directory.path(), keys::GROUP_TODAY_EXTENSION);
    const std::string damaged(8192, 'x');
    std::ofstream(file) << damaged;
    const TestRuntime runtime{{.dataDirectory = directory.path()}};

    seedDefaultsAtFirstRun(runtime);

    EXPECT_THAT(loadSelectedAssets(runtime).defaultAssetsList, IsEmpty());
    std::ifstream input(file);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(input), {}), damaged);
}

TEST(ChosenAssets, ComeByKindFirstAndThenInStoredOrder) {
    const TestRuntime runtime;
    store(runtime, "CRYPTO_WIDGET", records({"c1"}));
    store(runtime, "STOCK_WIDGET", records({"s2", "s1", "s2"}));
    store(runtime, "FUTURE_WIDGET",
          PropertyList::Array{PropertyList::Dictionary{{"id", "f1"}, {"expiryDate", "2026-12-31"}}});
    store(runtime, "INDICES_WIDGET", records({"i1"}));
    EXPECT_THAT(loadedIds(runtime), ElementsAre("i1", "s2", "s1", "s2", "f1", "c1"));
}

TEST(ChosenAssets, OfAnotherShapeContributeNothingAndStay) {
    const PropertyList shapes[] = {"stocks", 7, PropertyList::Dictionary{{"id", "s1"}},
                                   PropertyList::Array{PropertyList::Dictionary{{"id", "s1"}}, "s2"}};
    for (const PropertyList& shape : shapes) {
        const TestRuntime runtime;
        store(runtime, "INDICES_WIDGET", records({"i1"}));
        store(runtime, "STOCK_WIDGET", shape);
        store(runtime, "FUTURE_WIDGET", shape);
        EXPECT_THAT(loadedIds(runtime), ElementsAre("i1"));
        EXPECT_EQ(stored(runtime, "FUTURE_WIDGET"), shape);
    }
}

TEST(ChosenAssets, LoseTheFuturesThatHaveExpired) {
    const TestRuntime runtime{{.now = "2026-11-22T06:30:00.000Z"}};
    const auto future = [](const char* id, const char* expiry) {
        return PropertyList::Dictionary{{"id", id}, {"expiryDate", expiry}};
    };
    store(runtime, "FUTURE_WIDGET",
          PropertyList::Array{future("today", "2026-11-22"), future("tomorrow", "2026-11-23")});
    EXPECT_THAT(loadedIds(runtime), ElementsAre("tomorrow"));
    EXPECT_EQ(stored(runtime, "FUTURE_WIDGET")->array()->size(), 1U);
}

TEST(AssetRecord, IsReadFieldByFieldInTheCaseThatLinksNeed) {
    const PropertyList::Dictionary record{
        {"id", "a"},        {"exchg", "NSE"},         {"type", "Future"},           {"symbol", "Sym"},
        {"market", "F&O"},  {"title", "Title"},       {"instrument", "futidx"},     {"ind_id", "Ind"},
        {"sc_id", "Sc"},    {"option_type", "Ce"},    {"expiryDate", "2026-12-31"}, {"strike_price", "100"},
        {"link_flag", "0"}, {"priceIdentifier", "Pi"}};
    const DefaultMultiAssetsVM asset = makeAsset(record);
    EXPECT_EQ(asset, (DefaultMultiAssetsVM{"a", "nse", "future", "Sym", "f&o", "Title", "FUTIDX", "Ind", "Sc",
                                           "2026-12-31", "Ce", "100", "Pi", false}));
    EXPECT_EQ(makeAsset({{"id", 4}, {"title", true}, {"exchg", 1.5}}), DefaultMultiAssetsVM{});
    EXPECT_EQ(makeAsset({{"exchg", "ÉCOLE"}}).exchg, "école");
}

TEST(AssetRecord, HasItsLinkFlagOffForTheText0Only) {
    EXPECT_FALSE(makeAsset({{"link_flag", "0"}}).linkFlag);
    for (const PropertyList& flag :
         {PropertyList(0), PropertyList(false), PropertyList(""), PropertyList("00")})
        EXPECT_TRUE(makeAsset({{"link_flag", flag}}).linkFlag);
}

}  // namespace
}  // namespace extension
