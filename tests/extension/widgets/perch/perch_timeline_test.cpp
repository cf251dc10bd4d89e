#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <utility>
#include <vector>
#include "extension/app/settings/store_keys.h"
#include "extension/widgets/perch/timeline/perch_timeline_provider.h"
#include "platform/widget/widget.h"
#include "tests/extension/shared_settings.h"
#include "tests/support/served_runtime.h"
#include "tests/support/waiting.h"

namespace extension {
namespace {

using namespace std::chrono_literals;
using platform::PropertyList;
using platform::TimelineReloadPolicy;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::Answer;
using tests::ServedRuntime;
using tests::snapshotOf;
using tests::TestRuntime;
using tests::timelineOf;

static_assert(platform::TimelineProvider<PerchTimelineProvider>);

std::string quotes(const std::vector<std::pair<std::string, std::string>>& prices) {
    MarketPackage_MultiAssetInfo info;
    for (const auto& [assetId, price] : prices) {
        auto& quote = *info.mutable_data()->add_datalist();
        quote.set_assetid(assetId);
        quote.set_currentprice(price);
        quote.set_direction("1");
    }
    return info.SerializeAsString();
}

std::string threeQuotes() { return quotes({{"23", "52345.6"}, {"4", "80123.45"}, {"9", "24350.4"}}); }

void chooseStocks(const TestRuntime& runtime, const std::vector<std::string>& priceIdentifiers) {
    PropertyList::Array stocks;
    for (const std::string& identifier : priceIdentifiers)
        stocks.emplace_back(PropertyList::Dictionary{{"id", "4"}, {"priceIdentifier", identifier}});
    store(runtime, keys::firstTimeAppInstalledForWidget, true);
    store(runtime, keys::stockWidget, stocks);
}

std::vector<std::string> titlesAndPrices(const PerchTimelineEntry& entry) {
    std::vector<std::string> texts;
    for (const auto& row : entry.multiAssetDataListItem.value())
        texts.push_back(row.title + " " + row.currentPrice);
    return texts;
}

TEST(PerchTimeline, AFreshStoreAsksOnceForTheThreeIndicesAndAgainIn30Seconds) {
    const ServedRuntime phone({.body = threeQuotes()});

    const auto timeline = timelineOf(PerchTimelineProvider{phone.runtime});

    ASSERT_EQ(timeline.entries.size(), 1U);
    EXPECT_THAT(titlesAndPrices(timeline.entries[0]),
                ElementsAre("SENSEX 80,123.45", "NIFTY 50 24,350.40", "NIFTY BANK 52,345.60"));
    EXPECT_EQ(timeline.entries[0].date, phone.runtime.now());
    EXPECT_EQ(timeline.policy, TimelineReloadPolicy::after(phone.runtime.now() + 30s));
    ASSERT_EQ(phone.service.requests().size(), 1U);
    EXPECT_EQ(phone.service.requests()[0].method, "GET");
    EXPECT_EQ(phone.service.requests()[0].target,
              "/swiftapi/v1/markets/multi-asset-info?asset_ids=in;SEN-II,in;NSX-II,in;nbx-II");
    EXPECT_TRUE(
        phone.runtime.logged("Refresh API - " + phone.service.origin() + phone.service.requests()[0].target));
}

TEST(PerchTimeline, IsDueAgain30SecondsAfterTheQuestionHoweverLateTheAnswer) {
    const ServedRuntime phone({.body = threeQuotes(), .delay = 300ms});
    const auto asked = phone.runtime.now();
    const auto timeline = timelineOf(PerchTimelineProvider{phone.runtime}, [&] {
        EXPECT_TRUE(phone.service.waitForRequests(1));
        phone.runtime.clock().set(asked + 20s, 0.0);
    });
    EXPECT_EQ(timeline.entries.at(0).date, asked + 20s);
    EXPECT_EQ(timeline.policy, TimelineReloadPolicy::after(asked + 30s));
}

TEST(PerchTimeline, AnyFaultOfTheServiceIsAnEntryWithoutRows) {
    const std::pair<const char*, Answer> faults[] = {
        {"server error, however good its body", {.status = 500, .body = threeQuotes()}},
        {"cut message", {.body = threeQuotes().substr(0, 20)}},
        {"no quotes", {.body = std::string("\x12\0", 2)}},
        {"quotes of other assets", {.body = quotes({{"77", "1"}})}},
        {"reset connection", {.body = threeQuotes(), .ending = Answer::Ending::reset}},
    };
    for (const auto& [what, answer] : faults) {
        const ServedRuntime phone(answer);
        PerchTimelineProvider provider{phone.runtime};

        const auto timeline = timelineOf(provider);
        ASSERT_EQ(timeline.entries.size(), 1U) << what;
        ASSERT_TRUE(timeline.entries[0].multiAssetDataListItem) << what;
        EXPECT_THAT(*timeline.entries[0].multiAssetDataListItem, IsEmpty()) << what;
        EXPECT_EQ(timeline.policy, TimelineReloadPolicy::after(phone.runtime.now() + 30s)) << what;

        const auto snapshot = snapshotOf(provider);
        ASSERT_TRUE(snapshot.multiAssetDataListItem) << what;
        EXPECT_THAT(*snapshot.multiAssetDataListItem, IsEmpty()) << what;
    }
}

TEST(PerchTimeline, WithoutIdentifiersNothingIsAskedAndTheAnswerComesAtOnce) {
    const ServedRuntime phone;
    chooseStocks(phone.runtime, {"", ""});
    PerchTimelineProvider provider{phone.runtime};

    tests::Awaited<platform::Timeline<PerchTimelineEntry>> timeline;
    provider.getTimeline({}, timeline.taker());
    ASSERT_TRUE(timeline.isThere());
    const auto answer = timeline.value();
    EXPECT_THAT(*answer.entries.at(0).multiAssetDataListItem, IsEmpty());
    EXPECT_EQ(answer.policy, TimelineReloadPolicy::after(phone.runtime.now() + 30s));

    tests::Awaited<PerchTimelineEntry> snapshot;
    provider.getSnapshot({}, snapshot.taker());
    EXPECT_TRUE(snapshot.isThere());
    EXPECT_THAT(provider.placeholder({}).multiAssetDataListItem.value(), IsEmpty());
    EXPECT_THAT(phone.service.requests(), IsEmpty());
}

TEST(PerchTimeline, IdentifiersAreSentAsTheyStandTwiceWhenChosenTwiceAndNoneForNone) {
    const ServedRuntime phone({.body = threeQuotes()});
    chooseStocks(phone.runtime, {"b;1", "", "a", "b;1"});

    const auto snapshot = snapshotOf(PerchTimelineProvider{phone.runtime});
    EXPECT_EQ(phone.service.requests().at(0).target,
              "/swiftapi/v1/markets/multi-asset-info?asset_ids=b;1,a,b;1");
    // The asset that nobody was asked about has a quote all the same, under its id.
    EXPECT_EQ(snapshot.multiAssetDataListItem->size(), 4U);
}

TEST(PerchTimeline, AnIdentifierThatMakesNoAddressIsAnEntryWithoutRowsAndNoRequest) {
    const ServedRuntime phone;
    chooseStocks(phone.runtime, {"a b"});
    PerchTimelineProvider provider{phone.runtime};
    EXPECT_THAT(*snapshotOf(provider).multiAssetDataListItem, IsEmpty());
    const auto placeholder = provider.placeholder({});
    ASSERT_TRUE(placeholder.multiAssetDataListItem) << "the failure comes before the answer";
    EXPECT_THAT(*placeholder.multiAssetDataListItem, IsEmpty());
    EXPECT_THAT(phone.service.requests(), IsEmpty());
}

TEST(PerchTimeline, ShowsAChangedChoiceAndThemeWithTheNextQuestion) {
    const ServedRuntime phone({.body = threeQuotes()});
    store(phone.runtime, keys::themeType, 1);
    PerchTimelineProvider provider{phone.runtime};
    const auto before = snapshotOf(provider);

    chooseStocks(phone.runtime, {"x"});
    store(phone.runtime, keys::themeType, 0);
    const auto after = snapshotOf(provider);
    EXPECT_EQ(before.multiAssetDataListItem->size(), 3U);
    EXPECT_EQ(after.multiAssetDataListItem->size(), 4U);
    EXPECT_NE(before.id, after.id);
    EXPECT_EQ(before.backgroundColor, platform::Color::rgb(1, 1, 1));
    EXPECT_NE(after.backgroundColor, before.backgroundColor);
}

TEST(PerchPlaceholder, AnswersWithoutWaitingForTheServiceAndLeavesNothingBehind) {
    const auto start = std::chrono::steady_clock::now();
    {
        const ServedRuntime phone({.ending = Answer::Ending::silence});
        const auto entry = PerchTimelineProvider{phone.runtime}.placeholder({});
        EXPECT_FALSE(entry.multiAssetDataListItem);
        EXPECT_EQ(entry.date, phone.runtime.now());
        EXPECT_TRUE(phone.service.waitForRequests(1));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
}

TEST(PerchTimeline, SeveralFamiliesMayAskAtOnceAndTheProviderMayGoBeforeTheAnswers) {
    const ServedRuntime phone({.body = threeQuotes(), .delay = 50ms});
    std::vector<tests::Awaited<platform::Timeline<PerchTimelineEntry>>> answers(8);
    {
        PerchTimelineProvider provider{phone.runtime};
        std::vector<std::thread> askers;
        for (auto& answer : answers) askers.emplace_back([&] { provider.getTimeline({}, answer.taker()); });
        for (auto& asker : askers) asker.join();
    }
    for (auto& answer : answers) EXPECT_EQ(answer.value().entries.at(0).multiAssetDataListItem->size(), 3U);
}

}  // namespace
}  // namespace extension
