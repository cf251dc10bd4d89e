#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <algorithm>
#include <chrono>
#include <string>
#include <utility>
#include <vector>
#include "extension/widgets/perch/model/perch_timeline_entry.h"
#include "extension/widgets/perch/model/selected_assets.h"
#include "tests/support/expected_text.h"
#include "tests/support/test_runtime.h"

namespace extension {
namespace {

using testing::EndsWith;
using tests::TestRuntime;

DefaultMultiAssetsVM assetOf(std::string id, std::string symbol = "", std::string scId = "",
                             std::string priceIdentifier = "") {
    DefaultMultiAssetsVM asset;
    asset.id = std::move(id);
    asset.symbol = std::move(symbol);
    asset.scId = std::move(scId);
    asset.priceIdentifier = std::move(priceIdentifier);
    return asset;
}

struct QuoteText {
    std::string assetId;
    std::string symbol;
    std::string price;
};

QuoteList quotesOf(const std::vector<QuoteText>& texts) {
    QuoteList quotes;
    for (const QuoteText& text : texts) {
        auto& quote = *quotes.Add();
        quote.set_assetid(text.assetId);
        quote.set_symbol(text.symbol);
        quote.set_currentprice(text.price);
    }
    return quotes;
}

TEST(PerchRows, AnAssetWithoutAQuoteLeavesNoRowAndTheNextOneKeepsItsPlace) {
    const TestRuntime runtime;
    const std::vector assets{assetOf("4"), assetOf("9"), assetOf("23")};

    const auto rows = makeRows(quotesOf({{"23", "", "3"}, {"4", "", "1"}}), assets, runtime);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].assetID, "4");
    EXPECT_THAT(rows[0].deeplinkURL, EndsWith("&positionSelected=1"));
    EXPECT_EQ(rows[1].assetID, "23");
    EXPECT_THAT(rows[1].deeplinkURL, EndsWith("&positionSelected=3"));
    EXPECT_NE(rows[0].id, rows[1].id);
}

TEST(PerchRows, TakeTheQuoteThatFitsTheAsset) {
    const TestRuntime runtime;
    EXPECT_TRUE(tests::answersAsExpected("extension/perch_quotes.txt", [&](const std::string& input) {
        std::optional<DefaultMultiAssetsVM> asset;
        std::vector<QuoteText> quotes;
        for (const std::string& word : tests::parts(input, ' ')) {
            const auto fields = tests::parts(word, '/');
            if (asset)
                quotes.push_back({fields[0], fields[1], fields[2]});
            else
                asset = assetOf(fields[0], fields[1], fields[2], fields[3]);
        }
        const auto rows = makeRows(quotesOf(quotes), std::vector{*asset}, runtime);
        return rows.empty() ? "no row" : "\"" + rows.at(0).currentPrice + "\"";
    }));
}

TEST(PerchRows, ARowWhoseQuoteIsUnclearHasEmptyPriceTexts) {
    const TestRuntime runtime;
    DefaultMultiAssetsVM asset = assetOf("a", "", "", "p");
    asset.exchg = "nse";
    const auto rows = makeRows(quotesOf({{"a", "x", "1"}, {"a", "y", "2"}}), std::vector{asset}, runtime);
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].changeWithPercent, "");
    EXPECT_EQ(rows[0].direction, "");
    EXPECT_EQ(rows[0].isProfit, std::nullopt);
    EXPECT_EQ(rows[0].exchgWithTime, "NSE: ");
}

TEST(PerchRows, JoinWhatIsThereAndLeaveOutWhatIsNot) {
    const TestRuntime runtime;
    EXPECT_TRUE(tests::answersAsExpected("extension/perch_row_texts.txt", [&](const std::string& input) {
        const auto fields = tests::parts(input, ';');
        DefaultMultiAssetsVM asset;
        asset.exchg = fields[0];
        MarketPackage_MultiAssetDataListItem quote;
        quote.set_disptime("12:00");
        quote.set_change(fields[1]);
        quote.set_perchange(fields[2]);
        const PerchMultiAssetsVM row = makeRow(&quote, asset, 0, runtime);
        return row.exchgWithTime + "; " + row.changeWithPercent;
    }));
}

TEST(PerchRows, AreAProfitOrALossByTheDirectionOnly) {
    const TestRuntime runtime;
    EXPECT_TRUE(tests::answersAsExpected("extension/perch_directions.txt", [&](const std::string& direction) {
        MarketPackage_MultiAssetDataListItem quote;
        quote.set_direction(direction);
        quote.set_change("-5");
        const std::optional<bool> isProfit = makeRow(&quote, {}, 0, runtime).isProfit;
        return isProfit ? *isProfit ? "profit" : "loss" : "neither";
    }));
}

TEST(PerchRows, TakeTimeInProportionEvenWhenEveryQuoteHasTheSameName) {
    const TestRuntime runtime;
    constexpr int count = 50'000;
    std::vector<QuoteText> texts;
    std::vector<DefaultMultiAssetsVM> assets;
    for (int place = 0; place < count; ++place) {
        texts.push_back({"same", std::to_string(place), std::to_string(place)});
        assets.push_back(assetOf("same", "", "", std::to_string(count - 1 - place)));
    }
    const auto start = std::chrono::steady_clock::now();
    const auto rows = makeRows(quotesOf(texts), assets, runtime);
    // Going through all quotes for each asset would take minutes.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    ASSERT_EQ(rows.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(rows.front().currentPrice, "49,999.00");
    EXPECT_EQ(rows.back().currentPrice, "0.00");
}

TEST(PerchNumbers, HaveTwoDecimalsAndTheGroupsOfTheLocale) {
    const TestRuntime india{{.locale = {"en_IN"}}};
    EXPECT_EQ(formatNumber("1234567.891", india), "12,34,567.89");
    EXPECT_EQ(formatNumber("1234567.891", TestRuntime{{.locale = {"en_US"}}}), "1,234,567.89");
    const std::pair<const char*, const char*> numbers[] = {
        {"8.345", "8.34"}, {"+5", "5.00"}, {"-0", "-0.00"}, {"1e-400", "0.00"},
        {"", ""},          {" 1", ""},     {"1,000", ""},   {"12a", ""},
    };
    for (const auto& [text, formatted] : numbers) EXPECT_EQ(formatNumber(text, india), formatted) << text;
}

TEST(PerchDeepLinks, FollowTheKindOfTheAsset) {
    DefaultMultiAssetsVM asset;
    asset.id = "7";
    asset.exchg = "nse";
    asset.market = "cash";
    asset.title = " Tata  Steel\u00A0Ltd ";
    asset.indId = "9";
    asset.scId = "TS";
    EXPECT_TRUE(tests::answersAsExpected("extension/perch_links.txt", [&](const std::string& kind) {
        asset.type = tests::parts(kind, ' ').front();
        asset.instrument = kind.substr(std::min(kind.size(), asset.type.size() + 1));
        return makeDeepLink(asset, 4);
    }));
    asset.type = "indices";
    asset.linkFlag = false;
    EXPECT_THAT(makeDeepLink(asset, 0), EndsWith("&link_flag=0&positionSelected=1"));
}

}  // namespace
}  // namespace extension
