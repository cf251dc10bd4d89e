#include "platform/runtime/runtime.h"

#include <gmock/gmock.h>

#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>
#include "tests/support/temporary_directory.h"

namespace platform {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using tests::TemporaryDirectory;

TEST(ARuntime, SaysOnceThatAStoreCannotBeOpenedAndTriesAnewEachTime) {
    const TemporaryDirectory folder;
    const auto blocked = folder.path() / "data";
    std::ofstream(blocked) << "a file where the folder should be";
    auto lines = std::make_shared<std::vector<std::string>>();
    const Runtime runtime(
        {.dataDirectory = blocked, .log = [lines](std::string_view line) { lines->emplace_back(line); }});

    EXPECT_FALSE(runtime.defaults("group.test"));
    EXPECT_FALSE(runtime.defaults("group.test"));
    EXPECT_THAT(*lines, ElementsAre(HasSubstr("data")));

    std::filesystem::remove(blocked);
    const auto store = runtime.defaults("group.test");
    ASSERT_TRUE(store);
    EXPECT_EQ(*runtime.defaults("group.test"), *store);
    EXPECT_NE(*runtime.defaults("group.other"), *store);
}

TEST(ARuntime, SaysOnceThatAStoreIsDamaged) {
    const TemporaryDirectory folder;
    ASSERT_TRUE(UserDefaults::open(folder.path(), "group.test").value()->set("key", "value"));
    const auto file = storeFile(folder.path(), "group.test");
    const std::string noise(std::filesystem::file_size(file) - 4096, 'Z');
    std::fstream(file, std::ios::in | std::ios::out | std::ios::binary).seekp(4096) << noise;
    auto lines = std::make_shared<std::vector<std::string>>();
    const Runtime runtime({.dataDirectory = folder.path(),
                           .log = [lines](std::string_view line) { lines->emplace_back(line); }});

    EXPECT_FALSE(runtime.defaults("group.test"));
    EXPECT_FALSE(runtime.defaults("group.test"));
    EXPECT_THAT(*lines, ElementsAre(HasSubstr("malformed")));
}

TEST(ARuntime, MakesItsPartsOnceHoweverManyThreadsAskFirst) {
    const TemporaryDirectory folder;
    const Runtime runtime({.dataDirectory = folder.path(), .locale = {"en_IN"}});
    struct Parts {
        const NumberFormatter* formatter = nullptr;
        const URLLoader* loader = nullptr;
        std::shared_ptr<UserDefaults> store;
        bool operator==(const Parts&) const = default;
    };
    std::vector<Parts> seen(4);
    std::vector<std::thread> threads;
    for (Parts& parts : seen) {
        threads.emplace_back([&] {
            const auto store = *runtime.defaults("group.test");
            parts = {&runtime.numberFormatter(), &runtime.urls(), store};
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_THAT(seen, testing::Each(seen.front()));
    EXPECT_EQ(runtime.numberFormatter().twoDecimals(1234567.891), "12,34,567.89");
}

TEST(ARuntime, StopsItsClockAndFixesItsIdentifiersOnRequest) {
    const Instant moment = *parseInstant("2026-11-22T03:30:00Z");
    const Runtime first({.now = moment, .idSeed = 5});
    const Runtime second({.now = moment, .idSeed = 5});
    EXPECT_EQ(first.now(), moment);
    EXPECT_EQ(first.ids().next(), second.ids().next());
    EXPECT_NE(Runtime(RuntimeOptions{}).ids().next(), Runtime(RuntimeOptions{}).ids().next());
}

TEST(ARuntime, WithoutAHostReportsAnErrorForTheWidgetsThatArePlaced) {
    const Runtime runtime(RuntimeOptions{});
    int calls = 0;
    runtime.widgetCenter().reloadAllTimelines();
    runtime.widgetCenter().getCurrentConfigurations(
        [&calls](const Result<std::vector<PlacedWidget>>& placed) {
            ++calls;
            ASSERT_FALSE(placed);
            EXPECT_EQ(placed.error().domain, "WidgetCenterError");
        });
    EXPECT_EQ(calls, 1);
}

TEST(ARuntimeDeathTest, IsTheProcessesOneFromWhenItIsMadeSoUntilItEnds) {
    {
        const Runtime first(RuntimeOptions{});
        const Runtime second(RuntimeOptions{});
        first.makeCurrent();
        EXPECT_EQ(&Runtime::process(), &first);
        second.makeCurrent();
        EXPECT_EQ(&Runtime::process(), &second);
    }
    EXPECT_DEATH(Runtime::process(), "fatal error: ");
}

}  // namespace
}  // namespace platform
