#include "extension/app/prices/price_refresh_manager_native.h"

#include <gtest/gtest.h>

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

using platform::Result;
using tests::Awaited;
using tests::LoopbackServer;
using tests::TestRuntime;

using Quotes = Result<MarketPackage_MultiAssetInfo>;

Quotes quotesFor(const TestRuntime& runtime, const std::vector<std::string>& identifiers) {
    Awaited<Quotes> answer;
    const auto take = answer.taker();
    PriceRefreshManagerNative prices(runtime);
    prices.fetch(
        identifiers, [take](MarketPackage_MultiAssetInfo quotes) { take(std::move(quotes)); },
        [take](platform::Error error) { take(tl::unexpected(std::move(error))); });
    return answer.value();
}

/// A message that holds nothing that we know, so that it has a body.
std::string someMessage() {
    MarketPackage_MultiAssetInfo quotes;
    quotes.GetReflection()->MutableUnknownFields(&quotes)->AddVarint(4000, 7);
    return quotes.SerializeAsString();
}

TEST(PriceRefresh, AsksForAllIdentifiersInTheirOrderWithoutEncodingThem) {
    LoopbackServer service;
    service.answer({.body = someMessage()});
    const TestRuntime runtime{{.apiHost = service.origin()}};

    const Quotes quotes = quotesFor(runtime, {"in;SEN-II", "in;NSX-II", "in;nbx-II"});
    ASSERT_TRUE(quotes);
    EXPECT_EQ(quotes->SerializeAsString(), someMessage());
    const auto request = service.requests().at(0);
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.target,
              "/swiftapi/v1/markets/multi-asset-info?asset_ids=in;SEN-II,in;NSX-II,in;nbx-II");
    EXPECT_EQ(request.header("content-type"), std::nullopt);
    EXPECT_TRUE(runtime.logged("Refresh API - " + service.origin() + request.target));
}

TEST(PriceRefresh, AnyOtherAnswerIsAFailure) {
    LoopbackServer service;
    const TestRuntime runtime{{.apiHost = service.origin()}};
    const struct {
        tests::Answer answer;
        int code;
    } cases[] = {
        {{.status = 201, .body = someMessage()}, platform::url_error::badServerResponse},
        {{.status = 304}, platform::url_error::badServerResponse},
        {{.status = 500, .body = someMessage()}, platform::url_error::badServerResponse},
        {{.status = 200}, platform::url_error::badServerResponse},
        {{.ending = tests::Answer::Ending::noAnswer}, platform::url_error::networkConnectionLost},
    };
    for (const auto& [answer, code] : cases) {
        service.answer(answer);
        const Quotes quotes = quotesFor(runtime, {"a"});
        ASSERT_FALSE(quotes) << answer.status;
        EXPECT_EQ(quotes.error(), platform::urlError(code)) << answer.status;
    }
    service.answer({.body = "<html>no quotes</html>"});
    EXPECT_EQ(quotesFor(runtime, {"a"}).error().domain, "DecodingError");
}

TEST(PriceRefresh, AnIdentifierWithABlankIsBadAtOnceAndWithoutTraffic) {
    LoopbackServer service;
    const TestRuntime runtime{{.apiHost = service.origin()}};
    std::optional<int> code;
    std::thread::id thread;
    PriceRefreshManagerNative prices(runtime);
    prices.fetch(
        {"a b"}, [](const MarketPackage_MultiAssetInfo&) { FAIL(); },
        [&](const platform::Error& error) {
            code = error.code;
            thread = std::this_thread::get_id();
        });
    EXPECT_EQ(code, platform::url_error::badURL);
    EXPECT_EQ(thread, std::this_thread::get_id());
    EXPECT_TRUE(service.requests().empty());
}

TEST(PriceRefresh, WithoutIdentifiersNothingIsSentAndNothingCalled) {
    LoopbackServer service;
    {
        const TestRuntime runtime{{.apiHost = service.origin()}};
        PriceRefreshManagerNative prices(runtime);
        prices.fetch(
            {}, [](const MarketPackage_MultiAssetInfo&) { FAIL(); }, [](const platform::Error&) { FAIL(); });
        EXPECT_EQ(runtime.urls().statistics().transfers, 0);
    }
    EXPECT_TRUE(service.requests().empty());
}

TEST(PriceRefresh, WithoutAHostTheAddressCannotBeLoaded) {
    const TestRuntime runtime;
    EXPECT_EQ(quotesFor(runtime, {"a"}).error().code, platform::url_error::unsupportedURL);
}

}  // namespace
}  // namespace extension
