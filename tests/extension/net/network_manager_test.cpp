#include "extension/net/network_manager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <thread>
#include <vector>
#include "platform/url/url_session.h"
#include "tests/support/loopback_server.h"
#include "tests/support/test_runtime.h"
#include "tests/support/waiting.h"

namespace extension {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using platform::Bytes;
using platform::Result;
using tests::Awaited;
using tests::LoopbackServer;
using tests::TestRuntime;

Result<Bytes> answerTo(const TestRuntime& runtime, const std::string& address,
                       RequestMethod method = RequestMethod::get,
                       const std::optional<json>& parameters = std::nullopt) {
    Awaited<Result<Bytes>> answer;
    NetworkManager(runtime).sendRequest(address, method, parameters, answer.taker());
    return answer.value();
}

TEST(NetworkManager, SendsTheMethodInLowerCaseAndTheContentTypeOnce) {
    LoopbackServer service;
    service.answer({.body = "fine"});
    const TestRuntime runtime;
    EXPECT_EQ(answerTo(runtime, service.origin() + "/a?b=c"), Bytes("fine"));
    EXPECT_EQ(answerTo(runtime, service.origin(), RequestMethod::post), Bytes("fine"));

    const auto requests = service.requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0].method, "get");
    EXPECT_EQ(requests[0].target, "/a?b=c");
    EXPECT_EQ(requests[1].method, "post");
    for (const auto& request : requests) {
        EXPECT_EQ(request.header("content-type"), "application/json");
        EXPECT_EQ(request.headers.count("content-type"), 1U);
        EXPECT_EQ(request.header("accept-language"), "en-IN, en;q=0.9") << "the runtime's locale";
        EXPECT_EQ(request.body, "");
    }
}

TEST(NetworkManager, ParametersArePrintedForPeopleAndWhatJsonCannotHoldIsLeftOut) {
    const double endless = std::numeric_limits<double>::infinity();
    const struct {
        json parameters;
        std::string body;
    } cases[] = {
        {{{"a", 1}, {"b", {true, nullptr}}}, "{\n  \"a\" : 1,\n  \"b\" : [\n    true,\n    null\n  ]\n}"},
        {{{"path", "/a\"b"}}, "{\n  \"path\" : \"\\/a\\\"b\"\n}"},
        {json::object(), "{\n\n}"},
        {{{"a", endless}}, ""},
        {{{"a", {{"b", -endless}}}}, ""},
        {{{"a", "\xff"}}, ""},
        {{{"\xff", "a"}}, ""},
        {"a text alone", ""},
    };
    LoopbackServer service;
    service.answer({.body = "fine"});
    const TestRuntime runtime;
    for (const auto& [parameters, body] : cases) {
        ASSERT_TRUE(answerTo(runtime, service.origin(), RequestMethod::get, parameters));
        EXPECT_EQ(service.requests().back().body, body);
    }
}

TEST(NetworkManager, OnlyStatus200WithABodyIsSuccess) {
    LoopbackServer service;
    const TestRuntime runtime;
    const tests::Answer answers[] = {{.status = 201, .body = "good"},
                                     {.status = 204},
                                     {.status = 206, .body = "good"},
                                     {.status = 302, .body = "good"},
                                     {.status = 304},
                                     {.status = 401, .body = "good"},
                                     {.status = 404, .body = "good"},
                                     {.status = 500, .body = "good"},
                                     {.status = 200, .body = ""}};
    for (const tests::Answer& answer : answers) {
        service.answer(answer);
        const auto result = answerTo(runtime, service.origin());
        ASSERT_FALSE(result) << answer.status;
        EXPECT_EQ(result.error(), platform::urlError(platform::url_error::badServerResponse));
    }
}

TEST(NetworkManager, ABodyIsAtMostOneMebibyteLong) {
    LoopbackServer service;
    const TestRuntime runtime;
    const std::string largest(1U << 20, 'x');
    service.answer({.body = largest, .isChunked = true});
    EXPECT_EQ(answerTo(runtime, service.origin()), Bytes(largest));
    service.answer({.body = largest + "x", .isChunked = true});
    const auto tooLong = answerTo(runtime, service.origin());
    ASSERT_FALSE(tooLong);
    EXPECT_EQ(tooLong.error().code, platform::url_error::dataLengthExceedsMaximum);
}

TEST(NetworkManager, AnInvalidAddressIsAnsweredHereAndNowAndOtherFailuresLater) {
    LoopbackServer service;
    const TestRuntime runtime;
    for (const std::string& address :
         {std::string(), service.origin() + "/a b", service.origin() + "/%", service.origin() + "/{id}"}) {
        std::optional<Result<Bytes>> answer;
        std::thread::id thread;
        NetworkManager(runtime).sendRequest(address, RequestMethod::get, std::nullopt,
                                            [&](Result<Bytes> result) {
                                                answer = std::move(result);
                                                thread = std::this_thread::get_id();
                                            });
        ASSERT_TRUE(answer) << address;
        EXPECT_EQ(answer->error().code, platform::url_error::badURL);
        EXPECT_EQ(thread, std::this_thread::get_id());
    }
    EXPECT_TRUE(service.requests().empty());
    EXPECT_EQ(answerTo(runtime, "/newsapi/").error().code, platform::url_error::unsupportedURL);
    service.answer({.ending = tests::Answer::Ending::noAnswer});
    EXPECT_EQ(answerTo(runtime, service.origin()).error().code, platform::url_error::networkConnectionLost);
}

TEST(NetworkManager, OneSlowCompletionKeepsNoOtherRequestWaitingAndConnectionsAreKept) {
    LoopbackServer service;
    service.answer({.body = "fine"});
    const TestRuntime runtime;
    std::promise<void> release;
    Awaited<bool> isRunning;
    NetworkManager(runtime).sendRequest(
        service.origin(), RequestMethod::get, std::nullopt,
        [taker = isRunning.taker(), go = release.get_future().share()](const Result<Bytes>&) {
            taker(true);
            go.wait();
        });
    isRunning.value();
    EXPECT_TRUE(answerTo(runtime, service.origin()));
    EXPECT_EQ(service.connectionCount(), 1);
    release.set_value();
}

}  // namespace
}  // namespace extension
