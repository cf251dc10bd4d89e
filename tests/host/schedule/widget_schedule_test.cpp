#include "host/schedule/widget_schedule.h"
#include <gmock/gmock.h>
#include <algorithm>
#include <atomic>
#include <map>
#include <thread>

namespace host {
namespace {

using namespace std::chrono_literals;
using platform::WidgetFamily;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

/// "WIDGET REQUESTER: RESULT (REASON)".
std::vector<std::string> linesOf(const Ledger& ledger) {
    std::vector<std::string> lines;
    for (const LedgerEntry& entry : ledger.entries()) {
        const std::string line = ledgerLine(entry);
        lines.push_back(std::to_string(entry.widget) + " " + std::string(description(entry.requester)) +
                        line.substr(line.rfind(": ", line.find('('))));
    }
    return lines;
}

/// A keeper whose both clocks show the same, set by the test.
struct Keeper {
    explicit Keeper(ReloadMode mode = ReloadMode::live) : keeper(ledger, mode) {}

    void place(int id, WidgetFamily family = WidgetFamily::systemLarge) {
        keeper.place(id, "NewsWidget", family, now());
    }

    Moment now() const { return {platform::Instant(time), std::chrono::steady_clock::time_point(time)}; }

    /// The widgets whose timeline is asked for now; placeholders never come.
    std::vector<int> asks() {
        std::vector<int> ids;
        steps = keeper.advance(now());
        for (const TimelineQuestion& question : steps.questions) {
            if (question.question.request != EntryRequest::timeline) continue;
            ids.push_back(question.widget);
            numbers[question.widget] = question.number;
        }
        return ids;
    }

    void answer(int id, std::vector<const char*> texts, std::chrono::seconds apart = 60s) {
        EntryAnswer answer{.entries = {}, .policy = platform::TimelineReloadPolicy::atEnd()};
        for (const char* text : texts) {
            const platform::Instant date(time + apart * answer.entries.size());
            answer.entries.push_back({date, "{}", platform::Text(text)});
        }
        keeper.answered(numbers.at(id), std::move(answer), 0, now());
    }

    void fail(int id) {
        keeper.answered(numbers.at(id), platform::failure("ExtensionError", 1, "it died"), 0, now());
    }

    WidgetState state(int id) const {
        const std::vector<WidgetState> states = keeper.states(now());
        return *std::ranges::find(states, id, &WidgetState::id);
    }

    std::chrono::nanoseconds time = 1'000'000s;
    Ledger ledger;
    TimelineKeeper keeper;
    TimelineKeeper::Steps steps;
    std::map<int, std::uint64_t> numbers;
};

TEST(TimelineKeeper, ListsEveryReloadThatAFailureHeldAndItsGrant) {
    Keeper house;
    house.place(1);
    EXPECT_THAT(house.asks(), ElementsAre(1));
    house.fail(1);
    house.time += 100ms;
    EXPECT_THAT(house.asks(), IsEmpty());
    EXPECT_EQ(house.steps.pause, 900ms);
    EXPECT_EQ(house.state(1).lastError, "it died");
    house.time += 900ms;
    EXPECT_THAT(house.asks(), ElementsAre(1));
    house.fail(1);
    EXPECT_THAT(house.asks(), IsEmpty());
    house.keeper.reload(1, Requester::app, house.now());
    EXPECT_THAT(house.asks(), ElementsAre(1));
    EXPECT_THAT(linesOf(house.ledger), ElementsAre("1 placement: failed (it died)",
                                                   "1 policy: held (waiting after a failure; for 1 s)",
                                                   "1 policy: failed (it died; had waited after a failure)",
                                                   "1 policy: held (waiting after a failure; for 2 s)",
                                                   "1 app: running"));
}

TEST(TimelineKeeper, AsksAgainWhenTheSystemsClockGoesBack) {
    Keeper house(ReloadMode::phone);
    house.place(1);
    EXPECT_THAT(house.asks(), ElementsAre(1));
    house.answer(1, {"a"});
    house.time -= 30s;
    EXPECT_THAT(house.asks(), IsEmpty());
    house.time -= 24h;
    EXPECT_THAT(house.asks(), ElementsAre(1));
    house.answer(1, {"b"});
    EXPECT_THAT(house.asks(), IsEmpty());
    EXPECT_EQ(house.state(1).next->at.shown, house.now().shown + 15min);
}

TEST(TimelineKeeper, AwaitsSixTimelinesAtOnceInTheOrderOfTheRequestsAndNotesWhoHadToWait) {
    Keeper house;
    for (const int id : {1, 2, 3, 4, 5, 6, 9, 7}) {
        house.place(id);
        house.time += 1ms;
    }
    EXPECT_THAT(house.asks(), ElementsAre(1, 2, 3, 4, 5, 6));
    house.time += 250ms;
    house.answer(3, {"a"});
    EXPECT_THAT(house.asks(), ElementsAre(9));
    house.answer(9, {"b"});
    EXPECT_THAT(house.asks(), ElementsAre(7));
    house.keeper.reload(3, Requester::person, house.now());
    house.answer(1, {"c"});
    EXPECT_THAT(house.asks(), ElementsAre(3));
    const auto lines = linesOf(house.ledger);
    EXPECT_EQ(lines[6], "9 placement: shown (the extension was busy)");
    EXPECT_EQ(lines[7], "7 placement: running (the extension was busy)");
    EXPECT_EQ(lines[8], "3 person: running");
}

TEST(TimelineKeeper, AsksWidgetsOfAKindOneByOneAfterAFailureUnlessAPersonAsks) {
    Keeper house;
    for (const int id : {1, 2, 3}) house.place(id);
    EXPECT_THAT(house.asks(), ElementsAre(1, 2, 3));
    for (const int id : {1, 2, 3}) house.fail(id);
    house.time += 1s;
    EXPECT_THAT(house.asks(), ElementsAre(1));
    EXPECT_THAT(house.asks(), IsEmpty());
    house.keeper.reload(3, Requester::person, house.now());
    EXPECT_THAT(house.asks(), ElementsAre(3));
    house.answer(1, {"a"});
    EXPECT_THAT(house.asks(), IsEmpty());
    house.answer(3, {"a"});
    EXPECT_THAT(house.asks(), ElementsAre(2));
}

TEST(TimelineKeeper, ShowsEachEntryAtItsMomentAndCountsOnlyNewPictures) {
    Keeper house;
    house.place(1);
    house.asks();
    house.answer(1, {"a", "a", "b"}, 10s);
    EXPECT_THAT(house.asks(), IsEmpty());
    EXPECT_THAT(house.steps.changed, ElementsAre(1));
    EXPECT_EQ(house.steps.pause, 10s);
    const int first = house.state(1).picture->version;
    house.time += 10s;
    house.asks();
    EXPECT_THAT(house.steps.changed, IsEmpty());
    EXPECT_EQ(house.state(1).picture->entryDate, house.now().shown);
    EXPECT_EQ(house.state(1).picture->version, first);
    house.time += 10s;
    // The last entry is due and with it the next timeline, which fails: the picture stays.
    EXPECT_THAT(house.asks(), ElementsAre(1));
    house.fail(1);
    EXPECT_EQ(house.state(1).picture->version, first + 1);
    EXPECT_EQ(house.state(1).failures, 1);
}

TEST(TimelineKeeper, NeverShowsAnAnswerThatBelongsToAFormerUserOrToARemovedWidget) {
    Keeper house;
    house.place(1);
    house.place(2);
    house.asks();
    house.keeper.forget("NewsWidget", house.now());
    house.keeper.remove(2);
    house.answer(1, {"of the former user"});
    house.answer(2, {"removed"});
    EXPECT_EQ(house.state(1).picture, nullptr);
    EXPECT_THAT(house.asks(), ElementsAre(1));
    house.answer(1, {"of the new user"});
    EXPECT_NE(house.state(1).picture, nullptr);
    EXPECT_THAT(linesOf(house.ledger), ElementsAre("1 placement: dropped", "2 placement: dropped",
                                                   "1 app: shown (the extension was busy)"));
}

TEST(WidgetSchedule, AsksTheExtensionAndAsksAgainAfterAFailure) {
    ExtensionProcess extension({.program = "/bin/sh", .arguments = {"-c", "exit 7"}, .log = {}});
    platform::Clock clock;
    Ledger ledger;
    std::atomic<int> changes = 0;
    {
        WidgetSchedule schedule(extension, clock, ledger, ReloadMode::live, [&](int) { ++changes; });
        schedule.place(1, "NewsWidget", WidgetFamily::systemLarge);
        const auto end = std::chrono::steady_clock::now() + 30s;
        while (schedule.states().front().failures < 2 && std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(5ms);
        schedule.stopAsking();
        extension.close();
    }
    EXPECT_GE(changes, 3);
    const auto lines = linesOf(ledger);
    ASSERT_GE(lines.size(), 3U);
    EXPECT_THAT(lines[0], StartsWith("1 placement: failed (the extension ended with exit code 7)"));
    EXPECT_THAT(lines[2], StartsWith("1 policy: failed (the extension ended with exit code 7; had waited"));
}

}  // namespace
}  // namespace host
