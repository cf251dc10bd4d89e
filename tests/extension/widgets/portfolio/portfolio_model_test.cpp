#include <gmock/gmock.h>
#include <string>
#include <vector>
#include "extension/widgets/portfolio/model/portfolio_data_model.h"
#include "extension/widgets/portfolio/model/portfolio_widget_vm.h"
#include "extension/widgets/portfolio/model/pw_api_error.h"
#include "platform/json/json_coding.h"

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

TEST(PortfolioDocument, AbsentAndNullAreAbsentAtEveryLevel) {
    EXPECT_EQ(platform::decodedJSON<PortfolioDataModel>("{}"), PortfolioDataModel{});
    EXPECT_EQ(platform::decodedJSON<PortfolioDataModel>(R"({"portfoliosummary":null})"),
              PortfolioDataModel{});
    EXPECT_EQ(platform::decodedJSON<PortfolioDataModel>(R"({"portfoliosummary":{}})"),
              PortfolioDataModel{Portfoliosummary{}});
    EXPECT_EQ(detailsOf(R"("no_of_stocks":null,"name":null,"USERTYPE":"x")"), NetworthDetails{});
}

TEST(PortfolioDocument, AMemberOfAnotherTypeFailsItWhole) {
    for (const char* member :
         {R"("investments":1200)", R"("name":true)", R"("no_of_stocks":"5")", R"("no_of_stocks":1.5)",
          R"("no_of_stocks":9223372036854775808)", R"("userType":{})"}) {
        EXPECT_FALSE(platform::decodedJSON<PortfolioDataModel>(
            R"({"portfoliosummary":{"networth_details":{)" + std::string(member) + "}}}"))
            << member;
    }
    for (const char* body : {"[]", "", "null", "3", R"({"portfoliosummary":[]})",
                             R"({"portfoliosummary":{"networth_details":"x"}})", "{} {}"}) {
        EXPECT_FALSE(platform::decodedJSON<PortfolioDataModel>(body)) << body;
    }
}

TEST(PortfolioDocument, IsWrittenWithoutAbsentMembersAsAWholeAndInParts) {
    PortfolioDataModel portfolio{Portfoliosummary{NetworthDetails{}}};
    portfolio.portfoliosummary->networthDetails->name = "Main";
    EXPECT_EQ(platform::encodedJSON(portfolio).dump(),
              R"({"portfoliosummary":{"networth_details":{"name":"Main"}}})");
    EXPECT_EQ(platform::decodedJSON<PortfolioDataModel>(platform::encodedJSON(portfolio).dump()), portfolio);
    const Portfoliosummary& summary = *portfolio.portfoliosummary;
    EXPECT_EQ(platform::encodedJSON(summary).dump(), R"({"networth_details":{"name":"Main"}})");
    EXPECT_EQ(platform::decodedJSON<Portfoliosummary>(R"({"networth_details":{"name":"Main"}})"), summary);
    EXPECT_EQ(platform::encodedJSON(Portfoliosummary{}).dump(), "{}");
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

TEST(SavedRows, DamagedOnesAreNone) {
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
    for (const PWAPIError state :
         {PWAPIError::success, PWAPIError::failed, PWAPIError::nonLogin, PWAPIError::noPortfolio}) {
        EXPECT_EQ(decodeState(json::parse(encodedState(state).dump())), state);
        EXPECT_EQ(errorOf(state).domain, "PWAPIError");
        EXPECT_EQ(errorOf(state).code, static_cast<int>(state));
    }
    EXPECT_EQ(encodedState(PWAPIError::nonLogin).dump(), R"({"nonLogin":{}})");
    for (const char* text : {"{}", R"({"failed":{},"success":{}})"}) {
        const auto state = decodeState(json::parse(text));
        ASSERT_FALSE(state);
        EXPECT_EQ(state.error().message, "Invalid number of keys found, expected one.");
    }
    EXPECT_FALSE(decodeState(json::parse(R"({"Failed":{}})")));
    EXPECT_FALSE(decodeState(json::parse(R"("failed")")));
}

}  // namespace
