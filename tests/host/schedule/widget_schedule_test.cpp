#include "host/schedule/widget_schedule.h"
#include <gmock/gmock.h>
#include <algorithm>
#include <thread>

namespace host {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

/// A schedule before an extension that is a shell script.
struct Schedule {
    explicit Schedule(const char* script)
        : renderer(std::move(*Painter::make(std::filesystem::path(BRIGHTLEDGER_SOURCE_DIR) / "resources")),
                   18),
          extension({.program = "/bin/sh", .arguments = {"-c", script}, .log = {}}),
          schedule({extension, renderer, clock, ledger, [](int) {}}, ReloadMode::live) {}
    ~Schedule() {
        schedule.stopAsking();
        extension.close();
    }

    /// The ledger's lines, each from its requester on, once there are so many and no reload is under way.
    std::vector<std::string> lines(std::size_t count) const {
        const auto isRunning = [](const LedgerEntry& entry) {
            return entry.result == LedgerEntry::Result::running;
        };
        std::vector<LedgerEntry> entries;
        const auto end = std::chrono::steady_clock::now() + 30s;
        do {
            std::this_thread::sleep_for(5ms);
            entries = ledger.entries();
        } while ((entries.size() < count || std::ranges::any_of(entries, isRunning)) &&
                 std::chrono::steady_clock::now() < end);
        std::vector<std::string> lines;
        for (const LedgerEntry& entry : entries) {
            const std::string line = ledgerLine(entry);
            lines.push_back(line.substr(line.find("asked by")));
        }
        return lines;
    }

    WidgetRenderer renderer;
    ExtensionProcess extension;
    platform::Clock clock;
    Ledger ledger;
    WidgetSchedule schedule;
};

TEST(WidgetSchedule, TellsOfEveryRequestThatAFailureHeldAndOfItsGrant) {
    Schedule house("exit 7");
    house.schedule.place(1, "NewsWidget", platform::WidgetFamily::systemLarge);
    house.lines(2);
    house.schedule.reload(1, Requester::app);
    const auto lines = house.lines(5);
    const auto line = [](const char* requester, const char* result) {
        return testing::AllOf(testing::StartsWith(std::string("asked by ") + requester), HasSubstr(result));
    };
    EXPECT_THAT(
        lines, ElementsAre(
                   line("placement", ": failed (the extension ended with exit code 7)"),
                   line("policy", ": held (waiting after a failure; for 1 s)"),
                   line("app", ": held (waiting after a failure; for 1 s)"),
                   line("app", ": failed (the extension ended with exit code 7; had waited after a failure)"),
                   line("policy", ": held (waiting after a failure; for 2 s)")));
}

TEST(WidgetSchedule, ReloadsFirstWhatWasAskedForFirstAndTellsWhoHadToWait) {
    Schedule house("sleep 0.3; exit 7");
    for (const int id : {1, 2, 3, 4, 5, 6, 9, 7})
        house.schedule.place(id, "NewsWidget", platform::WidgetFamily::systemLarge);
    house.lines(16);
    std::vector<std::pair<int, bool>> reloads;
    for (const LedgerEntry& entry : house.ledger.entries()) {
        if (entry.requester == Requester::placement)
            reloads.emplace_back(entry.widget, entry.reason.find("was busy") != std::string::npos);
    }
    const std::vector<std::pair<int, bool>> inTheirOrder{{1, false}, {2, false}, {3, false}, {4, false},
                                                         {5, false}, {6, false}, {9, true},  {7, true}};
    EXPECT_EQ(reloads, inTheirOrder);
}

TEST(WidgetSchedule, AsksWidgetsOfAKindOneByOneAfterAFailure) {
    Schedule house("sleep 0.2; exit 7");
    for (const int id : {1, 2}) house.schedule.place(id, "NewsWidget", platform::WidgetFamily::systemLarge);
    house.lines(6);
    std::vector<platform::Instant> repeated;
    for (const LedgerEntry& entry : house.ledger.entries()) {
        if (entry.requester == Requester::policy && entry.result == LedgerEntry::Result::failed)
            repeated.push_back(entry.decided);
    }
    ASSERT_GE(repeated.size(), 2U);
    EXPECT_GE(repeated[1] - repeated[0], 200ms);
}

}  // namespace
}  // namespace host
