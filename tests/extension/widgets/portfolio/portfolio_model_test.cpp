#include <gmock/gmock.h>
#include <string>
#include <vector>
#include "extension/widgets/portfolio/model/portfolio_data_model.h"
#include "extension/widgets/portfolio/model/pw_timeline_entry.h"
#include "platform/json/json_coding.h"
#include "tests/support/expected_text.h"

namespace {

using namespace extension;
using nlohmann::json;
using testing::IsEmpty;

NetworthDetails detailsOf(const std::string& members) {
    const auto portfolio = platform::decodedJSON<PortfolioDataModel>(
        R"({"portfoliosummary":{"networth_details":{)" + members + "}}}");
    EXPECT_TRUE(portfolio) << members;
    return portfolio ? *portfolio->portfoliosummary->networthDetails : NetworthDetails{};
}

TEST(PortfolioDocument, ReadsEachMemberUnderTheServicesOwnSpelling) {
    const std::string members = R"({"name":"a","investments":"b","networth":"c","change":"d",)"
                                R"("percentchange":"e","direction":"f","over_change":"g",)"
                                R"("over_percentchange":"h","over_direction":"i","over_realized":"j",)"
                                R"("realized_direction":"k","stk_latest_value":"l","no_of_stocks":12,)"
                                R"("portfolio_unit":"m","redirect_url":"n","userType":"o"})";
    const NetworthDetails details{"a", "b", "c", "d", "e", "f", "g", "h",
                                  "i", "j", "k", "l", 12,  "m", "n", "o"};
    EXPECT_EQ(platform::decodedJSON<NetworthDetails>(members), details);
    EXPECT_EQ(platform::encodedJSON(details).dump(), members);
    EXPECT_EQ(detailsOf(R"("else":[{}],"usertype":7,"x":1e400,)" + members.substr(1, members.size() - 2)),
              details);
}

TEST(PortfolioDocument, IsReadWhollyOrNotAtAllAndWrittenWithoutWhatIsAbsent) {
    EXPECT_TRUE(tests::answersAsExpected("extension/portfolio_documents.txt", [](const std::string& text) {
        const auto portfolio = platform::decodedJSON<PortfolioDataModel>(text);
        return portfolio ? platform::encodedJSON(*portfolio).dump() : "refused";
    }));
}

TEST(PortfolioRows, WithoutFiguresAreStillFourAndNeutral) {
    platform::IdSource ids(7);
    for (const char* direction : {R"("direction":"0")", R"("direction":"")", R"("direction":"2")", ""}) {
        const auto rows = makeRows(detailsOf(direction), ids);
        ASSERT_EQ(rows.size(), 4U);
        EXPECT_EQ(rows[2].percentage, "(%)");
        EXPECT_EQ(rows[3].isProfit, std::nullopt) << direction;
        EXPECT_THAT(rows[3].value, IsEmpty());
    }
}

TEST(PortfolioRows, TakeAPlusOneForAGainToo) {
    platform::IdSource ids(7);
    const auto rows = makeRows(detailsOf(R"("direction":"+1","over_direction":"-1")"), ids);
    EXPECT_EQ(rows.at(2).isProfit, false);
    EXPECT_EQ(rows.at(3).isProfit, true);
    EXPECT_NE(rows[0].id, rows[1].id);
}

TEST(SavedRows, ComeBackAsTheyWere) {
    platform::IdSource ids(7);
    const auto rows = makeRows(detailsOf(R"("networth":"₹ \"1\"/2","direction":"1")"), ids);
    const auto encoded = encodedRows(rows);
    ASSERT_TRUE(encoded);
    EXPECT_EQ(decodeRows(*encoded), rows);
    EXPECT_FALSE(json::parse(*encoded)[0].contains("isProfit"));
    EXPECT_EQ(decodeRows("[]"), std::vector<PortfolioWidgetVM>{});
}

TEST(SavedRows, ThatAreDamagedAreRefused) {
    const json row = json::parse(R"({"id":"5A0E7C5E-90C1-4DA9-8B0C-4F4B8A6F1D11","title":"t","value":"v",
                                     "isTrailing":false,"percentage":""})");
    EXPECT_TRUE(decodeRows(json{row}.dump()));
    for (const char* key : {"id", "title", "value", "isTrailing", "percentage"}) {
        json without = row;
        without.erase(key);
        EXPECT_FALSE(decodeRows(json{without}.dump())) << key;
        json wrong = row;
        wrong[key] = 5;
        EXPECT_FALSE(decodeRows(json{wrong}.dump())) << key;
    }
    json wrongFlag = row;
    wrongFlag["isProfit"] = "true";
    EXPECT_FALSE(decodeRows(json{wrongFlag}.dump()));
    EXPECT_FALSE(decodeRows("{}"));
    EXPECT_FALSE(decodeRows("[1]"));
    EXPECT_FALSE(decodeRows("\xFF\xFE"));
}

TEST(PortfolioState, IsAnObjectWithItsNameAsTheOnlyKey) {
    EXPECT_TRUE(tests::answersAsExpected("extension/portfolio_states.txt", [](const std::string& text) {
        const auto state = decodeState(json::parse(text));
        return state ? encodedState(*state).dump() : state.error().message;
    }));
    EXPECT_EQ(errorOf(PWAPIError::nonLogin).domain, "PWAPIError");
    EXPECT_EQ(errorOf(PWAPIError::nonLogin).code, 2);
}

}  // namespace
