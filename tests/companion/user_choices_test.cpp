#include "companion/user_choices.h"

#include <gtest/gtest.h>
#include <fstream>
#include "platform/settings/keyed_archive.h"
#include "platform/settings/user_defaults.h"
#include "tests/support/test_runtime.h"

namespace companion {
namespace {

using platform::Bytes;
using platform::PropertyList;
using tests::TestRuntime;

std::shared_ptr<platform::UserDefaults> storeOf(const TestRuntime& runtime) {
    return runtime.defaults("group.shareWithTodayExtension").value();
}

TEST(UserChoices, SigningInAsAnotherUserTakesTheFormerOnesRowsAway) {
    const TestRuntime runtime;
    const Session anna{"token-a", "anna", "http://127.0.0.1/portfolio?x=1"};
    ASSERT_TRUE(setSession(runtime, anna));
    EXPECT_EQ(session(runtime).value(), anna);
    EXPECT_EQ(storeOf(runtime)->object("userPortfolio").value(), PropertyList(anna.portfolioAddress));

    ASSERT_TRUE(storeOf(runtime)->set("portfolioArray", Bytes("[]")));
    Session renewed = anna;
    renewed.token = "token-b";
    ASSERT_TRUE(setSession(runtime, renewed));
    EXPECT_TRUE(storeOf(runtime)->object("portfolioArray").value());

    ASSERT_TRUE(setSession(runtime, Session{"token-c", "bela", "http://127.0.0.1/portfolio?x=1"}));
    EXPECT_FALSE(storeOf(runtime)->object("portfolioArray").value());

    ASSERT_TRUE(storeOf(runtime)->set("portfolioArray", Bytes("[]")));
    ASSERT_TRUE(setSession(runtime, std::nullopt));
    EXPECT_EQ(session(runtime).value(), std::nullopt);
    EXPECT_TRUE(storeOf(runtime)->dictionaryRepresentation()->empty());
}

TEST(UserChoices, AHalfSessionIsNone) {
    const TestRuntime runtime;
    ASSERT_TRUE(setSession(runtime, Session{"token", "anna", "address"}));
    ASSERT_TRUE(storeOf(runtime)->set("userPortfolio", 5));
    EXPECT_EQ(session(runtime).value(), std::nullopt);
}

TEST(UserChoices, TheChosenAssetsStandUnderTheirFourKeys) {
    const TestRuntime runtime;
    const auto asset = [](const char* title) { return PropertyList::Dictionary{{"title", title}}; };
    const ChosenAssets assets{.indices = {asset("SENSEX"), asset("NIFTY 50")},
                              .stocks = {asset("A stock")},
                              .futures = {},
                              .cryptos = {asset("A coin")}};
    EXPECT_EQ(chosenAssets(runtime).value(), ChosenAssets{});
    ASSERT_TRUE(setChosenAssets(runtime, assets));
    EXPECT_EQ(chosenAssets(runtime).value(), assets);
    EXPECT_EQ(storeOf(runtime)->object("INDICES_WIDGET").value(), PropertyList(assets.indices));
    EXPECT_EQ(storeOf(runtime)->object("FUTURE_WIDGET").value(), PropertyList(PropertyList::Array{}));
    EXPECT_EQ(storeOf(runtime)->object("CRYPTO_WIDGET").value(), PropertyList(assets.cryptos));
}

TEST(UserChoices, TheNewsAddressComesAndGoesWithoutTheOtherLinks) {
    const TestRuntime runtime;
    const PropertyList::Dictionary links{{"newsWidgetApiUrl", ""}, {"help", "https://help.invalid"}};
    ASSERT_TRUE(storeOf(runtime)->set("extra_links", Bytes(platform::archivedObject(links))));
    EXPECT_EQ(newsFeedAddress(runtime).value(), std::nullopt);

    ASSERT_TRUE(setNewsFeedAddress(runtime, "http://127.0.0.1:1/feed"));
    EXPECT_EQ(newsFeedAddress(runtime).value(), "http://127.0.0.1:1/feed");

    ASSERT_TRUE(setNewsFeedAddress(runtime, std::nullopt));
    EXPECT_EQ(newsFeedAddress(runtime).value(), std::nullopt);
    const auto stored = storeOf(runtime)->object("extra_links").value();
    EXPECT_EQ(platform::unarchivedObject(stored->data()->view()).value(),
              PropertyList(PropertyList::Dictionary{{"help", "https://help.invalid"}}));

    for (const PropertyList& unreadable : {PropertyList("text"), PropertyList(Bytes("noise")),
                                           PropertyList(Bytes(platform::archivedObject("text")))}) {
        ASSERT_TRUE(storeOf(runtime)->set("extra_links", unreadable));
        EXPECT_EQ(newsFeedAddress(runtime).value(), std::nullopt);
        const auto refused = setNewsFeedAddress(runtime, "http://127.0.0.1:1/feed");
        ASSERT_FALSE(refused);
        EXPECT_EQ(refused.error().message,
                  "the phone app's links (\"extra_links\") cannot be read and stay as they are");
        EXPECT_EQ(storeOf(runtime)->object("extra_links").value(), unreadable);
    }
}

TEST(UserChoices, AStoreThatCannotBeOpenedIsAnError) {
    const TestRuntime runtime;
    std::ofstream(platform::storeFile(runtime.dataDirectory(), "group.shareWithTodayExtension"))
        << std::string(8192, 'x');
    EXPECT_FALSE(setSession(runtime, Session{}));
    EXPECT_FALSE(session(runtime));
    EXPECT_FALSE(setChosenAssets(runtime, {}));
    EXPECT_FALSE(chosenAssets(runtime));
    EXPECT_FALSE(setNewsFeedAddress(runtime, "http://127.0.0.1"));
    EXPECT_FALSE(newsFeedAddress(runtime));
}

}  // namespace
}  // namespace companion
