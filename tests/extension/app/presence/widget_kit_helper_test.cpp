#include "extension/app/presence/widget_kit_helper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>
#include <vector>
#include "extension/app/settings/store_keys.h"
#include "tests/support/test_runtime.h"

namespace extension {
namespace {

using platform::PlacedWidget;
using platform::PropertyList;
using platform::Result;
using platform::WidgetFamily;
using tests::TestRuntime;

/// A home screen whose widgets the test places. It answers when it is told to, on whatever thread.
class HomeScreen final : public platform::WidgetCenter {
public:
    void place(std::vector<PlacedWidget> widgets) { answer_ = std::move(widgets); }
    void goAway() { answer_ = platform::failure("WidgetCenterError", 1, "no home screen is running"); }

    void reloadTimelines(std::string_view ofKind) override { reloads.emplace_back(ofKind); }
    void reloadAllTimelines() override { reloads.emplace_back("all"); }
    void getCurrentConfigurations(
        std::function<void(Result<std::vector<PlacedWidget>>)> completion) override {
        waiting_.push_back(std::move(completion));
    }
    void answerAll() {
        for (const auto& completion : std::exchange(waiting_, {})) completion(answer_);
    }

    std::vector<std::string> reloads;

private:
    Result<std::vector<PlacedWidget>> answer_;
    std::vector<std::function<void(Result<std::vector<PlacedWidget>>)>> waiting_;
};

struct PhoneWithHomeScreen {
    WidgetPresence ask() {
        WidgetKitHelper::getCurrentConfigurations(state);
        homeScreen->answerAll();
        return state.presence->get();
    }

    std::shared_ptr<HomeScreen> homeScreen = std::make_shared<HomeScreen>();
    TestRuntime runtime{{.widgetCenter = homeScreen}};
    ProcessState state{runtime};
};

TEST(WidgetKitHelper, TheFirstOfEachKindTellsTheFamily) {
    PhoneWithHomeScreen phone;
    EXPECT_EQ(phone.state.presence->get(), WidgetPresence{});
    phone.homeScreen->place({{"PortfolioWidget", std::nullopt},
                             {"PerchWidget", WidgetFamily::systemMedium},
                             {"perchwidget", WidgetFamily::systemSmall},
                             {"PerchWidget", WidgetFamily::systemLarge}});
    const WidgetPresence seen = phone.ask();
    EXPECT_TRUE(seen.isWigetAdded);
    EXPECT_EQ(seen.widgetFamily, "systemMedium");
    EXPECT_FALSE(seen.isNewsWidgetAdded);
    EXPECT_EQ(seen.newsWidgetFamily, "");
    // Placed, but the home screen does not say in which size.
    EXPECT_TRUE(seen.isPortfolioWigetAdded);
    EXPECT_EQ(seen.portfolioWidgetFamily, "");
}

TEST(WidgetKitHelper, WhatWasOnceSeenStaysAndAnErrorChangesNothing) {
    PhoneWithHomeScreen phone;
    phone.homeScreen->place({{"NewsWidget", WidgetFamily::systemLarge}});
    const WidgetPresence seen = phone.ask();
    EXPECT_TRUE(seen.isNewsWidgetAdded);
    phone.homeScreen->place({});
    EXPECT_EQ(phone.ask(), seen);
    phone.homeScreen->goAway();
    EXPECT_EQ(phone.ask(), seen);
}

TEST(WidgetKitHelper, AnAnswerMayComeWhenNobodyWaitsAnyMoreAndOnAnotherThread) {
    const auto homeScreen = std::make_shared<HomeScreen>();
    const TestRuntime runtime{{.widgetCenter = homeScreen}};
    homeScreen->place({{"PerchWidget", WidgetFamily::systemSmall}});
    auto state = std::make_unique<ProcessState>(runtime);
    const auto presence = state->presence;
    WidgetKitHelper::getCurrentConfigurations(*state);
    state.reset();
    std::thread answering([&] { homeScreen->answerAll(); });
    while (!presence->get().isWigetAdded) std::this_thread::yield();
    answering.join();
    EXPECT_EQ(presence->get().widgetFamily, "systemSmall");
}

TEST(WidgetKitHelper, ReloadsOneKindOrAll) {
    PhoneWithHomeScreen phone;
    WidgetKitHelper::reloadAllWidgets("NewsWidget", phone.state);
    WidgetKitHelper::reloadAllWidgets(std::nullopt, phone.state);
    EXPECT_THAT(phone.homeScreen->reloads, testing::ElementsAre("NewsWidget", "all"));
}

TEST(WidgetKitHelper, WithoutAHomeScreenNothingIsKnownAndNothingGoesWrong) {
    const TestRuntime runtime;
    ProcessState state(runtime);
    bool isAnswered = false;
    WidgetKitHelper::getCurrentConfigurations(state, [&] { isAnswered = true; });
    WidgetKitHelper::reloadAllWidgets("NewsWidget", state);
    EXPECT_TRUE(isAnswered);
    EXPECT_EQ(state.presence->get(), WidgetPresence{});
}

TEST(WidgetKitHelper, ForgetsTheSavedPortfolioRowsAndNothingElse) {
    const TestRuntime runtime;
    ProcessState state(runtime);
    const auto defaults = sharedDefaults(runtime).value();
    ASSERT_TRUE(defaults->set(keys::portfolioArray, platform::Bytes("[]")));
    ASSERT_TRUE(defaults->set(keys::token, "t"));
    WidgetKitHelper::updatePortfolioArrayUserDefaults(state);
    EXPECT_EQ(defaults->object(keys::portfolioArray).value(), std::nullopt);
    EXPECT_EQ(defaults->object(keys::token).value(), PropertyList("t"));
    WidgetKitHelper::updatePortfolioArrayUserDefaults(state);
}

}  // namespace
}  // namespace extension
