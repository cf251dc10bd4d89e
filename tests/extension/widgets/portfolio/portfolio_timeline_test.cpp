#include <gmock/gmock.h>
#include <optional>
#include <string>
#include <vector>
#include "extension/app/settings/store_keys.h"
#include "extension/theme/hex_codec.h"
#include "extension/widgets/portfolio/timeline/pw_provider.h"
#include "extension/widgets/portfolio/timeline/pw_view_model.h"
#include "tests/extension/shared_settings.h"
#include "tests/support/loopback_server.h"
#include "tests/support/test_runtime.h"
#include "tests/support/waiting.h"

namespace {

using namespace extension;
using namespace tests;
using platform::PropertyList;
using platform::TimelineReloadPolicy;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* goodPortfolio = R"({"portfoliosummary":{"networth_details":{"investments":"10,00,000",
    "networth":"12,50,000","over_change":"2,50,000","over_percentchange":"25","over_direction":"1"}}})";

/// As the phone app leaves it after signing in.
void signIn(const platform::Runtime& runtime, const LoopbackServer& service) {
    store(runtime, keys::token, "tok&en=1");
    store(runtime, keys::userId, "user7");
    store(runtime, keys::userPortfolio, service.origin() + "/portfolio?a=b");
}

/// A row of one figure, so that it can be told from fetched ones.
constexpr const char* oneSavedRow = R"([{"id":"5A0E7C5E-90C1-4DA9-8B0C-4F4B8A6F1D11","title":"Networth",
    "value":"1","isTrailing":false,"percentage":""}])";

TEST(PortfolioRequest, IsTheStoredAddressWithTheUsersItemsAsTheyStand) {
    LoopbackServer service;
    service.answer({.body = goodPortfolio});
    const TestRuntime runtime{{.now = "2026-11-22T06:30:00.999Z"}};
    signIn(runtime, service);

    const auto entry = snapshotOf(PWProvider(runtime));
    EXPECT_EQ(entry.apiError, PWAPIError::success);
    ASSERT_THAT(service.requests(), SizeIs(1));
    EXPECT_EQ(service.requests()[0].method, "get");
    EXPECT_EQ(service.requests()[0].target,
              "/portfolio?a=b&ctype=2&uname=user7&token=tok&en=1&test=false&ts=1795329000"
              "&t_device=iphone&t_app=BL&t_version=193");
    EXPECT_FALSE(runtime.logged("tok&en"));
    EXPECT_FALSE(runtime.logged("user7"));
}

TEST(PortfolioRequest, IsNotSentWhileNobodyIsSignedIn) {
    const std::vector<std::pair<std::string_view, std::optional<PropertyList>>> flaws{
        {keys::token, std::nullopt},         {keys::token, ""},       {keys::token, 123},
        {keys::userId, std::nullopt},        {keys::userId, ""},      {keys::userId, 7.5},
        {keys::userPortfolio, std::nullopt}, {keys::userPortfolio, 5}};
    for (const auto& [key, value] : flaws) {
        LoopbackServer service;
        const TestRuntime runtime;
        signIn(runtime, service);
        const auto defaults = *sharedDefaults(runtime);
        ASSERT_TRUE(value ? defaults->set(key, *value) : defaults->remove(key));

        PWProvider provider(runtime);
        EXPECT_EQ(snapshotOf(provider).apiError, PWAPIError::nonLogin) << key;
        EXPECT_EQ(provider.placeholder({}).apiError, PWAPIError::nonLogin) << key;
        EXPECT_THAT(service.requests(), IsEmpty());
    }
}

TEST(PortfolioRequest, WithABlankInItsAddressFailsWithoutTraffic) {
    LoopbackServer service;
    const TestRuntime runtime;
    signIn(runtime, service);
    store(runtime, keys::token, "a b");

    EXPECT_EQ(snapshotOf(PWProvider(runtime)).apiError, PWAPIError::failed);
    EXPECT_THAT(service.requests(), IsEmpty());
}

TEST(PortfolioAnswer, BecomesOneOfFourStatesAndOnlyASuccessIsSaved) {
    struct Case {
        Answer answer;
        PWAPIError state;
    };
    const auto withInvestments = [](const std::string& member) {
        return Answer{.body = R"({"portfoliosummary":{"networth_details":{)" + member + "}}}"};
    };
    const std::vector<Case> cases{
        {{.body = goodPortfolio}, PWAPIError::success},
        {withInvestments(R"("investments":"0.0")"), PWAPIError::success},
        {withInvestments(R"("investments":" 0")"), PWAPIError::success},
        {withInvestments(R"("investments":"0")"), PWAPIError::noPortfolio},
        {withInvestments(R"("investments":"")"), PWAPIError::noPortfolio},
        {withInvestments(R"("name":"x")"), PWAPIError::noPortfolio},
        {{.body = R"({"portfoliosummary":{}})"}, PWAPIError::noPortfolio},
        {{.body = "{}"}, PWAPIError::noPortfolio},
        {{.body = "[]"}, PWAPIError::failed},
        {withInvestments(R"("investments":1200)"), PWAPIError::failed},
        {{.status = 500, .body = goodPortfolio}, PWAPIError::failed},
        {{.status = 204}, PWAPIError::failed},
        {{.body = ""}, PWAPIError::failed},
        {{.body = goodPortfolio, .ending = Answer::Ending::cut}, PWAPIError::failed},
        {{.ending = Answer::Ending::noAnswerReset}, PWAPIError::failed}};
    for (const Case& example : cases) {
        LoopbackServer service;
        service.answer(example.answer);
        const TestRuntime runtime;
        signIn(runtime, service);
        store(runtime, keys::portfolioArray, platform::Bytes(oneSavedRow));

        const auto entry = snapshotOf(PWProvider(runtime));
        EXPECT_EQ(entry.apiError, example.state) << example.answer.body;
        const bool isSuccess = example.state == PWAPIError::success;
        EXPECT_EQ(entry.portfolioWidgetVM.size(), isSuccess ? 4U : 0U);
        EXPECT_EQ(stored(runtime, keys::portfolioArray) != PropertyList(platform::Bytes(oneSavedRow)),
                  isSuccess)
            << example.answer.body;
        EXPECT_EQ(runtime.logged("Portfolio array saved successfully."), isSuccess);
    }
}

TEST(PortfolioAnswer, ReachesItsCompletionAlsoWhenTheViewModelHasGone) {
    LoopbackServer service;
    service.answer({.body = goodPortfolio, .delay = std::chrono::milliseconds(100)});
    const TestRuntime runtime;
    signIn(runtime, service);

    Awaited<PWTimelineEntry> entry;
    std::make_shared<PWViewModel>(runtime)->fetch(entry.taker());
    EXPECT_EQ(entry.value().apiError, PWAPIError::failed);
    EXPECT_EQ(stored(runtime, keys::portfolioArray), std::nullopt);
}

TEST(PortfolioAnswer, IsSavedUnlessItsUserIsNotSignedInAnyMore) {
    struct Case {
        std::string_view key;
        std::optional<PropertyList> value;
        bool isSaved;
    };
    const std::vector<Case> cases{{keys::token, "renewed", true},
                                  {keys::userPortfolio, "http://elsewhere/?a", true},
                                  {keys::token, std::nullopt, false},
                                  {keys::userId, "user8", false}};
    for (const auto& [key, value, isSaved] : cases) {
        LoopbackServer service;
        service.answer({.body = goodPortfolio, .delay = std::chrono::milliseconds(200)});
        const TestRuntime runtime;
        signIn(runtime, service);

        Awaited<PWTimelineEntry> entry;
        PWProvider provider(runtime);
        provider.getSnapshot({}, entry.taker());
        ASSERT_TRUE(service.waitForRequests(1));
        const auto defaults = *sharedDefaults(runtime);
        ASSERT_TRUE(value ? defaults->set(key, *value) : defaults->remove(key));
        EXPECT_EQ(entry.value().apiError, PWAPIError::success);
        EXPECT_EQ(stored(runtime, keys::portfolioArray).has_value(), isSaved) << key;
        EXPECT_EQ(runtime.logged("Portfolio array not saved"), !isSaved) << key;
    }
}

TEST(PortfolioTimeline, AsksFromNineToFourInclusiveAndShowsSavedRowsOtherwise) {
    struct Case {
        const char* now;
        bool asks;
    };
    // India is five and a half hours ahead.
    const std::vector<Case> cases{{"2026-11-22T03:29:59.999Z", false}, {"2026-11-22T03:30:00.000Z", true},
                                  {"2026-11-22T10:30:00.000Z", true},  {"2026-11-22T10:30:00.001Z", false},
                                  {"2026-11-22T10:30:01.000Z", false}, {"2026-11-21T18:30:00.000Z", false}};
    for (const Case& example : cases) {
        LoopbackServer service;
        service.answer({.body = goodPortfolio});
        const TestRuntime runtime{{.now = example.now}};
        signIn(runtime, service);
        store(runtime, keys::portfolioArray, platform::Bytes(oneSavedRow));

        const auto timeline = timelineOf(PWProvider(runtime));
        ASSERT_THAT(timeline.entries, SizeIs(1)) << example.now;
        EXPECT_EQ(timeline.entries[0].apiError, PWAPIError::success) << example.now;
        EXPECT_THAT(timeline.entries[0].portfolioWidgetVM, SizeIs(example.asks ? 4 : 1)) << example.now;
        EXPECT_EQ(service.requests().size(), example.asks ? 1U : 0U) << example.now;
        EXPECT_EQ(timeline.policy, example.asks
                                       ? TimelineReloadPolicy::after(runtime.now() + std::chrono::seconds(30))
                                       : TimelineReloadPolicy::atEnd())
            << example.now;
    }
}

TEST(PortfolioTimeline, IsDueAgain30SecondsAfterTheQuestionHoweverLateTheAnswer) {
    LoopbackServer service;
    service.answer({.body = goodPortfolio, .delay = std::chrono::milliseconds(300)});
    const TestRuntime runtime;
    signIn(runtime, service);
    const auto asked = runtime.now();
    const auto timeline = timelineOf(PWProvider(runtime), [&] {
        EXPECT_TRUE(service.waitForRequests(1));
        runtime.clock().set(asked + std::chrono::seconds(20), 0.0);
    });
    EXPECT_EQ(timeline.policy, TimelineReloadPolicy::after(asked + std::chrono::seconds(30)));
}

TEST(PortfolioTimeline, OutsideOfItsHoursAsksOnlyWhenNothingReadableIsSaved) {
    for (const char* rows : {"", "nonsense", R"([{"id":"x"}])"}) {
        LoopbackServer service;
        service.answer({.body = goodPortfolio});
        const TestRuntime runtime{{.now = "2026-11-22T10:30:01Z"}};
        signIn(runtime, service);
        if (*rows != '\0') store(runtime, keys::portfolioArray, platform::Bytes(std::string(rows)));

        const auto timeline = timelineOf(PWProvider(runtime));
        EXPECT_THAT(timeline.entries[0].portfolioWidgetVM, SizeIs(4)) << rows;
        EXPECT_EQ(timeline.policy, TimelineReloadPolicy::atEnd());
        EXPECT_THAT(service.requests(), SizeIs(1));
        EXPECT_TRUE(runtime.logged(*rows == '\0' ? "No portfolio array found."
                                                 : "Failed to decode portfolio array: "));
    }
}

TEST(PortfolioPlaceholder, OfASignedInUserIsFailedAndDoesNotWait) {
    LoopbackServer service;
    service.answer({.ending = Answer::Ending::silence});
    const TestRuntime runtime;
    signIn(runtime, service);

    EXPECT_EQ(PWProvider(runtime).placeholder({}).apiError, PWAPIError::failed);
    EXPECT_TRUE(service.waitForRequests(1));
    store(runtime, keys::token, "a b");
    EXPECT_EQ(PWProvider(runtime).placeholder({}).apiError, PWAPIError::failed) << "an address with a blank";
}

}  // namespace
