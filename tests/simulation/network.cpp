#include "tests/simulation/network.h"

#include <array>
#include <utility>
#include "demo/service.h"
#include "serving/http_server.h"

namespace simulation {
namespace {

using platform::Bytes;
using platform::HTTPResponse;
using platform::Result;
using platform::URLRequest;
namespace url_error = platform::url_error;

constexpr std::array statuses{204, 304, 400, 401, 404, 429, 500, 503};

/// Every user's portfolio is another, so that a picture says whose it is.
serving::Response portfolioOf(const std::string& userId) {
    const std::string mark = markOf(userId);
    return {.contentType = "application/json",
            .body = Bytes(
                R"({"portfoliosummary":{"networth_details":{"name":"P","investments":"1.00","networth":")" +
                mark + R"(","change":"1.00","percentchange":"1.00","direction":"1","over_change":"1.00",)" +
                R"("over_percentchange":"1.00","over_direction":"1","over_realized":"0.00",)" +
                R"("realized_direction":"0","stk_latest_value":")" + mark +
                R"(","no_of_stocks":4,"portfolio_unit":"INR","redirect_url":"","userType":"registered"}}})")};
}

}  // namespace

std::string markOf(const std::string& userId) { return "7,77," + userId + ".77"; }

SimulatedNetwork::SimulatedNetwork(Executor& executor, Random& random, const NetworkWeather& weather,
                                   std::function<platform::Instant()> now)
    : executor_(executor), random_(random), weather_(weather), now_(std::move(now)) {}

void SimulatedNetwork::start(URLRequest request, platform::DataTaskCompletion completion) {
    std::chrono::milliseconds delay = random_.around(std::chrono::milliseconds(80));
    Result<HTTPResponse> response = answer(request);
    if (random_.happens(weather_.late)) delay = random_.around(std::chrono::seconds(40));
    if (random_.happens(weather_.lost) || delay > request.timeoutInterval) {
        delay = request.timeoutInterval;
        response = tl::unexpected(platform::urlError(url_error::timedOut));
    }
    executor_.after(delay, [this, life = std::weak_ptr(life_), completion = std::move(completion),
                            response = std::move(response)] {
        if (!life.expired()) run_([&] { completion(response); });
    });
}

Result<HTTPResponse> SimulatedNetwork::load(URLRequest request) { return answer(request); }

Result<HTTPResponse> SimulatedNetwork::answer(const URLRequest& request) {
    if (random_.happens(weather_.refused))
        return tl::unexpected(platform::urlError(url_error::cannotConnectToHost));
    const std::string& text = request.url.text();
    const std::size_t path = text.find('/', std::string_view("http://").size());
    const std::size_t query = text.find('?', path);
    serving::Request asked;
    asked.method = request.method;
    asked.path = text.substr(path, query - path);
    if (query != std::string::npos) asked.query = text.substr(query + 1);
    const auto user = serving::queryValue(asked.query, "uname");
    // Small pictures, so that more days go into an hour.
    serving::Response answered = user ? portfolioOf(*user)
                                 : asked.path.starts_with("/thumbnails/")
                                     ? serving::Response{.body = Bytes("a picture")}
                                     : demo::serviceAnswer(asked, now_(), serviceOrigin, {});
    if (random_.happens(weather_.wrongStatus)) answered.status = random_.oneOf(statuses);
    std::string body(answered.body.view());
    if (random_.happens(weather_.damaged) && !body.empty()) {
        if (random_.happens(0.5)) {
            body.resize(random_.below(body.size()));
        } else {
            body[random_.below(body.size())] ^= static_cast<char>(1U << random_.below(8));
        }
    }
    HTTPResponse response;
    response.statusCode = answered.status;
    response.peerAddress = "192.0.2.1";
    if (!body.empty()) response.body = Bytes(std::move(body));
    return response;
}

}  // namespace simulation
