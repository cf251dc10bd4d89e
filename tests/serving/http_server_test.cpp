#include "serving/http_server.h"
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>
#include <deque>
#include <future>
#include <thread>

namespace serving {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

/// One connection, in the raw: what is sent goes out as it stands.
class Client {
public:
    explicit Client(const HttpServer& server) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(server.port());
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const timeval limit{5, 0};
        ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        EXPECT_EQ(::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }
    ~Client() { ::close(socket_); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    void send(std::string_view text) { ::send(socket_, text.data(), text.size(), MSG_NOSIGNAL); }

    /// Reads until `ending` has come, or to the end of the connection.
    std::string read(std::string_view ending = {}) {
        std::string text;
        char piece[4096];
        while (ending.empty() || !text.ends_with(ending)) {
            const ssize_t count = ::recv(socket_, piece, sizeof piece, 0);
            error_ = count < 0 ? errno : 0;
            if (count <= 0) break;
            text.append(piece, static_cast<std::size_t>(count));
        }
        return text;
    }
    int error() const { return error_; }

private:
    int socket_;
    int error_ = 0;
};

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
    Client client(*server);
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
        Client client(*server);
        client.send(sent);
        EXPECT_THAT(client.read(), StartsWith(status));
    }
}

TEST(HttpServer, ClosesAConnectionThatIsSilentOrOneTooMany) {
    const auto server = serverWith(echo, {.connections = 1, .idle = std::chrono::milliseconds(200)});
    Client first(*server);
    first.send("GET / HTTP/1.1\r\nHost: x\r\n\r\n");
    ASSERT_THAT(first.read("GET /  "), StartsWith("HTTP/1.1 200"));
    Client second(*server);
    second.send("GET / HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_EQ(second.read(), "");

    first.send("GET / HT");
    EXPECT_EQ(first.read(), "");
    EXPECT_EQ(first.error(), 0);
}

TEST(HttpServer, AHandlerThatThrowsCostsOneAnswer) {
    const auto server = serverWith([](const Request& request) -> Response {
        if (request.path == "/bad") throw std::runtime_error("no");
        return echo(request);
    });
    Client client(*server);
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
    Client cut(*server);
    cut.send("GET /cut HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_THAT(cut.read(), testing::AllOf(HasSubstr("Content-Length: 10\r\n"), EndsWith("\r\n\r\n01234")));
    Client reset(*server);
    reset.send("GET /reset HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_EQ(reset.read(), "");
    EXPECT_EQ(reset.error(), ECONNRESET);
}

TEST(HttpServer, PushesEventsFromAnyThreadUntilTheStreamGoes) {
    auto stream = std::make_shared<EventStream>();
    const auto server = serverWith(
        [&](const Request&) { return Response{.contentType = "text/event-stream", .stream = stream}; });
    stream->send("early", "before the reader came");
    Client client(*server);
    client.send("GET / HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_THAT(client.read("came\n\n"), EndsWith("event: early\ndata: before the reader came\n\n"));
    std::thread([&] { stream->send("lines", "one\ntwo"); }).join();
    EXPECT_EQ(client.read("two\n\n"), "event: lines\ndata: one\ndata: two\n\n");
}

TEST(HttpServer, EndsAtOnceWhileReadersAreConnected) {
    auto stream = std::make_shared<EventStream>();
    auto server = serverWith([&](const Request&) { return Response{.stream = stream}; });
    Client client(*server);
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
    std::deque<Client> slow;
    for (int i = 0; i < 10; ++i) {
        slow.emplace_back(*server).send("GET /slow HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
    }
    Client quick(*server);
    quick.send("GET /quick HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
    EXPECT_THAT(quick.read(), StartsWith("HTTP/1.1 200"));
    release.set_value();
    for (Client& client : slow) EXPECT_THAT(client.read(), StartsWith("HTTP/1.1 202"));
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
