#include "demo/service.h"
#include <array>
#include <atomic>
#include <cmath>
#include <mutex>
#include <optional>
#include "demo/market.h"
#include "demo/scenes.h"
#include "platform/base/files.h"

namespace demo {
namespace {

using namespace std::string_literals;

using nlohmann::ordered_json;
using serving::Request;
using serving::Response;

/// A way to spoil what the service answers to the extension.
struct Fault {
    std::string_view name;
    void (*spoil)(Response& response);
};

/// Half a document that says that it is whole.
void cutDocument(Response& response) {
    const std::string_view whole = response.body.view();
    response.body = platform::Bytes(std::string(whole.substr(0, whole.size() / 2)));
}

void renameTypeOfLastStory(Response& response) {
    ordered_json document = ordered_json::parse(response.body.view(), nullptr, /*allow_exceptions=*/false);
    if (!document.is_object() || !document.contains("list") || document["list"].empty()) return;
    document["list"].back()["story_type"] = "hologram";
    response.body = platform::Bytes(document.dump());
}

constexpr std::array faults{
    Fault{"none", [](Response&) {}},
    // Nothing of the answer is sent.
    Fault{"down", [](Response& response) { response.ending = Response::Ending::reset; }},
    Fault{"slow", [](Response& response) { response.delay = std::chrono::seconds(12); }},
    // The connection breaks in the middle of the body.
    Fault{"reset", [](Response& response) { response.ending = Response::Ending::cut; }},
    Fault{"304", [](Response& response) { response.status = 304; }},
    Fault{"500", [](Response& response) { response.status = 500; }},
    Fault{"empty", [](Response& response) { response.body = {}; }},
    Fault{"noise",
          [](Response& response) {
              response.body = platform::Bytes("\x07\xFF\x00\x13 this is neither a quote nor a story \xC3"s);
          }},
    Fault{"cut", cutDocument},
    Fault{"unknown-story-type", renameTypeOfLastStory},
    Fault{"huge", [](Response& response) { response.body = platform::Bytes(std::string(80U << 20, ' ')); }},
};

constexpr std::string_view newsPath = "/newsapi/app/get_news_ranking/main_home_page/allnews/";
constexpr std::string_view quotesPath = "/swiftapi/v1/markets/multi-asset-info";
constexpr std::string_view portfolioPath = "/portfolioapi/summary";
constexpr std::string_view thumbnailPath = "/thumbnails/";

Response missing() { return {.status = 404, .body = platform::Bytes("not found\n")}; }

struct Story {
    std::string_view headline;
    std::string_view type;
    std::string_view address;
};

// More than a widget shows, with every type among the first seven. Each headline fits in two lines, so that
// the news widget does not cut it.
constexpr std::array stories{
    Story{"Sensex climbs past 85,000 as banks lead gains", "liveblog", "markets/sensex-nifty-live-blog"},
    Story{"Household savings move into index funds at a record pace", "news",
          "personal-finance/index-fund-flows"},
    Story{"The morning bell: what a steady rupee means for exporters", "podcast",
          "podcasts/morning-bell-214"},
    Story{"Watch: inside the terminal that could halve shipping times", "videos",
          "videos/container-terminal"},
    Story{"In pictures: monsoon returns to the hill stations", "photogallery", "photos/monsoon-hills"},
    Story{"Kaveri Textiles posts record profit and a ₹12 dividend", "text",
          "business/kaveri-textiles-results"},
    Story{"Why patient money still beats clever money", "blogs", "opinion/patient-money"},
    Story{"Home loans get cheaper as two lenders trim their rates", "news",
          "personal-finance/home-loan-rates"},
};

// The stories move up slowly, so that somebody who watches the widget sees new ones.
constexpr std::chrono::minutes turnover{30};

Response news(const Request& request, platform::Instant now, const std::string& origin) {
    const auto wanted = [&](std::string_view name, std::size_t otherwise) {
        const std::string text = serving::queryValue(request.query, name).value_or("");
        return text.empty() || text.size() > 3 ? otherwise : std::strtoul(text.c_str(), nullptr, 10);
    };
    const std::size_t start = wanted("start", 0);
    // More than asked for, as the real service does too.
    const std::size_t count = std::min(wanted("limit", 5) + 2, stories.size());
    const auto turn = static_cast<std::size_t>(now.time_since_epoch() / turnover);

    ordered_json list = ordered_json::array();
    for (std::size_t place = start; place < start + count; ++place) {
        // The live blog stays on top; the others move up one place at every turnover.
        const std::size_t index = place == 0 ? 0 : 1 + (place - 1 + turn) % (stories.size() - 1);
        const Story& story = stories.at(index);
        list.push_back({{"headline", story.headline},
                        {"story_id", std::to_string(12700100 + index)},
                        {"thumbnail", origin + std::string(thumbnailPath) + std::to_string(index) + ".jpg"},
                        {"timeago", std::to_string(4 + place * 11) + " min ago"},
                        {"share_url", "https://www.brightledger.invalid/" + std::string(story.address)},
                        {"story_type", story.type}});
    }
    return jsonResponse({{"status", "success"}, {"list", list}});
}

Response thumbnail(const Request& request, const std::filesystem::path& pictures) {
    const std::string name = request.path.substr(thumbnailPath.size());
    if (name != std::to_string(std::strtoul(name.c_str(), nullptr, 10)) + ".jpg") return missing();
    const auto picture = platform::readFile(pictures / name, 1U << 20);
    return picture ? Response{.contentType = "image/jpeg", .body = platform::Bytes(*picture)} : missing();
}

struct Holding {
    std::string_view priceIdentifier;
    double count;
    double cost;
};

constexpr std::array holdings{
    Holding{"KVT-EQ", 240, 1392.40},
    Holding{"MLB-EQ", 520, 871.15},
    Holding{"NLS-EQ", 85, 3290.00},
    Holding{"SHP-EQ", 300, 318.60},
};

std::string percent(double part, double whole) { return twoDecimals(std::abs(part) / whole * 100.0); }

ordered_json movingPortfolio(platform::Instant now) {
    double invested = 0.0;
    double worth = 0.0;
    double change = 0.0;
    for (const Holding& holding : holdings) {
        const Price price = priceAt(instrumentFor(holding.priceIdentifier), now);
        invested += holding.count * holding.cost;
        worth += holding.count * price.current;
        change += holding.count * price.change;
    }
    const double over = worth - invested;
    return {{"name", "My portfolio"},
            {"investments", indianAmount(invested)},
            {"networth", indianAmount(worth)},
            {"change", indianAmount(std::abs(change))},
            {"percentchange", percent(change, worth - change)},
            {"direction", direction(change)},
            {"over_change", indianAmount(std::abs(over))},
            {"over_percentchange", percent(over, invested)},
            {"over_direction", direction(over)},
            {"over_realized", "0.00"},
            {"realized_direction", "0"},
            {"stk_latest_value", indianAmount(worth)},
            {"no_of_stocks", holdings.size()},
            {"portfolio_unit", "INR"},
            {"redirect_url", ""},
            {"userType", "registered"}};
}

Response portfolio(const Request& request, platform::Instant now) {
    const auto& users = DemoService::users();
    const auto user =
        std::ranges::find(users, serving::queryValue(request.query, "uname").value_or(""), &DemoUser::userId);
    // The same answer for an unknown user and a wrong token, so that it does not reveal which users exist.
    if (user == users.end() || serving::queryValue(request.query, "token") != user->token)
        return jsonResponse({{"status", "failure"}, {"message", "Invalid session"}}, 401);
    if (user->userId == users[1].userId) return jsonResponse({{"portfoliosummary", nullptr}});
    ordered_json figures = movingPortfolio(now);
    if (user->userId == users[2].userId)
        figures = {{"name", "Empty"}, {"investments", "0"}, {"no_of_stocks", 0}};
    return jsonResponse({{"portfoliosummary", {{"networth_details", figures}}}});
}

/// A record as the phone app stores it for the widget.
ordered_json record(const Instrument& instrument, platform::Instant now) {
    ordered_json record{{"title", instrument.title},
                        {"exchg", instrument.exchange},
                        {"id", instrument.id},
                        {"type", instrument.type},
                        {"symbol", instrument.symbol},
                        {"priceIdentifier", instrument.priceIdentifier},
                        {"link_flag", "1"}};
    if (instrument.type == "stock") record["market"] = "equity";
    if (instrument.type == "future") {
        record["instrument"] = instrument.instrument;
        record[instrument.instrument == "FUTIDX" ? "ind_id" : "sc_id"] = instrument.underlying;
        record["expiryDate"] = platform::formatInstant(now + std::chrono::days(28)).substr(0, 10);
    }
    return record;
}

Response catalogueResponse(platform::Instant now) {
    ordered_json records = ordered_json::array();
    for (const Instrument& instrument : catalogue()) records.push_back(record(instrument, now));
    return jsonResponse(records);
}

}  // namespace

Response serviceAnswer(const Request& request, platform::Instant now, const std::string& origin,
                       const std::filesystem::path& pictures) {
    if (request.path == quotesPath) {
        return quotesResponse(request, now, [now](const Instrument& instrument, std::size_t) {
            return priceAt(instrument, now);
        });
    }
    if (request.path == portfolioPath) return portfolio(request, now);
    if (request.path.starts_with(thumbnailPath)) return thumbnail(request, pictures);
    return request.path == newsPath ? news(request, now, origin) : missing();
}

struct DemoService::Implementation {
    Response answer(const Request& request);
    Response control(const Request& request);

    std::filesystem::path pictures;
    platform::Clock systemClock;
    const platform::Clock* clock = &systemClock;
    std::atomic<const Fault*> fault{&faults.front()};
    /// Guards `origin`: the server knows its port only when it listens, and may be asked at once.
    std::mutex mutex;
    std::string origin;
    std::unique_ptr<serving::HttpServer> server;
};

Response DemoService::Implementation::answer(const Request& request) {
    if (request.path.starts_with("/demo/")) return control(request);
    // The extension sends its method in lower case.
    if (!request.isMethod("GET")) return {.status = 405, .body = platform::Bytes("only GET is supported\n")};
    const Fault* current = fault;
    const auto [now, ownOrigin] = [&] {
        const std::lock_guard lock(mutex);
        return std::pair(clock->now(), origin);
    }();
    if (request.path.starts_with(scenePrefix)) return sceneAnswer(request, ownOrigin);
    Response response = serviceAnswer(request, now, ownOrigin, pictures);
    current->spoil(response);
    return response;
}

Response DemoService::Implementation::control(const Request& request) {
    if (request.isMethod("POST") && request.path == "/demo/fault") {
        const auto named = std::ranges::find(faults, std::string_view(request.body), &Fault::name);
        if (named == faults.end()) return {.status = 400, .body = platform::Bytes("no such fault\n")};
        fault = &*named;
        return {.body = platform::Bytes(std::string(named->name) + "\n")};
    }
    if (!request.isMethod("GET")) return missing();
    if (request.path == "/demo/fault")
        return {.body = platform::Bytes(std::string(fault.load()->name) + "\n")};
    if (request.path == "/demo/catalogue") return catalogueResponse(clock->now());
    if (request.path != "/demo/users") return missing();
    ordered_json list = ordered_json::array();
    const std::lock_guard lock(mutex);
    for (const DemoUser& user : users()) {
        list.push_back({{"name", user.name},
                        {"description", user.description},
                        {"userId", user.userId},
                        {"token", user.token},
                        {"userPortfolio", origin + std::string(portfolioPath) + "?format=json"}});
    }
    return jsonResponse(list);
}

platform::Result<std::unique_ptr<DemoService>> DemoService::start(std::filesystem::path pictures,
                                                                  std::uint16_t port,
                                                                  const platform::Clock* clock) {
    auto implementation = std::make_unique<Implementation>();
    implementation->pictures = std::move(pictures);
    if (clock != nullptr) implementation->clock = clock;
    const std::lock_guard lock(implementation->mutex);
    auto server = serving::HttpServer::start(
        port, [&service = *implementation](const Request& request) { return service.answer(request); });
    if (!server) return tl::unexpected(server.error());
    implementation->server = std::move(*server);
    implementation->origin = implementation->server->origin();
    return std::unique_ptr<DemoService>(new DemoService(std::move(implementation)));
}

DemoService::DemoService(std::unique_ptr<Implementation> implementation)
    : implementation_(std::move(implementation)) {}

DemoService::~DemoService() { implementation_->server.reset(); }

std::string DemoService::origin() const { return implementation_->server->origin(); }

const std::vector<DemoUser>& DemoService::users() {
    static const std::vector<DemoUser> users{
        {"asha", "10042", "demo-a7c1", "a portfolio of four stocks"},
        {"vikram", "10043", "demo-v3f9", "no portfolio yet"},
        {"meera", "10044", "demo-m5d2", "a portfolio with nothing invested"},
    };
    return users;
}

std::string DemoService::portfolioAddress() const {
    return origin() + std::string(portfolioPath) + "?format=json";
}

}  // namespace demo
