#include <gmock/gmock.h>
#include <optional>
#include <string>
#include <vector>
#include "extension/app/settings/store_keys.h"
#include "extension/theme/hex_codec.h"
#include "extension/widgets/portfolio/timeline/pw_provider.h"
#include "tests/extension/shared_settings.h"
#include "tests/support/served_runtime.h"
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

/// A phone as the app leaves it after signing in, and the service that answers for the portfolio.
struct SignedInPhone : ServedRuntime {
    explicit SignedInPhone(const Answer& answer = {.body = goodPortfolio},
                           const TestRuntimeOptions& options = {})
        : ServedRuntime(answer, options) {
        store(runtime, keys::token, "tok&en=1");
        store(runtime, keys::userId, "user7");
        store(runtime, keys::userPortfolio, service.origin() + "/portfolio?a=b");
    }
};

std::optional<PropertyList> saved(const platform::Runtime& runtime) {
    return *(*sharedDefaults(runtime))->object(keys::portfolioArray);
}

/// Rows of one figure each, so that they can be told from fetched ones.
void saveRows(const platform::Runtime& runtime, const std::string& json) {
    store(runtime, keys::portfolioArray, platform::Bytes(json));
}

constexpr const char* oneSavedRow = R"([{"id":"5A0E7C5E-90C1-4DA9-8B0C-4F4B8A6F1D11","title":"Networth",
    "value":"1","isTrailing":false,"percentage":""}])";

TEST(PortfolioRequest, IsTheStoredAddressWithTheUsersItemsAsTheyStand) {
    const SignedInPhone phone({.body = goodPortfolio}, {.now = "2026-11-22T06:30:00.999Z"});

    const auto entry = snapshotOf(PWProvider(phone.runtime));
    EXPECT_EQ(entry.apiError, PWAPIError::success);
    ASSERT_THAT(phone.service.requests(), SizeIs(1));
    EXPECT_EQ(phone.service.requests()[0].method, "get");
    EXPECT_EQ(phone.service.requests()[0].target,
              "/portfolio?a=b&ctype=2&uname=user7&token=tok&en=1&test=false&ts=1795329000"
              "&t_device=iphone&t_app=BL&t_version=193");
    EXPECT_FALSE(phone.runtime.logged("tok&en"));
    EXPECT_FALSE(phone.runtime.logged("user7"));
}

TEST(PortfolioRequest, IsNotSentWhileNobodyIsSignedIn) {
    const std::vector<std::pair<std::string_view, std::optional<PropertyList>>> flaws{
        {keys::token, std::nullopt},         {keys::token, ""},       {keys::token, 123},
        {keys::userId, std::nullopt},        {keys::userId, ""},      {keys::userId, 7.5},
        {keys::userPortfolio, std::nullopt}, {keys::userPortfolio, 5}};
    for (const auto& [key, value] : flaws) {
        const SignedInPhone phone;
        const auto defaults = *sharedDefaults(phone.runtime);
        ASSERT_TRUE(value ? defaults->set(key, *value) : defaults->remove(key));

        PWProvider provider(phone.runtime);
        EXPECT_EQ(snapshotOf(provider).apiError, PWAPIError::nonLogin) << key;
        EXPECT_EQ(provider.placeholder({}).apiError, PWAPIError::nonLogin) << key;
        EXPECT_THAT(phone.service.requests(), IsEmpty());
    }
}

TEST(PortfolioAnswer, BecomesOneOfFourStatesAndOnlyASuccessIsSaved) {
    const auto withInvestments = [](const std::string& member) {
        return Answer{.body = R"({"portfoliosummary":{"networth_details":{)" + member + "}}}"};
    };
    const std::vector<std::pair<Answer, PWAPIError>> cases{
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
    for (const auto& [answer, state] : cases) {
        const SignedInPhone phone(answer);
        saveRows(phone.runtime, oneSavedRow);

        const auto entry = snapshotOf(PWProvider(phone.runtime));
        EXPECT_EQ(entry.apiError, state) << answer.body;
        const bool isSuccess = state == PWAPIError::success;
        EXPECT_EQ(entry.portfolioWidgetVM.size(), isSuccess ? 4U : 0U);
        EXPECT_EQ(saved(phone.runtime) != PropertyList(platform::Bytes(oneSavedRow)), isSuccess)
            << answer.body;
        EXPECT_EQ(phone.runtime.logged("Portfolio array saved successfully."), isSuccess);
    }
}

TEST(PortfolioAnswer, ReachesItsCompletionAlsoWhenTheViewModelHasGone) {
    const SignedInPhone phone({.body = goodPortfolio, .delay = std::chrono::milliseconds(100)});

    Awaited<PWTimelineEntry> entry;
    std::make_shared<PWViewModel>(phone.runtime)->fetch(entry.taker());
    EXPECT_EQ(entry.value().apiError, PWAPIError::failed);
    EXPECT_EQ(saved(phone.runtime), std::nullopt);
}

TEST(PortfolioAnswer, IsSavedUnlessItsUserIsNotSignedInAnyMore) {
    const std::vector<std::tuple<std::string_view, std::optional<PropertyList>, bool>> cases{
        {keys::token, "renewed", true},
        {keys::userPortfolio, "http://elsewhere/?a", true},
        {keys::token, std::nullopt, false},
        {keys::userId, "user8", false}};
    for (const auto& [key, value, isSaved] : cases) {
        const SignedInPhone phone({.body = goodPortfolio, .delay = std::chrono::milliseconds(200)});

        Awaited<PWTimelineEntry> entry;
        PWProvider provider(phone.runtime);
        provider.getSnapshot({}, entry.taker());
        ASSERT_TRUE(phone.service.waitForRequests(1));
        const auto defaults = *sharedDefaults(phone.runtime);
        ASSERT_TRUE(value ? defaults->set(key, *value) : defaults->remove(key));
        EXPECT_EQ(entry.value().apiError, PWAPIError::success);
        EXPECT_EQ(saved(phone.runtime).has_value(), isSaved) << key;
        EXPECT_EQ(phone.runtime.logged("Portfolio array not saved"), !isSaved) << key;
    }
}

TEST(PortfolioTimeline, AsksFromNineToFourInclusiveAndShowsSavedRowsOtherwise) {
    // India is five and a half hours ahead.
    const std::vector<std::pair<const char*, bool>> cases{
        {"2026-11-22T03:29:59.999Z", false}, {"2026-11-22T03:30:00.000Z", true},
        {"2026-11-22T10:30:00.000Z", true},  {"2026-11-22T10:30:00.001Z", false},
        {"2026-11-22T10:30:01.000Z", false}, {"2026-11-21T18:30:00.000Z", false}};
    for (const auto& [now, asks] : cases) {
        const SignedInPhone phone({.body = goodPortfolio}, {.now = now});
        saveRows(phone.runtime, oneSavedRow);

        const auto timeline = timelineOf(PWProvider(phone.runtime));
        ASSERT_THAT(timeline.entries, SizeIs(1)) << now;
        EXPECT_EQ(timeline.entries[0].apiError, PWAPIError::success) << now;
        EXPECT_THAT(timeline.entries[0].portfolioWidgetVM, SizeIs(asks ? 4 : 1)) << now;
        EXPECT_EQ(phone.service.requests().size(), asks ? 1U : 0U) << now;
        EXPECT_EQ(timeline.policy,
                  asks ? TimelineReloadPolicy::after(phone.runtime.now() + std::chrono::seconds(30))
                       : TimelineReloadPolicy::atEnd())
            << now;
    }
}

TEST(PortfolioTimeline, IsDueAgain30SecondsAfterTheQuestionHoweverLateTheAnswer) {
    const SignedInPhone phone({.body = goodPortfolio, .delay = std::chrono::milliseconds(300)});
    const auto asked = phone.runtime.now();
    const auto timeline = timelineOf(PWProvider(phone.runtime), [&] {
        EXPECT_TRUE(phone.service.waitForRequests(1));
        phone.runtime.clock().set(asked + std::chrono::seconds(20), 0.0);
    });
    EXPECT_EQ(timeline.policy, TimelineReloadPolicy::after(asked + std::chrono::seconds(30)));
}

TEST(PortfolioTimeline, OutsideOfItsHoursAsksOnlyWhenNothingReadableIsSaved) {
    for (const char* rows : {"", "nonsense", R"([{"id":"x"}])"}) {
        const SignedInPhone phone({.body = goodPortfolio}, {.now = "2026-11-22T10:30:01Z"});
        if (*rows != '\0') saveRows(phone.runtime, rows);

        const auto timeline = timelineOf(PWProvider(phone.runtime));
        EXPECT_THAT(timeline.entries[0].portfolioWidgetVM, SizeIs(4)) << rows;
        EXPECT_EQ(timeline.policy, TimelineReloadPolicy::atEnd());
        EXPECT_THAT(phone.service.requests(), SizeIs(1));
        EXPECT_TRUE(phone.runtime.logged(*rows == '\0' ? "No portfolio array found."
                                                       : "Failed to decode portfolio array: "));
    }
}

TEST(PortfolioPlaceholder, OfASignedInUserIsFailedAndDoesNotWait) {
    const SignedInPhone phone({.ending = Answer::Ending::silence});

    EXPECT_EQ(PWProvider(phone.runtime).placeholder({}).apiError, PWAPIError::failed);
    EXPECT_TRUE(phone.service.waitForRequests(1));
    store(phone.runtime, keys::token, "a b");
    EXPECT_EQ(PWProvider(phone.runtime).placeholder({}).apiError, PWAPIError::failed)
        << "an address with a blank";
    EXPECT_EQ(snapshotOf(PWProvider(phone.runtime)).apiError, PWAPIError::failed);
    EXPECT_THAT(phone.service.requests(), SizeIs(1));
}

}  // namespace
