#include "host/schedule/reload_plan.h"
#include <gmock/gmock.h>

namespace host {
namespace {

using namespace std::chrono_literals;
using platform::TimelineReloadPolicy;

/// A plan and the two clocks that it is told.
struct Desk {
    explicit Desk(ReloadMode mode) : plan(mode) {}

    /// Asks, starts and ends a reload at once; its timeline wants the next one after `interval`.
    void reload(std::chrono::seconds interval) {
        plan.start(now);
        plan.answered(TimelineReloadPolicy::after(now.shown + interval), 1, now.shown, now);
    }
    void pass(std::chrono::milliseconds duration) {
        now.shown += duration;
        now.real += duration;
    }
    /// Seconds from now to the next reload, on both clocks.
    double wait() const {
        const NextReload next = plan.next(now).value();
        return std::max({0.0, std::chrono::duration<double>(next.at.shown - now.shown).count(),
                         std::chrono::duration<double>(next.at.real - now.real).count()});
    }
    Hold hold() const { return plan.next(now).value().hold; }

    Moment now{*platform::parseInstant("2026-11-22T09:00:00Z"), std::chrono::steady_clock::time_point(1000s)};
    ReloadPlan plan;
};

TEST(ReloadPlan, LiveHonoursTheAskedDateButForTheFloor) {
    const struct {
        std::chrono::seconds asked;
        double granted;
        Hold hold;
    } cases[] = {{30s, 30, Hold::none},
                 {5s, 5, Hold::none},
                 {4s, 5, Hold::floor},
                 {0s, 5, Hold::floor},
                 {-60s, 5, Hold::floor}};
    for (const auto& [asked, granted, hold] : cases) {
        Desk desk(ReloadMode::live);
        desk.reload(asked);
        EXPECT_EQ(desk.wait(), granted) << asked.count();
        EXPECT_EQ(desk.hold(), hold) << asked.count();
    }
}

TEST(ReloadPlan, PhoneKeepsFifteenMinutesApartAndGivesSixtyADayOutOverTheDay) {
    Desk desk(ReloadMode::live);
    for (int i = 0; i < 100; ++i) {
        desk.reload(30s);
        desk.pass(30s);
    }
    desk.plan.setMode(ReloadMode::phone);  // what was granted before cost nothing
    desk.pass(15min);
    desk.reload(30s);
    EXPECT_EQ(desk.wait(), 15 * 60);
    EXPECT_EQ(desk.hold(), Hold::floor);

    const auto start = desk.now.shown;
    int reloads = 1;
    while (desk.now.shown < start + 24h) {
        desk.pass(std::chrono::milliseconds(static_cast<long>(desk.wait() * 1000)));
        if (desk.now.shown >= start + 24h) break;
        desk.reload(30s);
        ++reloads;
        EXPECT_EQ(desk.hold(), reloads <= 24 ? Hold::floor : Hold::budget) << reloads;
        EXPECT_LE(desk.wait(), 30 * 60) << reloads;
    }
    EXPECT_EQ(reloads, 60);
    EXPECT_EQ(desk.now.shown, start + 24h);
}

TEST(ReloadPlan, PeopleAndTheAppCostNoBudgetAndAreNotHeldByTheFloor) {
    for (const Requester requester :
         {Requester::person, Requester::app, Requester::clock, Requester::placement}) {
        Desk desk(ReloadMode::phone);
        for (int i = 0; i < 100; ++i) {
            desk.plan.ask(requester, desk.now);
            ASSERT_EQ(desk.wait(), 0) << description(requester);
            desk.reload(30s);
            desk.pass(1s);
        }
        EXPECT_EQ(desk.hold(), Hold::floor) << description(requester);
    }
}

TEST(ReloadPlan, RenewsATimelineThatEndsAfterItsLastEntryOrAfterAQuarterOfAnHour) {
    Desk desk(ReloadMode::live);
    desk.plan.start(desk.now);
    desk.plan.answered(TimelineReloadPolicy::atEnd(), 3, desk.now.shown + 40min, desk.now);
    EXPECT_EQ(desk.wait(), 40 * 60);
    desk.pass(40min);
    desk.plan.start(desk.now);
    desk.plan.answered(TimelineReloadPolicy::atEnd(), 1, desk.now.shown, desk.now);
    EXPECT_EQ(desk.wait(), 15 * 60);
}

TEST(ReloadPlan, WaitsLongerAfterEveryFailureAndNotAtAllAfterASuccess) {
    Desk desk(ReloadMode::live);
    desk.reload(30s);
    std::vector<double> pauses;
    for (int i = 0; i < 11; ++i) {
        desk.plan.start(desk.now);
        desk.plan.failed(desk.now);
        EXPECT_EQ(desk.hold(), Hold::backOff);
        pauses.push_back(desk.wait());
    }
    EXPECT_THAT(pauses, testing::ElementsAre(1, 2, 4, 8, 16, 32, 64, 128, 256, 300, 300));

    desk.pass(301s);
    EXPECT_EQ(desk.wait(), 0);
    EXPECT_EQ(desk.hold(), Hold::backOff);
    desk.plan.start(desk.now);
    desk.plan.failed(desk.now);
    EXPECT_EQ(desk.wait(), 300);
    desk.plan.ask(Requester::app, desk.now);
    EXPECT_EQ(desk.wait(), 0);
    EXPECT_EQ(desk.hold(), Hold::none);
    desk.reload(30s);
    EXPECT_EQ(desk.wait(), 30);
    desk.plan.start(desk.now);
    desk.plan.failed(desk.now);
    EXPECT_EQ(desk.wait(), 1);
}

TEST(ReloadPlan, CountsFailuresByTheRealClockWhileTheShownOneStandsStill) {
    Desk desk(ReloadMode::live);
    desk.plan.ask(Requester::placement, desk.now);
    desk.plan.start(desk.now);
    desk.plan.failed(desk.now);
    EXPECT_FALSE(desk.plan.next(desk.now)->isReady(desk.now));
    desk.now.real += 1s;
    EXPECT_TRUE(desk.plan.next(desk.now)->isReady(desk.now));
}

TEST(ReloadPlan, MergesRequestsAndKeepsOneThatComesWhileItIsAnswered) {
    Desk desk(ReloadMode::live);
    EXPECT_FALSE(desk.plan.next(desk.now));
    desk.plan.ask(Requester::app, desk.now);
    desk.plan.ask(Requester::app, desk.now);
    desk.plan.start(desk.now);
    EXPECT_FALSE(desk.plan.next(desk.now));
    desk.plan.ask(Requester::app, desk.now);
    desk.plan.answered(TimelineReloadPolicy::after(desk.now.shown + 30s), 1, desk.now.shown, desk.now);
    EXPECT_EQ(desk.wait(), 0);
    EXPECT_EQ(desk.hold(), Hold::busy);
    desk.reload(30s);
    EXPECT_EQ(desk.wait(), 30);
}

TEST(ReloadPlan, CountsAnewWhenTheClockIsSet) {
    Desk desk(ReloadMode::phone);
    for (int i = 0; i < 60; ++i) {
        desk.reload(0s);
        desk.pass(15min);
    }
    desk.now.shown -= 48h;
    desk.plan.clockMoved();
    desk.plan.ask(Requester::clock, desk.now);
    desk.reload(30s);
    EXPECT_EQ(desk.hold(), Hold::floor);
    EXPECT_EQ(desk.wait(), 15 * 60);
}

}  // namespace
}  // namespace host
