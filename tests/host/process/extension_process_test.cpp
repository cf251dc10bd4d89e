#include "host/process/extension_process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <filesystem>
#include <future>
#include <iterator>
#include <mutex>
#include <string>
#include <thread>
#include <vector>
#include "platform/settings/property_list.h"
#include "tests/support/files.h"
#include "tests/support/loopback_server.h"
#include "tests/support/temporary_directory.h"

namespace {

using host::EntryQuestion;
using host::EntryRequest;
using host::ExtensionOptions;
using host::ExtensionProcess;
using platform::PropertyList;
using platform::WidgetFamily;
using testing::HasSubstr;
using testing::StartsWith;
using tests::contentOf;
using namespace std::chrono_literals;

const std::filesystem::path programs = BRIGHTLEDGER_PROGRAM_DIR;
constexpr auto patience = 60s;

/// An extension whose quotes come from a service of the test's own.
class ExtensionTest : public testing::Test {
protected:
    ExtensionOptions options(std::vector<std::string> more = {}) const {
        std::vector<std::string> arguments{
            "--data-dir", directory_.path() / "data", "--info-plist", informationFile(),
            "--now",      "2026-11-22T06:30:00Z",     "--time-zone",  "Asia/Kolkata"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return {.program = programs / "brightledger-extension", .arguments = arguments, .log = {}};
    }

    std::string informationFile() const {
        return tests::written(
            directory_.path() / "Info.plist",
            *platform::xmlPropertyList(PropertyList::Dictionary{{"ProductionAPIHost", service_.origin()}}));
    }

    tests::TemporaryDirectory directory_;
    tests::LoopbackServer service_;
};

EntryQuestion perch(EntryRequest request) {
    return {.kind = "PerchWidget",
            .family = WidgetFamily::systemMedium,
            .request = request,
            .wantsEntries = true,
            .wantsViews = true};
}

std::size_t openFiles() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

bool hasNoChild() { return waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD; }

/// What went wrong; empty when nothing did.
std::string complaint(const auto& answer) { return answer ? "" : answer.error().message; }

TEST_F(ExtensionTest, OneChildServesAllWidgetsAndStaysWarm) {
    ExtensionProcess extension(options());
    EXPECT_EQ(extension.processId(), 0);

    const auto widgets = extension.gallery(patience);
    ASSERT_TRUE(widgets) << widgets.error().message;
    const int child = extension.processId();
    ASSERT_EQ(widgets->size(), 3U);
    EXPECT_TRUE(widgets->front().contentMarginsDisabled);

    const auto timeline = extension.ask(perch(EntryRequest::timeline), patience);
    ASSERT_TRUE(timeline) << timeline.error().message;
    ASSERT_EQ(timeline->entries.size(), 1U);
    EXPECT_THAT(timeline->entries.front().json, StartsWith("{"));
    EXPECT_TRUE(timeline->entries.front().view);
    EXPECT_EQ(timeline->policy,
              platform::TimelineReloadPolicy::after(*platform::parseInstant("2026-11-22T06:30:30Z")));

    EXPECT_TRUE(extension.gallery(patience));
    EXPECT_EQ(extension.processId(), child);
    EXPECT_GT(extension.statistics().peakRssKiB, 1000);
    EXPECT_GT(extension.statistics().wallMs, 0.0);
}

TEST_F(ExtensionTest, ALateAnswerIsDroppedAndTheChildLivesOn) {
    service_.answer({.status = 500, .delay = 700ms});
    ExtensionProcess extension(options());
    ASSERT_TRUE(extension.gallery(patience));
    const int child = extension.processId();

    EXPECT_EQ(complaint(extension.ask(perch(EntryRequest::timeline), 100ms)),
              "the extension did not answer in 100 ms");

    const auto next = extension.ask(perch(EntryRequest::timeline), patience);
    EXPECT_TRUE(next) << next.error().message;
    EXPECT_EQ(extension.processId(), child);
    EXPECT_GE(next->networkMs, 600.0);
}

TEST_F(ExtensionTest, ADeathFailsWhatWasAskedWithItsSignalAndTheNextQuestionStartsANewChild) {
    service_.answer({.ending = tests::Answer::Ending::silence});
    ExtensionProcess extension(options());
    ASSERT_TRUE(extension.gallery(patience));
    const int first = extension.processId();

    auto answer = std::async(std::launch::async,
                             [&] { return extension.ask(perch(EntryRequest::timeline), patience); });
    ASSERT_TRUE(service_.waitForRequests(1));
    kill(first, SIGKILL);
    EXPECT_EQ(complaint(answer.get()), "the extension was ended by signal 9 (SIGKILL)");

    ASSERT_TRUE(extension.gallery(patience));
    EXPECT_NE(extension.processId(), first);
}

TEST_F(ExtensionTest, AChildThatStandsStillIsEndedWhenItAnswersNoPing) {
    ExtensionProcess extension(options());
    ASSERT_TRUE(extension.gallery(patience));
    kill(extension.processId(), SIGSTOP);

    EXPECT_EQ(complaint(extension.ask(perch(EntryRequest::placeholder), patience)),
              "the extension answered no ping for 2 seconds");
    EXPECT_TRUE(extension.gallery(patience));
}

TEST_F(ExtensionTest, AnIdleChildGoesButNotWhileItIsAsked) {
    service_.answer({.status = 500, .delay = 600ms});
    ExtensionOptions impatient = options();
    impatient.idleLimit = 200ms;
    ExtensionProcess extension(impatient);
    const auto answer = extension.ask(perch(EntryRequest::timeline), patience);
    ASSERT_TRUE(answer) << answer.error().message;
    EXPECT_GE(answer->networkMs, 600.0);

    while (extension.processId() != 0) std::this_thread::sleep_for(5ms);
    EXPECT_TRUE(hasNoChild());
    EXPECT_TRUE(extension.gallery(patience));
}

TEST_F(ExtensionTest, AChildWhoseOwnMemoryPassesTheLimitIsKilled) {
    const std::vector<char> ours(64U << 20, 'x');
    for (int start = 0; start < 5; ++start) {
        ExtensionProcess extension(options());
        EXPECT_EQ(complaint(extension.gallery(patience)), "");
    }
    service_.answer({.ending = tests::Answer::Ending::silence});
    ExtensionOptions narrow = options();
    narrow.residentLimitKiB = 2048;
    ExtensionProcess extension(narrow);
    EXPECT_EQ(complaint(extension.ask(perch(EntryRequest::timeline), patience)),
              "the extension's memory passed 2 MB");
}

TEST_F(ExtensionTest, ItsClockFollowsTheHostsAlsoInAChildThatStartsLater) {
    ExtensionProcess extension(options());
    const auto reloadAfter = [&] {
        const auto answer = extension.ask(perch(EntryRequest::timeline), patience);
        return platform::formatInstant(answer->policy->date);
    };
    ASSERT_TRUE(extension.setClock(platform::parseInstant("2027-01-01T00:00:00Z"), 0.0));
    EXPECT_EQ(extension.processId(), 0);
    EXPECT_EQ(reloadAfter(), "2027-01-01T00:00:30.000Z");
    ASSERT_TRUE(extension.setClock(platform::parseInstant("2027-02-01T00:00:00Z"), 0.0));
    EXPECT_EQ(reloadAfter(), "2027-02-01T00:00:30.000Z");
    extension.end();
    EXPECT_EQ(extension.processId(), 0);
    EXPECT_EQ(reloadAfter(), "2027-02-01T00:00:30.000Z");
}

TEST_F(ExtensionTest, TheChildHasNothingOfItsParentsButThreeDescriptors) {
    ASSERT_EQ(setenv("BRIGHTLEDGER_TEST_SECRET", "open sesame", 1), 0);
    ExtensionProcess extension(options());
    ASSERT_TRUE(extension.gallery(patience));
    const std::filesystem::path child = "/proc/" + std::to_string(extension.processId());

    EXPECT_THAT(contentOf(child / "environ"), testing::Not(HasSubstr("BRIGHTLEDGER_TEST_SECRET")));
    EXPECT_THAT(contentOf(child / "status"), HasSubstr("NoNewPrivs:\t1"));
    std::size_t inherited = 0;
    for (const auto& file : std::filesystem::directory_iterator(child / "fd")) {
        const std::string target = std::filesystem::read_symlink(file);
        inherited += target.starts_with("socket:") || target.starts_with("pipe:");
    }
    EXPECT_EQ(inherited, 3U);
}

TEST_F(ExtensionTest, TheChildsLogArrivesLineByLine) {
    std::mutex mutex;
    std::vector<std::string> lines;
    ExtensionOptions verbose = options({"--no-such-option"});
    verbose.log = [&](std::string line) {
        const std::lock_guard lock(mutex);
        lines.push_back(std::move(line));
    };
    ExtensionProcess extension(verbose);
    EXPECT_EQ(complaint(extension.gallery(patience)),
              "the extension ended with exit code 2: "
              "brightledger-extension: cannot use the argument --no-such-option");
    EXPECT_THAT(lines,
                testing::ElementsAre("brightledger-extension: cannot use the argument --no-such-option"));
}

TEST_F(ExtensionTest, AProgramThatIsNotThereOrCannotRunIsAnErrorAndNotAWait) {
    std::filesystem::permissions(informationFile(), std::filesystem::perms::owner_all);
    const std::pair<std::filesystem::path, const char*> cases[] = {
        {"/no/such/program", "No such file or directory"},
        {directory_.path(), "Permission denied"},
        {informationFile(), "Exec format error"}};
    for (const auto& [program, reason] : cases) {
        ExtensionProcess extension({.program = program, .arguments = {}, .log = {}});
        EXPECT_EQ(complaint(extension.gallery(patience)),
                  "the extension " + program.string() + " cannot be started: " + reason);
        EXPECT_TRUE(hasNoChild());
    }
}

TEST(ExtensionProcess, AChildThatBehavesBadlyIsEndedAndNotBelieved) {
    const std::pair<const char*, const char*> speakers[] = {
        {"printf '\\377\\377\\377\\377\\377'; sleep 60",
         "the extension sent something that is not a message"},
        {"printf '\\002\\377\\377'; sleep 60", "the extension sent something that is not a message"},
        {"printf '\\004\\022\\002\\010\\007'; sleep 60", "the extension speaks another version"},
        {"exec >&- <&-; sleep 60", "the extension closed its output"},
        {"printf '\\004\\022\\002\\010\\001'; x=$(head -c 40000000 /dev/zero | tr '\\0' x); x=; "
         "printf '\\004\\010\\001\\052\\000'; sleep 60",
         "the extension's memory passed 30 MB"},
        {"dd if=/dev/zero of=/dev/null bs=400M count=1 2>/dev/null || exit 9",
         "the extension ended with exit code 9"},
        {"exit 7", "the extension ended with exit code 7"},
        {"kill -SEGV $$", "the extension was ended by signal 11 (SIGSEGV)"},
        {"echo fatal error: broken >&2; kill -ABRT $$",
         "the extension was ended by signal 6 (SIGABRT): broken"},
    };
    for (const auto& [script, expected] : speakers) {
        ExtensionProcess extension({.program = "/bin/sh",
                                    .arguments = {"-c", script},
                                    .log = {},
                                    .residentLimitKiB = 30L * 1024,
                                    .addressSpaceLimit = 256U << 20});
        EXPECT_EQ(complaint(extension.gallery(patience)), expected) << script;
    }
}

TEST(ExtensionProcess, AThousandDeathsLeaveNoZombieAndNoOpenFile) {
    ExtensionProcess extension({.program = "/bin/false", .arguments = {}, .log = {}});
    ASSERT_FALSE(extension.gallery(patience));
    const std::size_t before = openFiles();
    for (int death = 0; death < 1000; ++death) ASSERT_FALSE(extension.gallery(patience));
    // The last few may still be on their way out.
    EXPECT_LT(openFiles(), before + 10);
    EXPECT_TRUE(hasNoChild());
}

TEST(ExtensionProcess, ItsEndFailsWhatIsStillAskedAndLeavesNothing) {
    ExtensionProcess extension({.program = "/bin/sleep", .arguments = {"60"}, .log = {}});
    auto answer = std::async(std::launch::async, [&] { return extension.gallery(patience); });
    while (extension.processId() == 0) std::this_thread::sleep_for(1ms);
    extension.end();
    EXPECT_THAT(complaint(answer.get()), StartsWith("the extension was ended"));
    EXPECT_TRUE(hasNoChild());
    extension.close();
    EXPECT_FALSE(extension.gallery(patience));
    EXPECT_EQ(extension.processId(), 0);
}

}  // namespace
