#include "demo/scenes.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>
#include "demo/market.h"
#include "extension/widgets/perch/proto/market_package.h"

namespace demo {
namespace {

using nlohmann::ordered_json;
using serving::Request;
using serving::Response;

struct SceneStory {
    std::string_view headline;
    std::string_view type;
    /// The number of a demo picture; below 0 the story has none.
    int picture = -1;
};

struct SceneGain {
    std::string_view amount;
    std::string_view percent;
    std::string_view direction;
};

struct ScenePortfolio {
    std::string_view worth;
    std::string_view invested;
    SceneGain over;
    SceneGain today;
};

struct Scene {
    std::string_view name;
    /// In percent, used in turn. Empty: the scene has no quotes.
    std::vector<double> changes = {};
    /// Every price is multiplied by this.
    double priceFactor = 1.0;
    std::vector<SceneStory> stories = {};
    /// Absent: a user without a portfolio.
    std::optional<ScenePortfolio> portfolio = {};
};

constexpr SceneStory liveStory{"Sensex climbs past 85,000 as banks and software services lead a broad rally",
                               "liveblog", 0};
constexpr SceneStory savings{
    "Household savings move into index funds at the fastest pace in five years, survey finds", "news", 1};
constexpr SceneStory morningBell{"The morning bell: what a steady rupee means for exporters this quarter",
                                 "podcast", 2};
constexpr SceneStory terminal{"Watch: inside the new container terminal that could halve shipping times",
                              "videos", 3};
constexpr SceneStory monsoon{"In pictures: monsoon returns to the hill stations", "photogallery", 4};
constexpr SceneStory textiles{
    "Kaveri Textiles posts record profit; board proposes a final dividend of ₹12 a share", "text", -1};

const std::vector<Scene>& scenes() {
    static const std::vector<Scene> all{
        {.name = "full",
         .changes = {0.64, -0.31, 0.0, 1.82, -2.47, 0.09},
         .stories = {savings, morningBell, terminal, monsoon, textiles},
         .portfolio =
             ScenePortfolio{
                 "11,43,872.40", "10,42,218.00", {"1,01,654.40", "9.75", "1"}, {"8,213.60", "0.71", "-1"}}},
        {.name = "one", .changes = {0.64}, .stories = {savings}},
        {.name = "none"},
        {.name = "long",
         .changes = {12345.67, -98.76, 0.0},
         .priceFactor = 9876543.21,
         .stories =
             {{"Regulators, exchanges and the country's ten largest brokers agree, after eleven weeks "
               "of talks, on a common format for statements that small investors can read without help",
               "videos", 3},
              {"Donaudampfschifffahrtsgesellschaftskapitänsmützenabzeichenversicherungsgesellschaft "
               "goes public",
               "photogallery", 4},
              {"शेयर बाज़ार में तेज़ी: सेंसेक्स पहली बार पचासी हज़ार के पार, बैंकों और सूचना प्रौद्योगिकी "
               "कंपनियों ने दिखाई राह, छोटे निवेशकों की भागीदारी भी बढ़ी",
               "podcast", 2},
              {"Markets live: every move of the day, minute by minute, from the opening bell to the last "
               "trade, with voices from the trading floors of Mumbai, Singapore and London",
               "liveblog", 0},
              {"<b>“Markup” &amp; emoji</b> 📈📉 stand in this headline as they were sent, and the line "
               "goes on for as long as it can so that it has to be cut somewhere",
               "news", 1}},
         .portfolio = ScenePortfolio{"98,76,54,32,109.87",
                                     "12,34,56,78,901.23",
                                     {"86,41,97,53,208.64", "12,345.67", "1"},
                                     {"7,65,43,21,098.76", "100.00", "-1"}}},
        {.name = "live",
         .changes = {0.64},
         .stories = {liveStory,
                     savings,
                     {"Rates decision live: what the central bank says, and what it means for you",
                      "liveblog", 5},
                     terminal,
                     textiles}},
        {.name = "gain",
         .changes = {0.64, 1.27, 3.05},
         .portfolio =
             ScenePortfolio{
                 "11,43,872.40", "10,42,218.00", {"1,01,654.40", "9.75", "1"}, {"8,213.60", "0.71", "+1"}}},
        {.name = "loss",
         .changes = {-0.64, -1.27, -3.05},
         .portfolio =
             ScenePortfolio{
                 "9,21,540.10", "10,42,218.00", {"1,20,677.90", "11.58", "-1"}, {"14,902.25", "1.59", "-1"}}},
        {.name = "neutral",
         .changes = {0.0},
         .portfolio =
             ScenePortfolio{"10,42,218.00", "10,42,218.00", {"0.00", "0.00", "0"}, {"0.00", "0.00", ""}}},
    };
    return all;
}

Response quotes(Request request, const Scene& scene) {
    if (scene.changes.empty()) request.query.clear();
    const auto priceOf = [&](const Instrument& instrument, std::size_t place) {
        const double percent = scene.changes[place % scene.changes.size()];
        const double price = instrument.basePrice * scene.priceFactor;
        return Price{.current = price, .change = price * percent / 100.0, .percentChange = percent};
    };
    return quotesResponse(request, *platform::parseInstant("2026-11-23T12:00:00+05:30"), priceOf);
}

Response news(const Scene& scene, std::string_view origin) {
    ordered_json list = ordered_json::array();
    for (const SceneStory& story : scene.stories) {
        const std::string number = std::to_string(list.size());
        list.push_back({{"headline", story.headline},
                        {"story_id", number},
                        {"timeago", "4 min ago"},
                        {"share_url", "https://www.brightledger.invalid/story/" + number},
                        {"story_type", story.type}});
        if (story.picture >= 0)
            list.back()["thumbnail"] =
                std::string(origin) + "/thumbnails/" + std::to_string(story.picture) + ".jpg";
    }
    return jsonResponse({{"list", list}});
}

Response portfolio(const Scene& scene) {
    if (!scene.portfolio) return jsonResponse({{"portfoliosummary", nullptr}});
    const ScenePortfolio& figures = *scene.portfolio;
    return jsonResponse({{"portfoliosummary",
                          {{"networth_details",
                            {{"networth", figures.worth},
                             {"investments", figures.invested},
                             {"over_change", figures.over.amount},
                             {"over_percentchange", figures.over.percent},
                             {"over_direction", figures.over.direction},
                             {"change", figures.today.amount},
                             {"percentchange", figures.today.percent},
                             {"direction", figures.today.direction}}}}}});
}

}  // namespace

serving::Response quotesResponse(const serving::Request& request, platform::Instant now,
                                 const std::function<Price(const Instrument&, std::size_t place)>& priceOf) {
    extension::MarketPackage_MultiAssetInfo info;
    info.set_success(1);
    auto& list = *info.mutable_data()->mutable_datalist();
    std::string identifiers = serving::queryValue(request.query, "asset_ids").value_or("");
    while (!identifiers.empty()) {
        const std::string identifier = identifiers.substr(0, identifiers.find(','));
        identifiers.erase(0, identifier.size() + 1);
        if (identifier.empty()) continue;
        const Instrument instrument = instrumentFor(identifier);
        const Price price = priceOf(instrument, static_cast<std::size_t>(list.size()));
        auto& item = *list.Add();
        item.set_assetid(std::string(instrument.id));
        item.set_symbol(identifier);
        item.set_shortname(std::string(instrument.title));
        item.set_currentprice(twoDecimals(price.current));
        item.set_change(twoDecimals(price.change));
        item.set_perchange(twoDecimals(price.percentChange));
        item.set_volume(std::to_string(static_cast<long long>(1e9 / price.current)));
        item.set_direction(direction(price.change));
        item.set_ex(std::string(instrument.exchange));
        item.set_disptime(displayTime(now));
        item.set_dateformat("dd MMM, HH:mm:ss");
        item.set_lastupdated(platform::formatInstant(now));
        item.set_assettype(std::string(instrument.type));
        item.set_priceidentifier(identifier);
    }
    return {.contentType = "application/x-protobuf", .body = platform::Bytes(info.SerializeAsString())};
}

Response sceneAnswer(const Request& request, std::string_view origin) {
    const std::string_view below = std::string_view(request.path).substr(scenePrefix.size());
    const std::string_view name = below.substr(0, below.find('/'));
    const std::string_view path = below.substr(name.size());
    const auto scene = std::ranges::find(scenes(), name, &Scene::name);
    if (scene != scenes().end()) {
        if (path.starts_with("/swiftapi/")) return quotes(request, *scene);
        if (path.starts_with("/newsapi/")) return news(*scene, origin);
        if (path.starts_with("/portfolioapi/")) return portfolio(*scene);
    }
    return {.status = 404, .body = platform::Bytes("no such scene\n")};
}

}  // namespace demo
