#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>
#include "platform/base/bytes.h"
#include "platform/base/clock.h"
#include "platform/base/files.h"
#include "platform/base/program_start.h"
#include "platform/base/uuid.h"
#include "tests/support/expected_text.h"
#include "tests/support/temporary_directory.h"

namespace platform {
namespace {

using namespace std::chrono_literals;

TEST(StandardStreams, ThatAreMissingAreNoPlaceForTheNextFile) {
    const auto isFilled = [] {
        ::close(STDOUT_FILENO);
        fillStandardStreams();
        return ::write(STDOUT_FILENO, "x", 1) == -1 && ::open("/dev/null", O_RDONLY) > STDERR_FILENO;
    };
    EXPECT_EXIT(std::exit(isFilled() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(Files, AreReplacedInOneStepAndReadWithinALimit) {
    const tests::TemporaryDirectory folder;
    const auto file = folder.path() / "file";
    EXPECT_EQ(readFile(file, 10).error().code, ENOENT);
    ASSERT_TRUE(writeFile(file, "0123456789"));
    EXPECT_EQ(readFile(file, 10), "0123456789");
    EXPECT_EQ(readFile(file, 9).error().code, EFBIG);
    std::filesystem::create_hard_link(file, folder.path() / "old");
    ASSERT_TRUE(writeFile(file, ""));
    EXPECT_EQ(readFile(file, 10), "");
    EXPECT_EQ(readFile(folder.path() / "old", 10), "0123456789") << "the old file is not written into";
    EXPECT_EQ(std::filesystem::status(file).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    EXPECT_FALSE(writeFile(folder.path() / "missing" / "file", ""));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 2)
        << "no drafts are left";
}

TEST(Files, ThatAreNotRegularAreRefusedAtOnce) {
    const tests::TemporaryDirectory folder;
    const auto pipe = folder.path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (const std::filesystem::path& path : {pipe, folder.path(), std::filesystem::path("/dev/null")})
        EXPECT_THAT(readFile(path, 10).error().message, testing::HasSubstr("is not a regular file"));
}

TEST(Instants, AreReadWithAnOffsetAndWrittenInUTC) {
    EXPECT_TRUE(tests::answersAsExpected("platform/instants.txt", [](const std::string& text) {
        const auto instant = parseInstant(text);
        return instant ? formatInstant(*instant) : "nothing";
    }));
}

TEST(Base64, KeepsBytesOfEveryLength) {
    std::string bytes;
    for (int length = 0; length < 260; ++length) {
        EXPECT_EQ(base64Decoded(base64Encoded(bytes)), bytes) << length;
        bytes += static_cast<char>(length * 7);
    }
    EXPECT_EQ(base64Encoded(std::string_view("\xFB\xFF\xBE", 3)), "+/++");
}

TEST(Base64, IsNothingWhenAnyCharacterIsWrong) {
    for (const char* text :
         {"A", "AB", "ABC", "AB=C", "A===", "====", "QUJD\n", "QU-_", "QUJ=QUJD", "QUJDRA", "=QUJ"}) {
        EXPECT_FALSE(base64Decoded(text)) << text;
    }
}

TEST(Identifiers, AreReadInEitherCaseAndPrintedInUpperCase) {
    const auto uuid = UUID::parse("0f8fad5b-d9cb-469f-a165-70867728950E");
    ASSERT_TRUE(uuid);
    EXPECT_EQ(uuid->text(), "0F8FAD5B-D9CB-469F-A165-70867728950E");
    for (const char* text :
         {"", "0f8fad5bd9cb469fa16570867728950e", "0f8fad5b-d9cb-469f-a165-70867728950g",
          "{0f8fad5b-d9cb-469f-a165-70867728950}", "0f8fad5b-d9cb-469f-a1657-0867728950e"}) {
        EXPECT_FALSE(UUID::parse(text)) << text;
    }
}

TEST(Identifiers, FollowTheSeedAndAreOtherwiseRandom) {
    IdSource first(7);
    IdSource second(7);
    EXPECT_EQ(first.next(), second.next());
    EXPECT_NE(first.next(), first.next());
    EXPECT_NE(IdSource().next(), IdSource().next());
    const std::string text = IdSource().next().text();
    EXPECT_EQ(text[14], '4');
    EXPECT_THAT(std::string("89AB"), testing::HasSubstr(std::string(1, text[19])));
}

TEST(AClock, StandsStillRunsFastOrFollowsTheSystem) {
    const Instant noon = *parseInstant("2026-11-22T12:00:00Z");
    Clock clock(noon);
    EXPECT_EQ(clock.now(), noon);

    clock.set(noon, 3600.0);
    std::this_thread::sleep_for(5ms);
    EXPECT_GE(clock.now(), noon + 18s);
    EXPECT_LT(clock.now(), noon + 24h);

    clock.followSystem();
    EXPECT_LT(std::chrono::abs(clock.now() - std::chrono::system_clock::now()), 10s);
}

}  // namespace
}  // namespace platform
