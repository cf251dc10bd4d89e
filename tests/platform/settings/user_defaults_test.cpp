#include "platform/settings/user_defaults.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <barrier>
#include <cmath>
#include <functional>
#include <future>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>
#include "tests/platform/settings/samples.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;
using testing::HasSubstr;
using tests::TemporaryDirectory;

constexpr const char* suite = "group.test";

std::shared_ptr<UserDefaults> opened(const fs::path& folder) {
    auto store = UserDefaults::open(folder, suite);
    if (!store) {
        ADD_FAILURE() << store.error().message;
        return nullptr;
    }
    return *store;
}

unsigned modeOf(const fs::path& file) { return static_cast<unsigned>(fs::status(file).permissions()); }

fs::path beside(const fs::path& file, const char* suffix) { return fs::path(file) += suffix; }

/// Runs `work(0)` to `work(count - 1)` in as many child processes at once.
bool inChildren(int count, const std::function<bool(int)>& work) {
    std::vector<pid_t> children;
    for (int i = 0; i < count; ++i) {
        const pid_t child = fork();
        if (child == 0) _exit(work(i) ? 0 : 1);
        children.push_back(child);
    }
    bool isGood = true;
    for (const pid_t child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        isGood = isGood && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
    return isGood;
}

bool inChild(const std::function<bool()>& work) {
    return inChildren(1, [&](int) { return work(); });
}

PropertyList nestedDictionaries(int levels) {
    PropertyList value = Array{};
    for (int i = 1; i < levels; ++i) value = Dictionary{{"inner", std::move(value)}};
    return value;
}

TEST(ASettingsStore, KeepsEveryTypeAndEveryBitUntilItIsRemoved) {
    const TemporaryDirectory folder;
    const Dictionary values{
        {"text", "रुपया"},
        {"text with a NUL", std::string("a\0b", 3)},
        {"empty text", ""},
        {"", "under the empty key"},
        {"true", true},
        {"one", 1},
        {"one real", 1.0},
        {"minus zero", -0.0},
        {"smallest", std::numeric_limits<std::int64_t>::min()},
        {"moment", Instant(std::chrono::nanoseconds(1'234'567'890'123'456'789))},
        {"no bytes", Bytes()},
        {"many bytes", Bytes(std::string(5U << 20, '\xA7'))},
        {"nested", nestedDictionaries(31)},
        {"list", Array{1, true, "x", Dictionary{}, Array{}}},
    };
    for (const auto& [key, value] : values) ASSERT_TRUE(opened(folder.path())->set(key, value)) << key;
    ASSERT_TRUE(opened(folder.path())->set("not a number", std::nan("")));

    const auto store = opened(folder.path());
    auto all = store->dictionaryRepresentation();
    ASSERT_TRUE(all);
    EXPECT_TRUE(std::isnan(*all->at("not a number").real()));
    all->erase("not a number");
    EXPECT_EQ(*all, values);
    EXPECT_TRUE(std::signbit(*all->at("minus zero").real()));
    EXPECT_EQ(store->object("one")->value().boolean(), nullptr);

    EXPECT_FALSE(store->set("nested", nestedDictionaries(32)));
    EXPECT_EQ(store->object("nested")->value(), nestedDictionaries(31));
    for (int time = 0; time < 2; ++time) {
        ASSERT_TRUE(store->remove("nested"));
        EXPECT_EQ(*store->object("nested"), std::nullopt);
    }
    EXPECT_EQ(store->dictionaryRepresentation()->size(), values.size());
}

TEST(ASettingsStore, ShowsAWriteToEveryProcessAtOnce) {
    const TemporaryDirectory folder;
    const auto app = opened(folder.path());
    ASSERT_TRUE(app->set("theme", 1));
    EXPECT_EQ(*app->object("theme"), PropertyList(1));
    ASSERT_TRUE(inChild([&] { return opened(folder.path())->set("theme", 2).has_value(); }));
    EXPECT_EQ(*app->object("theme"), PropertyList(2));
}

TEST(ASettingsStore, IsMadeByOneOfManyThatOpenItAtOnce) {
    const TemporaryDirectory directory;
    std::barrier meeting(8);
    std::vector<std::future<bool>> visits;
    for (int i = 0; i < 8; ++i) {
        visits.push_back(std::async(std::launch::async, [&, i] {
            meeting.arrive_and_wait();
            const auto store = UserDefaults::open(directory.path(), suite);
            const bool isWritten = store && (*store)->set("key" + std::to_string(i), i);
            meeting.arrive_and_wait();
            return isWritten;
        }));
    }
    for (auto& visit : visits) EXPECT_TRUE(visit.get());
    const auto store = opened(directory.path());
    EXPECT_EQ(store->dictionaryRepresentation()->size(), 8U);
    fs::remove(storeFile(directory.path(), suite));
    EXPECT_TRUE(opened(directory.path())->dictionaryRepresentation()->empty()) << "lost under its user";
}

TEST(ASettingsStore, IsForItsOwnerOnly) {
    const TemporaryDirectory folder;
    const mode_t before = umask(0);
    const auto store = opened(folder.path() / "a" / "b");
    ASSERT_TRUE(store->set("token", "secret"));
    umask(before);
    const fs::path file = storeFile(folder.path() / "a" / "b", suite);
    EXPECT_EQ(modeOf(folder.path() / "a"), 0700U);
    EXPECT_EQ(modeOf(folder.path() / "a" / "b"), 0700U);
    for (const char* suffix : {"", "-wal", "-shm", "-lock"}) {
        EXPECT_EQ(modeOf(beside(file, suffix)), 0600U) << suffix;
    }
}

TEST(ASettingsStore, KeepsATransactionWhollyOrNotAtAll) {
    const TemporaryDirectory folder;
    const auto store = opened(folder.path());
    ASSERT_TRUE(store->set("kept", 1));
    const auto failed = store->transaction([](UserDefaults::Transaction& change) -> Result<void> {
        (void)change.set("kept", 2);
        (void)change.set("new", 2);
        return failure("TestError", 7, "no");
    });
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.error().code, 7);
    EXPECT_EQ(*store->dictionaryRepresentation(), (Dictionary{{"kept", 1}}));

    const auto done = store->transaction([](UserDefaults::Transaction& change) -> Result<void> {
        if (change.object("kept")->value() != PropertyList(1)) return failure("TestError", 1, "no");
        (void)change.remove("kept");
        return change.set("new", 2);
    });
    EXPECT_TRUE(done);
    EXPECT_EQ(*store->dictionaryRepresentation(), (Dictionary{{"new", 2}}));
}

TEST(ASettingsStore, LosesNoStepWhenProcessesCountTogether) {
    const TemporaryDirectory folder;
    // They also make the store together: it does not exist before.
    EXPECT_TRUE(inChildren(6, [&](int) {
        const auto store = UserDefaults::open(folder.path(), suite);
        if (!store) return false;
        for (int i = 0; i < 50; ++i) {
            const auto done = (*store)->transaction([](UserDefaults::Transaction& change) -> Result<void> {
                const auto old = change.object("count");
                if (!old) return tl::unexpected(old.error());
                return change.set("count", coercedInteger(*old) + 1);
            });
            if (!done) return false;
        }
        return true;
    }));
    EXPECT_EQ(opened(folder.path())->object("count")->value(), PropertyList(300));
}

TEST(ASettingsStore, ShowsNoReaderHalfATransactionOnAnyThread) {
    const TemporaryDirectory folder;
    const auto store = opened(folder.path());
    std::atomic<int> writing = 2;
    const auto write = [&](const std::shared_ptr<UserDefaults>& own) {
        for (int i = 0; i < 200; ++i) {
            EXPECT_TRUE(own->transaction([i](UserDefaults::Transaction& change) -> Result<void> {
                (void)change.set("a", i);
                return change.set("b", i);
            }));
        }
        --writing;
    };
    const std::jthread ownStore([&] { write(opened(folder.path())); });
    const std::jthread sameStore([&] { write(store); });
    while (writing > 0) {
        const auto both = store->objects({"a", "b"});
        ASSERT_TRUE(both);
        EXPECT_EQ(*both->front(), *both->back());
    }
    EXPECT_EQ(store->dictionaryRepresentation()->size(), 2U);
}

TEST(ASettingsStore, IsNotSharedAcrossAFork) {
    const TemporaryDirectory folder;
    auto store = opened(folder.path());
    ASSERT_TRUE(store->set("a", 1));
    EXPECT_TRUE(inChild([&] {
        const bool isRefused = !store->object("a") && !store->set("a", 2);
        store.reset();
        return isRefused;
    }));
    ASSERT_TRUE(store->set("b", 2));
    EXPECT_EQ(opened(folder.path())->dictionaryRepresentation()->size(), 2U);
}

TEST(ASettingsStore, OfAnotherNameIsAnotherStoreAndSomeNamesAreRefused) {
    const TemporaryDirectory folder;
    ASSERT_TRUE(opened(folder.path())->set("a", 1));
    EXPECT_EQ(*UserDefaults::open(folder.path(), "group.other").value()->object("a"), std::nullopt);
    for (const std::string& name :
         {std::string(), std::string("a/b"), std::string("../x"), std::string("a\0b", 3),
          std::string("NSGlobalDomain"), std::string(300, 'x')}) {
        EXPECT_FALSE(UserDefaults::open(folder.path(), name)) << name;
    }
}

TEST(ASettingsStore, FollowsLinksToItsFolderButNotToItsFile) {
    const TemporaryDirectory folder;
    fs::create_directory(folder.path() / "real");
    fs::create_directory_symlink(folder.path() / "real", folder.path() / "link");
    ASSERT_TRUE(opened(folder.path() / "link")->set("a", 1));
    EXPECT_EQ(*opened(folder.path() / "real")->object("a"), PropertyList(1));

    fs::create_directory(folder.path() / "other");
    fs::create_symlink(storeFile(folder.path() / "real", suite), storeFile(folder.path() / "other", suite));
    EXPECT_FALSE(UserDefaults::open(folder.path() / "other", suite));
    EXPECT_FALSE(UserDefaults::open(storeFile(folder.path() / "real", suite), suite));
}

TEST(ASettingsStore, WithAStrangeValueGivesTheOthersAndAnErrorForThatOne) {
    const TemporaryDirectory folder;
    const auto store = opened(folder.path());
    ASSERT_TRUE(store->set("good", 1));
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(storeFile(folder.path(), suite).c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other,
                           "INSERT INTO settings VALUES('unknown', x'FF00', 1), ('cut', x'7305', 2),"
                           "('empty', x'', 3), ('long', x'5454', 4), ('number', 5, 5),"
                           "('count', x'5bffffffffffffff7f', 6)",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(other);

    EXPECT_EQ(*store->object("good"), PropertyList(1));
    for (const char* key : {"unknown", "cut", "empty", "long", "number", "count"}) {
        const auto value = store->object(key);
        ASSERT_FALSE(value) << key;
        EXPECT_THAT(value.error().message, HasSubstr(key));
    }
    const auto several = store->objects({"cut", "good", "absent"});
    ASSERT_TRUE(several);
    EXPECT_FALSE(several->at(0));
    EXPECT_EQ(*several->at(1), PropertyList(1));
    EXPECT_EQ(*several->at(2), std::nullopt);
    EXPECT_FALSE(store->dictionaryRepresentation());
    EXPECT_FALSE(store->set("number", 6)) << "repair sets it aside as it is";
    EXPECT_FALSE(store->remove("number"));
}

/// Runs a statement on a store's file, as another program would.
void runOn(const fs::path& file, const std::string& sql) {
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &other), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(other, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(other);
    sqlite3_close(other);
}

TEST(ASettingsStore, OfTheFirstVersionIsTakenOverAsItIs) {
    const TemporaryDirectory folder;
    const fs::path file = storeFile(folder.path(), suite);
    runOn(file,
          "CREATE TABLE settings(key TEXT PRIMARY KEY NOT NULL, value BLOB NOT NULL) WITHOUT ROWID;"
          "INSERT INTO settings VALUES('yes', x'54'), ('five', x'690500000000000000'), ('strange', x'FF');"
          "PRAGMA user_version=1; PRAGMA journal_mode=WAL");
    const auto expectContent = [&] {
        const auto values =
            UserDefaults::open(folder.path(), suite).value()->objects({"yes", "five", "strange"});
        ASSERT_TRUE(values);
        EXPECT_EQ(*values->at(0), PropertyList(true));
        EXPECT_EQ(*values->at(1), PropertyList(5));
        EXPECT_FALSE(values->at(2));
    };
    expectContent();
    expectContent();
    ASSERT_TRUE(opened(folder.path())->set("strange", 7));
    EXPECT_EQ(opened(folder.path())->dictionaryRepresentation()->size(), 3U);
}

TEST(ASettingsStore, IsNotOpenedWhenOneBitOfAValueHasChangedOrOneIsMissing) {
    const TemporaryDirectory folder;
    const fs::path file = storeFile(folder.path(), suite);
    for (const std::string damage :
         {"UPDATE settings SET value = x'5500' WHERE key = 'b'",
          "UPDATE settings SET key = 'd' WHERE key = 'b'",
          "DROP TRIGGER removed; DELETE FROM settings WHERE key = 'b'", "UPDATE total SET rows = 4"}) {
        fs::remove(file);
        for (const char* key : {"a", "b", "c"}) ASSERT_TRUE(opened(folder.path())->set(key, true));
        runOn(file, damage);
        const auto store = UserDefaults::open(folder.path(), suite);
        ASSERT_FALSE(store) << damage;
        EXPECT_THAT(store.error().message, testing::AnyOf(HasSubstr("is damaged"), HasSubstr("are missing")));
        EXPECT_TRUE(repairStore(folder.path(), suite).value()) << damage;
    }
}

TEST(ASettingsStore, SaysThatItIsDamagedWhateverBitOrBlockOfItsFileIsLost) {
    const TemporaryDirectory folder;
    const fs::path file = storeFile(folder.path(), suite);
    Dictionary all;
    for (int i = 0; i < 60; ++i)
        all.emplace("key" + std::to_string(i), std::string(200, 'v') + std::to_string(i));
    for (const auto& [key, value] : all) ASSERT_TRUE(opened(folder.path())->set(key, value));
    const std::string whole = contentOf(file);
    std::mt19937 random(5);
    int found = 0;
    for (int trial = 0; trial < 300; ++trial) {
        std::string damaged = whole;
        const std::size_t place = random() % whole.size();
        if (trial % 6 == 0) {
            damaged.replace(place / 512 * 512, 512, 512, '\0');
        } else {
            damaged[place] = static_cast<char>(damaged[place] ^ 1 << random() % 8);
        }
        writeFile(file, damaged);
        const auto store = UserDefaults::open(folder.path(), suite);
        const auto values = store ? (*store)->dictionaryRepresentation() : tl::unexpected(store.error());
        found += values ? 0 : 1;
        EXPECT_EQ(values.value_or(all), all) << "byte " << place;
    }
    EXPECT_GT(found, 150) << "most of the file is values";
}

TEST(ASettingsStore, ThatIsDamagedIsNeverTakenForAnEmptyOne) {
    const TemporaryDirectory folder;
    const fs::path file = storeFile(folder.path(), suite);
    {
        const auto store = opened(folder.path());
        for (int i = 0; i < 400; ++i) {
            ASSERT_TRUE(store->set("key" + std::to_string(i), std::string(200, 'v')));
        }
    }
    const std::string whole = contentOf(file);
    ASSERT_GT(whole.size(), 20U * 4096U);
    std::vector<std::pair<std::string, std::string>> cases{
        {"empty", ""},
        {"cut in the first page", whole.substr(0, 1000)},
        {"half", whole.substr(0, whole.size() / 2)},
        {"text", "this is not a database but a text that somebody put here"},
        {"zeros", std::string(whole.size(), '\0')},
    };
    for (std::size_t page = 0; page < whole.size() / 4096; page += 3) {
        std::string damaged = whole;
        damaged.replace(page * 4096, 4096, std::string(4096, page % 2 == 0 ? '\0' : '\xA5'));
        cases.emplace_back("page " + std::to_string(page), damaged);
    }
    for (const auto& [name, content] : cases) {
        writeFile(file, content);
        if (const auto store = UserDefaults::open(folder.path(), suite)) {
            EXPECT_FALSE((*store)->dictionaryRepresentation()) << name;
            for (int i = 0; i < 400; ++i) {
                const auto value = (*store)->object("key" + std::to_string(i));
                EXPECT_TRUE(!value || value->has_value()) << name << ", key " << i;
            }
        }
        EXPECT_EQ(contentOf(file), content) << name;
    }
}

TEST(ASettingsStore, ThatCannotBeWrittenCanStillBeRead) {
    const TemporaryDirectory parent;
    const fs::path folder = parent.path() / "data";
    ASSERT_TRUE(opened(folder)->set("theme", 2));
    // Another user owns the files and may not change the folder; root may change everything.
    constexpr uid_t nobody = 65534;
    const bool isRoot = geteuid() == 0;
    if (isRoot) {
        chmod(parent.path().c_str(), 0755);
        chmod(folder.c_str(), 0755);
        ASSERT_EQ(chown(storeFile(folder, suite).c_str(), nobody, nobody), 0);
    } else {
        chmod(folder.c_str(), 0500);
    }
    for (const bool hasLock : {true, false}) {
        if (!hasLock) fs::remove(beside(storeFile(folder, suite), "-lock"));
        EXPECT_TRUE(inChild([&] {
            if (isRoot && setresuid(nobody, nobody, nobody) != 0) return false;
            const auto store = UserDefaults::open(folder, suite);
            return store && *(*store)->object("theme") == PropertyList(2) &&
                   (*store)->dictionaryRepresentation() && !(*store)->set("theme", 1) &&
                   !UserDefaults::open(folder, "group.new");
        })) << hasLock;
        if (!isRoot) break;
    }
    chmod(folder.c_str(), 0700);
}

TEST(ASettingsStore, DoesNotTakeTheLogOfALostStoreForItsOwn) {
    const TemporaryDirectory folder;
    const fs::path file = storeFile(folder.path(), suite);
    {
        const auto store = opened(folder.path());
        ASSERT_TRUE(store->set("old", 1));
        fs::copy_file(beside(file, "-wal"), folder.path() / "log");
    }
    fs::remove(file);
    fs::rename(folder.path() / "log", beside(file, "-wal"));
    EXPECT_EQ(*opened(folder.path())->object("old"), std::nullopt);
    int logsAside = 0;
    for (const auto& entry : fs::directory_iterator(folder.path())) {
        const std::string name = entry.path().filename().string();
        logsAside += name.find("damaged-") != std::string::npos && name.ends_with("-wal");
    }
    EXPECT_EQ(logsAside, 1);
}

TEST(Repair, SetsADamagedStoreAsideAndANewOneTakesItsPlace) {
    const TemporaryDirectory folder;
    const fs::path file = storeFile(folder.path(), suite);
    EXPECT_EQ(*repairStore(folder.path(), suite), std::nullopt);
    EXPECT_EQ(*repairStore(folder.path() / "missing", suite), std::nullopt);
    EXPECT_FALSE(fs::exists(folder.path() / "missing"));

    ASSERT_TRUE(opened(folder.path())->set("a", 1));
    EXPECT_EQ(*repairStore(folder.path(), suite), std::nullopt);
    EXPECT_EQ(*opened(folder.path())->object("a"), PropertyList(1));

    std::vector<fs::path> places;
    for (const char* content : {"not a database", ""}) {
        writeFile(file, content);
        writeFile(beside(file, "-wal"), "log");
        chmod(file.c_str(), 0644);
        const auto aside = repairStore(folder.path(), suite);
        ASSERT_TRUE(aside && *aside) << content;
        places.push_back(**aside);
        EXPECT_EQ(contentOf(places.back()), content);
        EXPECT_EQ(modeOf(places.back()), 0600U);
        EXPECT_FALSE(fs::exists(file));
        EXPECT_FALSE(fs::exists(beside(file, "-wal")));
        EXPECT_TRUE(opened(folder.path())->dictionaryRepresentation()->empty());
    }
    EXPECT_NE(places[0], places[1]);
    EXPECT_EQ(contentOf(places[0]), "not a database");
}

TEST(Repair, LeavesAStoreThatSomebodyUsesWhereItIs) {
    const TemporaryDirectory folder;
    const fs::path file = storeFile(folder.path(), suite);
    const auto store = opened(folder.path());
    ASSERT_TRUE(store->set("a", 1));
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(pwrite(descriptor, "damage", 6, 0), 6);
    ::close(descriptor);

    const auto refused = repairStore(folder.path(), suite);
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.error().message, HasSubstr("in use"));
    EXPECT_TRUE(fs::exists(file));
}

TEST(Repair, TouchesNeitherLinksNorFolders) {
    const TemporaryDirectory folder;
    const fs::path file = storeFile(folder.path(), suite);
    writeFile(folder.path() / "victim", "noise");
    fs::create_symlink(folder.path() / "victim", file);
    EXPECT_FALSE(repairStore(folder.path(), suite));
    EXPECT_EQ(contentOf(file), "noise");
    fs::remove(file);
    fs::create_directory(file);
    EXPECT_FALSE(repairStore(folder.path(), suite));
    EXPECT_TRUE(fs::is_directory(file));
}

}  // namespace
}  // namespace platform
