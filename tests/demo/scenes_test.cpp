#include "demo/scenes.h"
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include "extension/widgets/perch/proto/market_package.h"

namespace demo {
namespace {

using nlohmann::json;
using testing::ElementsAre;

serving::Response get(const std::string& path, const std::string& query = {}) {
    return sceneAnswer({.method = "get", .path = path, .query = query, .headers = {}, .body = {}},
                       "http://127.0.0.1:1");
}

std::vector<std::string> directions(const std::string& scene) {
    const auto answer =
        get("/scene/" + scene + "/swiftapi/v1/markets/multi-asset-info", "asset_ids=in;SEN-II,KVT-EQ,XYZ-EQ");
    const auto info = extension::decodeMultiAssetInfo(answer.body.view());
    std::vector<std::string> list;
    for (const auto& quote : info.value().data().datalist()) {
        EXPECT_EQ(quote.direction(), quote.change()[0] == '-' ? "-1" : quote.change() == "0.00" ? "0" : "1");
        list.push_back(quote.direction());
    }
    return list;
}

TEST(DemoScenes, QuoteWhateverIsAskedForInTheDirectionOfTheirName) {
    EXPECT_THAT(directions("full"), ElementsAre("1", "-1", "0"));
    EXPECT_THAT(directions("gain"), ElementsAre("1", "1", "1"));
    EXPECT_THAT(directions("loss"), ElementsAre("-1", "-1", "-1"));
    EXPECT_THAT(directions("neutral"), ElementsAre("0", "0", "0"));
    EXPECT_THAT(directions("none"), ElementsAre());
}

TEST(DemoScenes, TellAsManyStoriesAsTheirNamePromises) {
    for (const auto& [scene, count] : std::vector<std::pair<std::string, std::size_t>>{
             {"full", 5}, {"one", 1}, {"none", 0}, {"live", 5}, {"long", 5}}) {
        const json news = json::parse(get("/scene/" + scene + "/newsapi/app/").body.view());
        EXPECT_EQ(news["list"].size(), count) << scene;
    }
    const json live = json::parse(get("/scene/live/newsapi/app/").body.view());
    EXPECT_EQ(live["list"][0]["story_type"], "liveblog");
    EXPECT_EQ(live["list"][0]["thumbnail"], "http://127.0.0.1:1/thumbnails/0.jpg");
}

TEST(DemoScenes, HaveAPortfolioOrNone) {
    const json loss = json::parse(get("/scene/loss/portfolioapi/summary").body.view());
    EXPECT_EQ(loss["portfoliosummary"]["networth_details"]["over_direction"], "-1");
    const json none = json::parse(get("/scene/none/portfolioapi/summary").body.view());
    EXPECT_TRUE(none["portfoliosummary"].is_null());
}

TEST(DemoScenes, AreNotFoundUnderOtherNames) {
    for (const char* path : {"/scene/", "/scene/full", "/scene/full/", "/scene/other/newsapi/app/"})
        EXPECT_EQ(get(path).status, 404) << path;
}

}  // namespace
}  // namespace demo
