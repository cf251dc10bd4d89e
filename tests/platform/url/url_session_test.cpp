#include "platform/url/url_session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include "tests/support/loopback_server.h"
#include "tests/support/waiting.h"

namespace platform {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using tests::Answer;
using tests::Awaited;
using tests::LoopbackServer;
using tests::ReceivedRequest;
using Ending = tests::Answer::Ending;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

URL address(const std::string& text) { return URL::parse(text).value(); }

Result<HTTPResponse> loaded(URLLoader& loader, URLRequest request) {
    return loader.load(std::move(request), steady_clock::now() + 30s);
}

Result<HTTPResponse> loaded(URLLoader& loader, const std::string& text) {
    return loaded(loader, URLRequest{.url = address(text)});
}

int errorCode(const Result<HTTPResponse>& result) { return result ? 0 : result.error().code; }

/// An origin at which nobody listens any more.
std::string deadOrigin() { return LoopbackServer().origin(); }

TEST(URLLoader, SendsMethodHeadersAndBodyLetterByLetterWithoutAskingForLeaveAndAddsNothing) {
    LoopbackServer server;
    server.answer({.body = "fine"});
    URLLoader loader;
    const std::string body(300'000, 'x');

    const auto response = loaded(loader, {.url = address(server.origin() + "/a/../b?ids=in;SEN-II,in;NSX-II"),
                                          .method = "post",
                                          .headers = {{"Content-Type", "application/json"}},
                                          .body = Bytes(body)});
    ASSERT_TRUE(response) << response.error().message;
    EXPECT_EQ(response->statusCode, 200);
    EXPECT_EQ(response->body, Bytes("fine"));
    ASSERT_TRUE(loaded(loader, {.url = address(server.origin()), .method = "POST", .body = Bytes("{}")}));
    ASSERT_TRUE(loaded(loader, {.url = address(server.origin()), .method = "POST"}));

    const auto requests = server.requests();
    EXPECT_EQ(requests.at(0).method, "post");
    EXPECT_EQ(requests.at(0).target, "/a/../b?ids=in;SEN-II,in;NSX-II");
    EXPECT_EQ(requests.at(0).header("content-type"), "application/json");
    EXPECT_EQ(requests.at(0).headers.count("content-type"), 1U);
    EXPECT_EQ(requests.at(0).body, body);
    EXPECT_EQ(requests.at(0).header("expect"), std::nullopt);
    EXPECT_EQ(requests.at(1).header("content-type"), std::nullopt);
    EXPECT_EQ(requests.at(2).header("content-length"), "0");
}

TEST(URLLoader, AsksForTheDevicesLanguageUnlessTheRequestNamesOne) {
    for (const auto& [locale, language] : {std::pair{"en_IN", "en-IN, en;q=0.9"},
                                           {"hi", "hi"},
                                           {"C", "en-US, en;q=0.9"},
                                           {"", "en-US, en;q=0.9"},
                                           {"zh_Hans_CN.UTF-8", "zh-Hans-CN, zh;q=0.9"}})
        EXPECT_EQ(acceptLanguage({locale}), language);

    LoopbackServer server;
    server.answer({.body = "fine"});
    server.answer("/old", Answer::redirect(302, "/new"));
    URLLoader loader(acceptLanguage({"en_IN"}));
    const auto response = loaded(loader, server.origin() + "/old");
    ASSERT_TRUE(response);
    EXPECT_EQ(response->peerAddress, "127.0.0.1");
    loaded(loader, {.url = address(server.origin()), .headers = {{"accept-language", "fr"}}});

    std::vector<std::string> languages;
    for (const ReceivedRequest& request : server.requests()) {
        EXPECT_EQ(request.headers.count("accept-language"), 1U);
        languages.push_back(request.header("accept-language").value_or(""));
    }
    EXPECT_THAT(languages, ElementsAre("en-IN, en;q=0.9", "en-IN, en;q=0.9", "fr"));
}

TEST(URLLoader, DecodesBodiesAndSaysWhatHeadersCame) {
    const std::string text = "some text, some text, some text";
    const struct {
        const char* name;
        Answer answer;
    } cases[] = {
        {"plain", {.body = text}},
        {"chunked", {.body = text, .pieceSize = 3, .isChunked = true}},
        {"gzip", {.body = text, .isGzip = true}},
        {"gzip in chunks", {.body = text, .pieceSize = 3, .isChunked = true, .isGzip = true}},
        {"the last one", {.body = text, .headers = {{"Connection", "close"}}}},
        {"empty", {.status = 200}},
        {"no content", {.status = 204}},
        {"not modified", {.status = 304}},
    };
    LoopbackServer server;
    URLLoader loader;
    for (const auto& [name, answer] : cases) {
        Answer named = answer;
        named.headers.insert(named.headers.end(), {{"X-Name", "  first"}, {"x-name", name}});
        server.answer(named);
        const auto response = loaded(loader, server.origin());
        ASSERT_TRUE(response) << name;
        EXPECT_EQ(response->statusCode, answer.status);
        // An empty body is no body.
        EXPECT_EQ(response->body, answer.body.empty() ? std::nullopt : std::optional(Bytes(text))) << name;
        EXPECT_EQ(response->headers.at("x-name"), name);
    }
}

TEST(URLLoader, EveryFaultHasItsError) {
    const std::string body(10'000, 'b');
    const struct {
        const char* name;
        Answer answer;
        int code;
    } cases[] = {
        {"cut", {.body = body, .ending = Ending::cut}, url_error::networkConnectionLost},
        {"cut in chunks",
         {.body = body, .isChunked = true, .ending = Ending::cut},
         url_error::networkConnectionLost},
        {"reset", {.body = body, .ending = Ending::reset}, url_error::networkConnectionLost},
        {"closed", {.ending = Ending::noAnswer}, url_error::networkConnectionLost},
        {"reset at once", {.ending = Ending::noAnswerReset}, url_error::networkConnectionLost},
        {"shorter than said", {.body = body, .declaredLength = 20'000}, url_error::networkConnectionLost},
        {"not gzip",
         {.body = body, .headers = {{"Content-Encoding", "gzip"}}},
         url_error::cannotDecodeContentData},
        {"silence", {.ending = Ending::silence}, url_error::timedOut},
        {"endless headers",
         {.headers = {400, {"X-Long", std::string(1000, 'x')}}},
         url_error::badServerResponse},
    };
    URLLoader loader;
    for (const auto& [name, answer, code] : cases) {
        LoopbackServer server;
        server.answer(answer);
        const auto response =
            loaded(loader, {.url = address(server.origin() + "/?token=secret"), .timeoutInterval = 300ms});
        EXPECT_EQ(errorCode(response), code) << name;
        ASSERT_FALSE(response) << name;
        EXPECT_THAT(response.error().message, Not(HasSubstr("secret"))) << name;
    }
    const std::pair<std::string, int> addresses[] = {
        {deadOrigin(), url_error::cannotConnectToHost},
        {"http:///path", url_error::cannotFindHost},
        {"http://name.invalid/", url_error::cannotFindHost},
        {"http://127.0.0.1:99999/", url_error::badURL},
        {"/news/?start=0", url_error::unsupportedURL},
        {"news", url_error::unsupportedURL},
        {"file:///etc/passwd", url_error::unsupportedURL},
        {"ftp://127.0.0.1/", url_error::unsupportedURL},
        {"data:,x", url_error::unsupportedURL},
        {"brightledgerwidget://login", url_error::unsupportedURL},
    };
    for (const auto& [text, code] : addresses) EXPECT_EQ(errorCode(loaded(loader, text)), code) << text;
}

TEST(URLLoader, AnAnswerIsTimedOutWhenItStopsMovingOrMissesTheDeadlineButNotBecauseItIsSlow) {
    LoopbackServer server;
    server.answer("/slow", {.body = "0123456789", .pieceSize = 1, .pause = 100ms});
    // Compressed bytes that yield nothing for a while count as well.
    server.answer("/gzip", {.body = "0123456789", .pieceSize = 3, .pause = 100ms, .isGzip = true});
    server.answer("/stops", {.body = "0123456789", .pieceSize = 5, .pause = 5s});
    server.answer("/moves", {.body = std::string(1000, 'x'), .pieceSize = 1, .pause = 20ms});
    URLLoader loader;
    const auto begin = steady_clock::now();
    for (const auto& [path, code] : {std::pair{"/slow", 0}, {"/gzip", 0}, {"/stops", url_error::timedOut}}) {
        const auto response =
            loaded(loader, {.url = address(server.origin() + path), .timeoutInterval = 450ms});
        EXPECT_EQ(errorCode(response), code) << path;
        EXPECT_EQ(response ? response->body : std::nullopt,
                  code == 0 ? std::optional(Bytes("0123456789")) : std::nullopt);
    }
    const auto late = loader.load({.url = address(server.origin() + "/moves")}, steady_clock::now() + 300ms);
    EXPECT_EQ(errorCode(late), url_error::timedOut);
    EXPECT_LT(steady_clock::now() - begin, 6s);
}

TEST(URLLoader, CutsADecodedBodyThatIsTooLong) {
    LoopbackServer server;
    URLLoader loader;
    // A bomb: a few kilobytes on the wire.
    server.answer({.body = std::string(5'000'000, '\0'), .isGzip = true});
    const auto bomb = loaded(loader, {.url = address(server.origin()), .maximumBodySize = 1'000'000});
    EXPECT_EQ(errorCode(bomb), url_error::dataLengthExceedsMaximum);

    server.answer({.body = std::string(1000, 'x'), .isChunked = true});
    EXPECT_TRUE(loaded(loader, {.url = address(server.origin()), .maximumBodySize = 1000}));
    EXPECT_EQ(errorCode(loaded(loader, {.url = address(server.origin()), .maximumBodySize = 999})),
              url_error::dataLengthExceedsMaximum);
}

TEST(URLLoader, RedirectsKeepOrChangeMethodAndBody) {
    const struct {
        int status;
        std::string method;
        std::string methodAfter;
        bool keepsBody;
    } cases[] = {
        {301, "POST", "GET", false}, {302, "POST", "GET", false}, {302, "post", "GET", false},
        {301, "get", "get", true},   {302, "get", "get", true},   {303, "get", "GET", false},
        {303, "POST", "GET", false}, {307, "POST", "POST", true}, {308, "post", "post", true},
    };
    URLLoader loader;
    for (const auto& [status, method, methodAfter, keepsBody] : cases) {
        LoopbackServer server;
        server.answer("/old", Answer::redirect(status, "new?x=1"));
        server.answer("/new", {.body = "there"});
        const auto response = loaded(
            loader, {.url = address(server.origin() + "/old"), .method = method, .body = Bytes("body")});
        ASSERT_TRUE(response) << status << method;
        EXPECT_EQ(response->body, Bytes("there"));
        const ReceivedRequest after = server.requests().at(1);
        EXPECT_EQ(after.target, "/new?x=1");
        EXPECT_EQ(after.method, methodAfter) << status << method;
        EXPECT_EQ(after.body, keepsBody ? "body" : "") << status << method;
    }
}

TEST(URLLoader, RedirectsEndSomewhere) {
    LoopbackServer server;
    URLLoader loader;
    server.answer(Answer::redirect(302, "/again"));
    EXPECT_EQ(errorCode(loaded(loader, server.origin())), url_error::httpTooManyRedirects);
    EXPECT_EQ(server.requests().size(), 21U);

    server.answer(Answer::redirect(302, "file:///etc/passwd"));
    EXPECT_EQ(errorCode(loaded(loader, server.origin())), url_error::unsupportedURL);

    server.answer({.status = 302, .body = "nowhere to go"});
    EXPECT_EQ(loaded(loader, server.origin())->statusCode, 302);

    server.answer(Answer::redirect(304, "/again"));
    EXPECT_EQ(loaded(loader, server.origin())->statusCode, 304);
}

TEST(URLLoader, CredentialsDoNotGoAlongToAnotherOrigin) {
    LoopbackServer other;
    other.answer({.body = "other"});
    LoopbackServer server;
    server.answer("/near", Answer::redirect(307, "/there"));
    server.answer("/there", {.body = "own"});
    server.answer("/far", Answer::redirect(307, other.origin() + "/there"));
    URLLoader loader;
    const std::vector<std::pair<std::string, std::string>> headers{
        {"Authorization", "secret"}, {"cookie", "secret"}, {"X-Name", "value"}};

    ASSERT_TRUE(loaded(loader, {.url = address(server.origin() + "/near"), .headers = headers}));
    EXPECT_EQ(server.requests().at(1).header("authorization"), "secret");
    ASSERT_TRUE(loaded(loader, {.url = address(server.origin() + "/far"), .headers = headers}));
    EXPECT_EQ(other.requests().at(0).header("authorization"), std::nullopt);
    EXPECT_EQ(other.requests().at(0).header("cookie"), std::nullopt);
    EXPECT_EQ(other.requests().at(0).header("x-name"), "value");
}

TEST(URLLoader, KeepsConnectionsBetweenSessionsAndCountsWhatItDoes) {
    LoopbackServer server;
    server.answer({.body = "fine", .delay = 30ms});
    URLLoader loader;
    for (int i = 0; i < 3; ++i) {
        Awaited<Result<HTTPResponse>> answer;
        URLSession(loader).dataTask({.url = address(server.origin())}, answer.taker());
        ASSERT_TRUE(answer.value());
    }
    ASSERT_TRUE(loaded(loader, server.origin()));
    EXPECT_EQ(server.connectionCount(), 1);
    const auto statistics = loader.statistics();
    EXPECT_EQ(statistics.transfers, 4);
    EXPECT_EQ(statistics.connectionsOpened, 1);
    EXPECT_GE(statistics.busy, 120ms);
    EXPECT_LT(statistics.busy, 10s);
}

TEST(URLLoader, OpensSixConnectionsToAHostAndLetsTheRestWaitTheirTurn) {
    LoopbackServer server;
    server.answer({.body = "fine", .delay = 150ms});
    URLLoader loader;
    URLSession session(loader);
    std::vector<Awaited<Result<HTTPResponse>>> answers(9);
    for (auto& answer : answers) {
        // Waiting for a turn is not idle time.
        session.dataTask({.url = address(server.origin()), .timeoutInterval = 250ms}, answer.taker());
    }
    for (auto& answer : answers) EXPECT_TRUE(answer.value());
    EXPECT_EQ(server.connectionCount(), 6);
}

TEST(URLSession, RunsItsCompletionsOneAtATimeOnAnotherThread) {
    LoopbackServer server;
    server.answer({.body = "fine"});
    URLLoader loader;
    URLSession session(loader);
    std::atomic<int> running = 0;
    std::atomic<bool> haveMet = false;
    std::vector<Awaited<std::thread::id>> threads(5);
    for (auto& thread : threads) {
        session.dataTask({.url = address(server.origin())},
                         [&, taker = thread.taker()](const Result<HTTPResponse>&) {
                             if (running.fetch_add(1) > 0) haveMet = true;
                             std::this_thread::sleep_for(10ms);
                             --running;
                             taker(std::this_thread::get_id());
                         });
    }
    for (auto& thread : threads) EXPECT_NE(thread.value(), std::this_thread::get_id());
    EXPECT_FALSE(haveMet);
}

TEST(URLSession, ACompletionThatTakesItsTimeKeepsNoOtherSessionWaiting) {
    LoopbackServer server;
    server.answer({.body = "fine"});
    URLLoader loader;
    URLSession slow(loader);
    std::promise<void> release;
    Awaited<bool> isRunning;
    slow.dataTask(
        {.url = address(server.origin())},
        [taker = isRunning.taker(), go = release.get_future().share()](const Result<HTTPResponse>&) {
            taker(true);
            go.wait();
        });
    isRunning.value();

    Awaited<Result<HTTPResponse>> answer;
    loader.sharedSession().dataTask({.url = address(server.origin())}, answer.taker());
    EXPECT_TRUE(answer.value());
    release.set_value();
}

TEST(URLSession, AnAddressThatCannotBeLoadedIsAnsweredLater) {
    URLLoader loader;
    Awaited<Result<HTTPResponse>> answer;
    std::mutex mutex;
    std::unique_lock lock(mutex);
    loader.sharedSession().dataTask({.url = address("/relative")},
                                    [&, taker = answer.taker()](Result<HTTPResponse> result) {
                                        const std::lock_guard waiting(mutex);
                                        taker(std::move(result));
                                    });
    EXPECT_FALSE(answer.isThere());
    lock.unlock();
    EXPECT_EQ(errorCode(answer.value()), url_error::unsupportedURL);
}

TEST(URLLoader, GoesAtOnceAndDropsWhatIsUnderWay) {
    LoopbackServer server;
    server.answer({.ending = Ending::silence});
    std::atomic<bool> hasRun = false;
    const auto begin = steady_clock::now();
    {
        URLLoader loader;
        loader.sharedSession().dataTask({.url = address(server.origin())},
                                        [&](const Result<HTTPResponse>&) { hasRun = true; });
        ASSERT_TRUE(server.waitForRequests(1));
    }
    EXPECT_LT(steady_clock::now() - begin, 5s);
    EXPECT_FALSE(hasRun);
}

TEST(URLLoader, WaitsForACompletionThatLoadsWhileItGoes) {
    LoopbackServer server;
    server.answer("/first", {.body = "fine"});
    server.answer("/second", {.ending = Ending::silence});
    std::atomic<int> code = 0;
    {
        URLLoader loader;
        loader.sharedSession().dataTask({.url = address(server.origin() + "/first")},
                                        [&](const Result<HTTPResponse>&) {
                                            code = errorCode(loaded(loader, server.origin() + "/second"));
                                        });
        ASSERT_TRUE(server.waitForRequests(2));
    }
    EXPECT_EQ(code, url_error::cancelled);
}

TEST(ContentsOf, GivesABodyOfAtMostTwoMebibytesForTheStatusesThatCarryOne) {
    LoopbackServer server;
    URLLoader loader;
    const URL url = address(server.origin() + "/picture");
    const struct {
        int status;
        bool isContent;
    } cases[] = {{200, true},  {203, true},  {302, true},  {401, true}, {407, true},
                 {400, false}, {403, false}, {404, false}, {500, false}};
    for (const auto& [status, isContent] : cases) {
        server.answer({.status = status, .body = "picture"});
        const auto bytes = contentsOf(url, loader, true, steady_clock::now() + 10s);
        EXPECT_EQ(bytes.has_value(), isContent) << status;
        EXPECT_EQ(bytes.value_or(Bytes()), isContent ? Bytes("picture") : Bytes()) << status;
    }
    for (const std::size_t excess : {0U, 1U}) {
        server.answer({.body = std::string((2U << 20) + excess, 'x')});
        const auto bytes = contentsOf(url, loader, true, steady_clock::now() + 10s);
        EXPECT_EQ(bytes ? 0 : bytes.error().code, excess == 0 ? 0 : url_error::dataLengthExceedsMaximum);
    }
}

TEST(ContentsOf, ReadsNoPrivateHostUnlessItMay) {
    LoopbackServer server;
    server.answer({.body = "secret"});
    URLLoader loader;
    const std::string port = server.origin().substr(server.origin().rfind(':')) + "/";
    // Known, and on a kept connection too.
    ASSERT_TRUE(contentsOf(address("http://127.0.0.1" + port), loader, true, steady_clock::now() + 10s));

    for (const char* host : {"127.0.0.1", "localhost", "127.1", "2130706433", "[::ffff:127.0.0.1]"}) {
        const auto bytes =
            contentsOf(address("http://" + (host + port)), loader, false, steady_clock::now() + 10s);
        ASSERT_FALSE(bytes) << host;
        EXPECT_EQ(bytes.error().code, url_error::unsupportedURL) << host;
    }
    EXPECT_EQ(server.requests().size(), 1U);
    // Refused before it is tried: otherwise nobody would answer.
    const auto dead = contentsOf(address(deadOrigin()), loader, false, steady_clock::now() + 10s);
    EXPECT_EQ(dead.error().code, url_error::unsupportedURL);
}

}  // namespace
}  // namespace platform
