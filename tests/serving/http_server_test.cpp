#include "serving/http_server.h"
#include <gmock/gmock.h>
#include <deque>
#include <future>
#include <thread>
#include "tests/support/raw_client.h"

namespace serving {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using tests::RawClient;

std::unique_ptr<HttpServer> serverWith(HttpServer::Handler handler, ServerLimits limits = {}) {
    auto server = HttpServer::start(0, std::move(handler), limits);
    EXPECT_TRUE(server);
    return std::move(*server);
}

Response echo(const Request& request) {
    return {.body = platform::Bytes(request.method + " " + request.path + " " + request.query + " " +
                                    request.body)};
}

TEST(HttpServer, HandsTheMethodOnLetterByLetterAndKeepsTheConnection) {
    const auto server = serverWith(echo);
    RawClient client(server->port());
    client.send("get /a?b=c HTTP/1.1\r\n" + client.host() + "\r\n");
    EXPECT_THAT(client.read("get /a b=c "), StartsWith("HTTP/1.1 200 OK\r\n"));
    client.send("POST / HTTP/1.1\r\n" + client.host() + "Content-Length: 3\r\nConnection: close\r\n\r\nabc");
    EXPECT_THAT(client.read(), EndsWith("POST /  abc"));
}

TEST(HttpServer, AnswersWhatIsTooLargeOrNoRequestAndCloses) {
    const struct {
        std::string sent;
        const char* status;
    } cases[] = {
        {"GET / HTTP/1.1\r\nX: " + std::string(5000, 'x') + "\r\n\r\n", "HTTP/1.1 431"},
        {"POST / HTTP/1.1\r\nContent-Length: 101\r\n\r\n", "HTTP/1.1 413"},
        {"what is this\r\n\r\n", "HTTP/1.1 400"},
        {"GET / HTTP/1.1\r\nContent-Length: -1\r\n\r\n", "HTTP/1.1 400"},
    };
    const auto server = serverWith(echo, {.headerBytes = 4096, .bodyBytes = 100});
    for (const auto& [sent, status] : cases) {
        RawClient client(server->port());
        client.send(sent);
        EXPECT_THAT(client.read(), StartsWith(status));
    }
}

TEST(HttpServer, ClosesAConnectionThatIsSilentOrOneTooMany) {
    const auto server = serverWith(echo, {.connections = 1, .idle = std::chrono::milliseconds(200)});
    RawClient first(server->port());
    first.send("GET / HTTP/1.1\r\n" + first.host() + "\r\n");
    ASSERT_THAT(first.read("GET /  "), StartsWith("HTTP/1.1 200"));
    RawClient second(server->port());
    second.send("GET / HTTP/1.1\r\n" + second.host() + "\r\n");
    EXPECT_EQ(second.read(), "");

    first.send("GET / HT");
    EXPECT_EQ(first.read(), "");
    EXPECT_EQ(first.error(), boost::asio::error::eof);
}

TEST(HttpServer, LetsInWhoHasTheKeyHoweverManyWaitAtTheDoor) {
    auto server = HttpServer::start(
        0, echo, {.connections = 9, .strangers = 4, .strangerRequest = std::chrono::milliseconds(300)},
        [](const Request& request) { return request.path == "/key"; });
    ASSERT_TRUE(server);
    RawClient friendly((*server)->port());
    const auto isServed = [&](RawClient& client) {
        client.send("GET /key HTTP/1.1\r\n" + client.host() + "\r\n");
        return client.read("GET /key  ").starts_with("HTTP/1.1 200");
    };
    EXPECT_TRUE(isServed(friendly));
    std::deque<RawClient> silent;
    for (int i = 0; i < 40; ++i) silent.emplace_back((*server)->port());
    RawClient late((*server)->port());
    EXPECT_TRUE(isServed(late));
    EXPECT_TRUE(isServed(friendly));
    // Each stranger is sent away: for the next one, or when its time is up; one that asks, after its answer.
    for (RawClient& client : silent) EXPECT_EQ(client.read(), "");
    RawClient stranger((*server)->port());
    stranger.send("GET / HTTP/1.1\r\n" + stranger.host() + "\r\n");
    EXPECT_THAT(stranger.read(), EndsWith("GET /  "));
}

TEST(HttpServer, LetsNoOtherNamePageOrSecondRequestIn) {
    const auto server = serverWith(echo);
    const std::string own = RawClient(server->port()).host();
    const std::string origin = "Origin: http://" + own.substr(6);
    const struct {
        std::string headers;
        int status;
    } cases[] = {
        {own, 200},
        {own + origin, 200},
        {own + "Sec-Fetch-Site: none\r\n", 200},
        {own + "sec-fetch-site: same-origin\r\n", 200},
        {"", 421},
        {"Host: localhost:" + own.substr(16), 421},
        {"Host: 127.0.0.1\r\n", 421},
        {own + "Host: evil.invalid\r\n", 400},
        {own + own, 400},
        {own + "Origin: http://evil.invalid\r\n", 403},
        {own + "Origin: null\r\n", 403},
        {own + "Sec-Fetch-Site: cross-site\r\n", 403},
        {own + "Sec-Fetch-Site: same-site\r\n", 403},
    };
    for (const auto& [headers, status] : cases) {
        RawClient client(server->port());
        client.send("GET / HTTP/1.1\r\nConnection: close\r\n" + headers + "\r\n");
        EXPECT_THAT(client.read(), StartsWith("HTTP/1.1 " + std::to_string(status))) << headers;
    }
    for (const std::string coding : {"gzip", "chunked, identity", "chunked\r\nTransfer-Encoding: gzip"}) {
        RawClient client(server->port());
        client.send("POST / HTTP/1.1\r\n" + own + "Transfer-Encoding: " + coding + "\r\n\r\n0\r\n\r\n" +
                    "GET /second HTTP/1.1\r\n" + own + "\r\n");
        const std::string text = client.read();
        EXPECT_THAT(text, testing::AnyOf(StartsWith("HTTP/1.1 501"), StartsWith("HTTP/1.1 400"))) << coding;
        EXPECT_THAT(text, Not(HasSubstr("second"))) << coding;
    }
}

TEST(HttpServer, AHandlerThatThrowsCostsOneAnswer) {
    const auto server = serverWith([](const Request& request) -> Response {
        if (request.path == "/bad") throw std::runtime_error("no");
        return echo(request);
    });
    RawClient client(server->port());
    client.send("GET /bad HTTP/1.1\r\n" + client.host() + "\r\n");
    EXPECT_THAT(client.read("answered\n"), StartsWith("HTTP/1.1 500"));
    client.send("GET /good HTTP/1.1\r\n" + client.host() + "\r\n");
    EXPECT_THAT(client.read("GET /good  "), StartsWith("HTTP/1.1 200"));
}

TEST(HttpServer, BreaksTheConnectionWhenItIsAskedTo) {
    const auto server = serverWith([](const Request& request) {
        Response response = echo(request);
        response.body = platform::Bytes("0123456789");
        response.ending = request.path == "/cut" ? Response::Ending::cut : Response::Ending::reset;
        return response;
    });
    RawClient cut(server->port());
    cut.send("GET /cut HTTP/1.1\r\n" + cut.host() + "\r\n");
    EXPECT_THAT(cut.read(), testing::AllOf(HasSubstr("Content-Length: 10\r\n"), EndsWith("\r\n\r\n01234")));
    RawClient reset(server->port());
    reset.send("GET /reset HTTP/1.1\r\n" + reset.host() + "\r\n");
    EXPECT_EQ(reset.read(), "");
    EXPECT_EQ(reset.error(), boost::asio::error::connection_reset);
}

TEST(HttpServer, PushesEventsFromAnyThreadUntilTheStreamGoes) {
    auto stream = std::make_shared<EventStream>();
    const auto server = serverWith(
        [&](const Request&) { return Response{.contentType = "text/event-stream", .stream = stream}; });
    stream->send("early", "before the reader came");
    RawClient client(server->port());
    client.send("GET / HTTP/1.1\r\n" + client.host() + "\r\n");
    EXPECT_THAT(client.read("came\n\n"), EndsWith("event: early\ndata: before the reader came\n\n"));
    std::thread([&] { stream->send("lines", "one\ntwo"); }).join();
    EXPECT_EQ(client.read("two\n\n"), "event: lines\ndata: one\ndata: two\n\n");
}

TEST(HttpServer, EndsAtOnceWhileReadersAreConnected) {
    auto stream = std::make_shared<EventStream>();
    auto server = serverWith([&](const Request&) { return Response{.stream = stream}; });
    RawClient client(server->port());
    client.send("GET / HTTP/1.1\r\n" + client.host() + "\r\n");
    client.read("\r\n\r\n");
    const auto start = std::chrono::steady_clock::now();
    server.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_EQ(client.read(), "");
    stream->send("late", "nobody hears it");
}

TEST(HttpServer, AnswersOthersWhileWhatTakesLongIsUnderWay) {
    std::promise<void> release;
    const auto server = serverWith([&, held = release.get_future().share()](const Request& request) {
        if (request.path != "/slow") return echo(request);
        return Response{.later = [held] {
            held.wait();
            return Response{.status = 202};
        }};
    });
    std::deque<RawClient> slow;
    for (int i = 0; i < 10; ++i) {
        RawClient& client = slow.emplace_back(server->port());
        client.send("GET /slow HTTP/1.1\r\n" + client.host() + "Connection: close\r\n\r\n");
    }
    RawClient quick(server->port());
    quick.send("GET /quick HTTP/1.1\r\n" + quick.host() + "Connection: close\r\n\r\n");
    EXPECT_THAT(quick.read(), StartsWith("HTTP/1.1 200"));
    release.set_value();
    for (RawClient& client : slow) EXPECT_THAT(client.read(), StartsWith("HTTP/1.1 202"));
}

TEST(HttpServer, SaysThatAPortIsTaken) {
    const auto server = serverWith(echo);
    const auto second = HttpServer::start(server->port(), echo);
    ASSERT_FALSE(second);
    EXPECT_THAT(second.error().message, HasSubstr("cannot listen on port"));
}

TEST(Queries, AreTakenApartAndDecoded) {
    const struct {
        const char* query;
        std::optional<std::string> value;
    } cases[] = {
        {"a=1&b=2", "2"}, {"b=x%3By+z", "x;y z"}, {"b", ""}, {"b=%4", "%4"}, {"b=1&b=2", "1"}, {"a=b", {}},
        {"", {}},
    };
    for (const auto& [query, value] : cases) EXPECT_EQ(queryValue(query, "b"), value) << query;
}

}  // namespace
}  // namespace serving
