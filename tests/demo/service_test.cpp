#include "demo/service.h"
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <set>
#include "demo/market.h"
#include "extension/widgets/perch/proto/market_package.h"
#include "tests/support/raw_client.h"

namespace demo {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;

struct Answer {
    std::string head;
    std::string body;
};

/// One request on a connection of its own, read to the connection's end.
Answer ask(const DemoService& service, const std::string& method, const std::string& target,
           const std::string& content = {}) {
    tests::RawClient client(std::stoi(service.origin().substr(17)));
    client.send(method + " " + target + " HTTP/1.1\r\n" + client.host() +
                "Connection: close\r\nContent-Length: " + std::to_string(content.size()) + "\r\n\r\n" +
                content);
    const std::string text = client.read();
    const std::size_t end = text.find("\r\n\r\n");
    if (end == std::string::npos) return {};
    return {text.substr(0, end), text.substr(end + 4)};
}

std::unique_ptr<DemoService> service(const platform::Clock* clock = nullptr) {
    auto started = DemoService::start(BRIGHTLEDGER_SOURCE_DIR "/resources/demo", 0, clock);
    EXPECT_TRUE(started);
    return std::move(*started);
}

const std::string quotesTarget = "/swiftapi/v1/markets/multi-asset-info?asset_ids=";
const std::string newsTarget = "/newsapi/app/get_news_ranking/main_home_page/allnews/?start=0&limit=5";

TEST(DemoQuotes, MatchTheAssetsThatAreAskedForInTheirOrderAndMoveWithTheClock) {
    platform::Clock clock(*platform::parseInstant("2026-11-23T10:00:00+05:30"));
    const auto demo = service(&clock);
    const auto quotes = [&] {
        const Answer answer = ask(*demo, "GET", quotesTarget + "in;SEN-II,in;nbx-II,XYZ-EQ");
        return extension::decodeMultiAssetInfo(answer.body).value().data().datalist();
    };
    const auto before = quotes();
    ASSERT_EQ(before.size(), 3);
    EXPECT_EQ(before[0].assetid(), "4");
    EXPECT_EQ(before[0].symbol(), "in;SEN-II");
    EXPECT_EQ(before[0].disptime(), "23 Nov, 10:00:00");
    EXPECT_EQ(before[1].assetid(), "23");
    EXPECT_EQ(before[2].assetid(), "XYZ");
    EXPECT_EQ(before[0].currentprice(), quotes()[0].currentprice());

    clock.set(clock.now() + std::chrono::seconds(30), 0.0);
    const double moved = std::stod(quotes()[0].currentprice()) - std::stod(before[0].currentprice());
    EXPECT_NE(moved, 0.0);
    EXPECT_LT(std::abs(moved), 0.005 * std::stod(before[0].currentprice()));
}

TEST(DemoQuotes, StayWithinReasonAllYearAndAgreeWithThemselves) {
    const auto start = *platform::parseInstant("2026-01-01T00:00:00Z");
    for (const Instrument& instrument : catalogue()) {
        for (int hour = 0; hour < 24 * 365; hour += 5) {
            const Price price = priceAt(instrument, start + std::chrono::hours(hour));
            ASSERT_NEAR(price.current / instrument.basePrice, 1.0, 4.0 * instrument.liveliness)
                << instrument.title;
            ASSERT_NEAR(price.percentChange, price.change / (price.current - price.change) * 100.0, 1e-6);
        }
    }
}

TEST(DemoNews, HasAllSevenTypesAndAPictureForEachStory) {
    const auto demo = service();
    const json list = json::parse(ask(*demo, "get", newsTarget).body)["list"];
    EXPECT_GT(list.size(), 5U);
    const json all =
        json::parse(ask(*demo, "GET", "/newsapi/app/get_news_ranking/main_home_page/allnews/?limit=50").body);
    std::set<std::string> types;
    for (const json& story : all["list"]) types.insert(story["story_type"]);
    EXPECT_THAT(types, testing::UnorderedElementsAre("liveblog", "text", "podcast", "videos", "photogallery",
                                                     "news", "blogs"));

    std::set<std::string> pictures;
    for (const json& story : list) {
        const std::string address = story["thumbnail"];
        ASSERT_THAT(address, StartsWith(demo->origin()));
        const std::string picture = ask(*demo, "GET", address.substr(demo->origin().size())).body;
        EXPECT_THAT(picture, StartsWith("\xFF\xD8"));
        pictures.insert(picture);
    }
    EXPECT_EQ(pictures.size(), list.size());
    EXPECT_THAT(ask(*demo, "GET", "/thumbnails/99.jpg").head, HasSubstr(" 404 "));
}

TEST(DemoPortfolio, KnowsItsUsersAndNobodyElse) {
    const auto demo = service();
    const std::string address = demo->portfolioAddress().substr(demo->origin().size());
    const auto summary = [&](const std::string& user, const std::string& token) {
        return ask(*demo, "GET", address + "&ctype=2&uname=" + user + "&token=" + token + "&test=false");
    };
    const auto& users = DemoService::users();
    const json figures =
        json::parse(summary(users[0].userId, users[0].token).body)["portfoliosummary"]["networth_details"];
    for (const char* key : {"investments", "networth", "change", "over_change"})
        EXPECT_THAT(figures[key].get<std::string>(), MatchesRegex("([0-9]+,)*[0-9]+\\.[0-9][0-9]")) << key;
    EXPECT_TRUE(figures["no_of_stocks"].is_number_integer());

    EXPECT_TRUE(json::parse(summary(users[1].userId, users[1].token).body)["portfoliosummary"].is_null());
    EXPECT_EQ(json::parse(summary(users[2].userId, users[2].token)
                              .body)["portfoliosummary"]["networth_details"]["investments"],
              "0");
    EXPECT_THAT(summary(users[0].userId, users[1].token).head, HasSubstr(" 401 "));
    EXPECT_THAT(summary("", "").head, HasSubstr(" 401 "));
}

TEST(DemoAmounts, AreGroupedAsInIndia) {
    const std::pair<double, const char*> cases[] = {{0, "0.00"},
                                                    {999.999, "1,000.00"},
                                                    {1234567.891, "12,34,567.89"},
                                                    {-100000, "-1,00,000.00"},
                                                    {123456789, "12,34,56,789.00"}};
    for (const auto& [amount, text] : cases) EXPECT_EQ(indianAmount(amount), text);
}

TEST(DemoScenes, AreNotFoundUnderOtherNames) {
    const auto demo = service();
    for (const char* path : {"/scene/", "/scene/full", "/scene/full/", "/scene/other/newsapi/app/"})
        EXPECT_THAT(ask(*demo, "GET", path).head, HasSubstr(" 404 ")) << path;
    EXPECT_THAT(ask(*demo, "GET", "/scene/full/newsapi/app/").head, HasSubstr(" 200 "));
}

TEST(DemoFaults, AreSwitchedByName) {
    const auto demo = service();
    const std::string whole = ask(*demo, "GET", newsTarget).body;
    const auto faulty = [&](const char* name) {
        EXPECT_THAT(ask(*demo, "POST", "/demo/fault", name).head, StartsWith("HTTP/1.1 200")) << name;
        return ask(*demo, "GET", newsTarget);
    };
    EXPECT_EQ(faulty("down").head, "");
    EXPECT_THAT(faulty("304"), testing::AllOf(testing::Field(&Answer::head, HasSubstr(" 304 ")),
                                              testing::Field(&Answer::body, IsEmpty())));
    EXPECT_THAT(faulty("500").head, HasSubstr(" 500 "));
    EXPECT_THAT(faulty("empty").body, IsEmpty());
    EXPECT_FALSE(json::accept(faulty("noise").body));
    EXPECT_EQ(faulty("cut").body, whole.substr(0, whole.size() / 2));
    const Answer broken = faulty("reset");
    EXPECT_THAT(broken.head, HasSubstr("Content-Length: " + std::to_string(whole.size())));
    EXPECT_LT(broken.body.size(), whole.size());
    EXPECT_THAT(faulty("unknown-story-type").body, HasSubstr("\"hologram\""));
    EXPECT_EQ(faulty("huge").body.size(), 80U << 20);
    EXPECT_THAT(ask(*demo, "POST", "/demo/fault", "bad luck").head, HasSubstr(" 400 "));
    EXPECT_EQ(faulty("none").body, whole);
}

}  // namespace
}  // namespace demo
