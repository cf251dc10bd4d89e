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
    client.send("get /a?b=c HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_THAT(client.read("get /a b=c "), StartsWith("HTTP/1.1 200 OK\r\n"));
    client.send("POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 3\r\nConnection: close\r\n\r\nabc");
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
    first.send("GET / HTTP/1.1\r\nHost: x\r\n\r\n");
    ASSERT_THAT(first.read("GET /  "), StartsWith("HTTP/1.1 200"));
    RawClient second(server->port());
    second.send("GET / HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_EQ(second.read(), "");

    first.send("GET / HT");
    EXPECT_EQ(first.read(), "");
    EXPECT_EQ(first.error(), boost::asio::error::eof);
}

TEST(HttpServer, AHandlerThatThrowsCostsOneAnswer) {
    const auto server = serverWith([](const Request& request) -> Response {
        if (request.path == "/bad") throw std::runtime_error("no");
        return echo(request);
    });
    RawClient client(server->port());
    client.send("GET /bad HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_THAT(client.read("answered\n"), StartsWith("HTTP/1.1 500"));
    client.send("GET /good HTTP/1.1\r\nHost: x\r\n\r\n");
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
    cut.send("GET /cut HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_THAT(cut.read(), testing::AllOf(HasSubstr("Content-Length: 10\r\n"), EndsWith("\r\n\r\n01234")));
    RawClient reset(server->port());
    reset.send("GET /reset HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_EQ(reset.read(), "");
    EXPECT_EQ(reset.error(), boost::asio::error::connection_reset);
}

TEST(HttpServer, PushesEventsFromAnyThreadUntilTheStreamGoes) {
    auto stream = std::make_shared<EventStream>();
    const auto server = serverWith(
        [&](const Request&) { return Response{.contentType = "text/event-stream", .stream = stream}; });
    stream->send("early", "before the reader came");
    RawClient client(server->port());
    client.send("GET / HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_THAT(client.read("came\n\n"), EndsWith("event: early\ndata: before the reader came\n\n"));
    std::thread([&] { stream->send("lines", "one\ntwo"); }).join();
    EXPECT_EQ(client.read("two\n\n"), "event: lines\ndata: one\ndata: two\n\n");
}

TEST(HttpServer, EndsAtOnceWhileReadersAreConnected) {
    auto stream = std::make_shared<EventStream>();
    auto server = serverWith([&](const Request&) { return Response{.stream = stream}; });
    RawClient client(server->port());
    client.send("GET / HTTP/1.1\r\nHost: x\r\n\r\n");
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
        slow.emplace_back(server->port()).send("GET /slow HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
    }
    RawClient quick(server->port());
    quick.send("GET /quick HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
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
