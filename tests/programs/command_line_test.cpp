// The programs as users and scripts call them: exit codes, the shape of the output, and bad input.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>
#include "demo/service.h"
#include "extension/widgets/perch/proto/market_package.h"
#include "platform/settings/property_list.h"
#include "tests/support/loopback_server.h"
#include "tests/support/temporary_directory.h"

namespace {

using nlohmann::ordered_json;
using platform::PropertyList;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;

struct Outcome {
    int exitCode = -1;
    std::string output;
    std::string complaint;
};

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream input(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(input), {}};
}

void write(const std::filesystem::path& file, const std::string& content) {
    std::ofstream(file, std::ios::binary) << content;
}

std::vector<std::string> keysOf(const ordered_json& object) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : object.items()) keys.push_back(key);
    return keys;
}

struct Complaint {
    std::string words;
    /// Part of the one line on standard error; empty where another part of the program chooses the words.
    std::string message;
};

/// Runs `brightledger` with its own data directory, a stopped clock and a service to call.
class CommandLineTest : public testing::Test {
protected:
    CommandLineTest() { serve("http://127.0.0.1:1"); }

    void serve(const std::string& origin) {
        write(directory_.path() / "Info.plist",
              *platform::xmlPropertyList(
                  PropertyList::Dictionary{{"ProductionAPIHost", origin}, {"ProductionWebHost", origin}}));
    }

    /// `words` go through the shell.
    Outcome run(const std::string& words, const std::string& input = {}) const {
        write(path("input"), input);
        const std::string command =
            "env BRIGHTLEDGER_DATA_DIR='" + path("data") + "' BRIGHTLEDGER_INFO_PLIST='" +
            path("Info.plist") +
            "' BRIGHTLEDGER_NOW=2026-11-23T06:30:00Z BRIGHTLEDGER_TIME_ZONE=Asia/Kolkata "
            "BRIGHTLEDGER_LOCALE=en_IN " BRIGHTLEDGER_PROGRAM_DIR "/brightledger " +
            words + " <'" + path("input") + "' >'" + path("output") + "' 2>'" + path("complaint") + "'";
        const int status = std::system(command.c_str());
        return {WEXITSTATUS(status), contentOf(path("output")), contentOf(path("complaint"))};
    }

    ordered_json json(const std::string& words, const std::string& input = {}) const {
        const Outcome outcome = run(words, input);
        EXPECT_EQ(outcome.exitCode, 0) << words << ": " << outcome.complaint;
        return ordered_json::parse(outcome.output);
    }

    void expectComplaint(const Complaint& expected, int exitCode) const {
        const Outcome outcome = run(expected.words);
        EXPECT_EQ(outcome.exitCode, exitCode) << expected.words;
        EXPECT_THAT(outcome.output, IsEmpty()) << expected.words;
        EXPECT_THAT(outcome.complaint, MatchesRegex("brightledger: [^\n]+\n")) << expected.words;
        EXPECT_THAT(outcome.complaint, HasSubstr(expected.message)) << expected.words;
    }

    std::string path(const std::string& name) const { return directory_.path() / name; }

    tests::TemporaryDirectory directory_;
};

TEST_F(CommandLineTest, TheGalleryListsTheWidgetsInBundleOrder) {
    EXPECT_EQ(json("gallery"), ordered_json::parse(R"([
        {"kind": "NewsWidget", "displayName": "Brightledger News",
         "description": "Stay updated with Top Stories across markets, business and more.",
         "families": ["systemLarge"]},
        {"kind": "PerchWidget", "displayName": "Perch", "description": "Real-time Tracking Widget",
         "families": ["systemLarge", "systemMedium", "systemSmall"]},
        {"kind": "PortfolioWidget", "displayName": "Portfolio", "description": "Real-time Tracking Widget",
         "families": ["systemMedium", "systemSmall"]}])"));
}

TEST_F(CommandLineTest, AFreshDataDirectoryShowsThreeIndicesOfTheServiceAndAsksAgainIn30Seconds) {
    const auto service = demo::DemoService::start();
    ASSERT_TRUE(service);
    serve((*service)->origin());

    const ordered_json timeline = json("timeline PerchWidget --family systemMedium");
    EXPECT_THAT(keysOf(timeline), ElementsAre("kind", "family", "request", "entries", "policy"));
    EXPECT_EQ(timeline["policy"]["after"], "2026-11-23T06:30:30.000Z");
    std::vector<std::string> titles;
    for (const auto& row : timeline["entries"][0]["multiAssetDataListItem"]) titles.push_back(row["title"]);
    EXPECT_THAT(titles, ElementsAre("SENSEX", "NIFTY 50", "NIFTY BANK"));

    for (const std::string request : {"placeholder", "snapshot"}) {
        const ordered_json answer = json(request + " PerchWidget --family systemMedium");
        EXPECT_THAT(keysOf(answer), ElementsAre("kind", "family", "request", "entry"));
        EXPECT_EQ(answer["request"], request);
    }
}

TEST_F(CommandLineTest, StatisticsAreOneLineOnStandardError) {
    const Outcome measured = run("--stats timeline PerchWidget --family systemSmall");
    EXPECT_EQ(measured.exitCode, 2) << "--stats belongs to its command";

    const Outcome drawn = run("draw PerchWidget --family systemSmall --stats");
    ASSERT_EQ(drawn.exitCode, 0) << drawn.complaint;
    const ordered_json line = ordered_json::parse(drawn.complaint);
    EXPECT_THAT(keysOf(line), ElementsAre("extension", "host"));
    EXPECT_THAT(keysOf(line["extension"]),
                ElementsAre("peakRssKiB", "privateKiB", "userMs", "systemMs", "wallMs", "networkMs"));
    EXPECT_THAT(keysOf(line["host"]), ElementsAre("layoutMs", "paintMs", "encodeMs"));
    EXPECT_GT(line["extension"]["peakRssKiB"].get<int>(), line["extension"]["privateKiB"].get<int>());
}

TEST_F(CommandLineTest, DrawingGivesADisplayListOrTheFileThatItsNameAsksFor) {
    const ordered_json list = json("draw PerchWidget --family systemSmall");
    EXPECT_EQ(list["size"], ordered_json::parse(R"({"width": 158, "height": 158})"));
    EXPECT_EQ(list["kind"], "PerchWidget");

    ASSERT_EQ(run("draw PerchWidget --family systemSmall --scale 2 -o " + path("w.png")).exitCode, 0);
    const std::string png = contentOf(path("w.png"));
    ASSERT_THAT(png, StartsWith("\x89PNG"));
    EXPECT_EQ(png.substr(16, 8), std::string("\0\0\x01\x3C\0\0\x01\x3C", 8)) << "316 pixels square";
    ASSERT_EQ(run("draw PerchWidget --family systemSmall --request placeholder -o " + path("w.svg")).exitCode,
              0);
    EXPECT_THAT(contentOf(path("w.svg")), HasSubstr("<svg"));
    ASSERT_EQ(run("draw PerchWidget --family systemSmall -o " + path("w.json")).exitCode, 0);
    EXPECT_EQ(ordered_json::parse(contentOf(path("w.json"))), list);
}

TEST_F(CommandLineTest, APrintedTreeCanBeLaidOutAndDrawnAgain) {
    const std::string tree = run("view PerchWidget --family systemLarge").output;
    const ordered_json laidOut = json("layout - --size 338x354", tree);
    EXPECT_EQ(laidOut["frame"], ordered_json::parse(R"({"x": 0, "y": 0, "width": 338, "height": 354})"));

    write(path("tree.json"), tree);
    const ordered_json list = json("draw --tree " + path("tree.json") + " --size 338x354");
    EXPECT_EQ(list["items"], json("draw PerchWidget --family systemLarge")["items"]);
}

TEST_F(CommandLineTest, WrongUsageIsExitCode2AndOneLineThatSaysWhatToDo) {
    const std::string unknownWidget =
        "unknown widget \"ClockWidget\"; choose NewsWidget, PerchWidget or PortfolioWidget";
    const std::string wrongScale = "the scale must be 1, 2 or 3";
    const auto wrongSize = [](const std::string& size) {
        return "the size \"" + size +
               "\" is not WxH, such as 338x158, with sides above 0 and at most 4096 points";
    };
    const Complaint complaints[] = {
        {"", ""},
        {"dance", "unknown command \"dance\"; see brightledger --help"},
        {"timeline", ""},
        {"timeline PerchWidget", ""},
        {"timeline PerchWidget --family systemHuge",
         "unknown family \"systemHuge\"; choose systemSmall, systemMedium or systemLarge"},
        {"timeline NewsWidget --family systemSmall",
         "NewsWidget does not support the family \"systemSmall\"; choose systemLarge"},
        {"timeline ClockWidget --family systemSmall", unknownWidget},
        {"why ClockWidget", unknownWidget},
        {"gallery --now 2026-11-23T06:30:00",
         "--now \"2026-11-23T06:30:00\" is not an ISO 8601 instant with an offset or Z"},
        {"gallery --os-version x", "--os-version \"x\" is not a version number"},
        {"gallery --now", "--now needs a value"},
        {"gallery --time-zone Mars/Olympus", "--time-zone \"Mars/Olympus\" is not a known time zone"},
        {"draw PerchWidget --family systemSmall -o w.gif",
         "cannot tell the format of w.gif; let it end in .png, .svg or .json"},
        {"draw PerchWidget --family systemSmall --scale 4", wrongScale},
        {"layout - --size 10x10 --scale 0", wrongScale},
        {"draw", "draw needs a KIND with --family, or --tree with --size"},
        {"draw --tree x", ""},
        {"layout - --size 10", wrongSize("10")},
        {"layout - --size 10x-1", wrongSize("10x-1")},
        {"layout - --size 10xnan", wrongSize("10xnan")},
        {"store", ""},
        {"store get", "get: takes KEY"},
        {"store set k integer 1.5", "\"1.5\" is not a whole number of 64 bits"},
        {"store set k integer 9223372036854775808",
         "\"9223372036854775808\" is not a whole number of 64 bits"},
        {"store set k color red",
         "unknown type \"color\"; choose string, integer, real, boolean, data, date or plist"},
        {"store set k string 'a\xff'", "the text is not UTF-8"},
        {"store set 'k\xff' integer 1", "the key is not UTF-8"},
        {"store set k data '*'", "\"*\" is not base64"},
        {"store set k date today", "\"today\" is not an ISO 8601 instant with an offset or Z"},
        {"store set k plist '<plist>'", ""},
        {"call ClockApp wind", "unknown class ClockApp; \"call\" lists all operations"},
        {"call KeyConstants wind", "KeyConstants has no operation wind; \"call\" lists all operations"},
        {"call KeyConstants", "a call needs a class and a selector; \"call\" lists them"},
        {"call UIColor hexString", "wrong number of arguments; write UIColor hexString COLOR"},
    };
    for (const Complaint& complaint : complaints) expectComplaint(complaint, 2);
}

TEST_F(CommandLineTest, WhatCannotBeDoneIsExitCode1AndOneLine) {
    write(path("file"), "no folder");
    write(path("noise"), "\x01\x02\x03");
    const Complaint complaints[] = {
        {"store get nothing", "the key \"nothing\" is not in the store"},
        {"store import " + path("nowhere"), "cannot read " + path("nowhere") + ": No such file or directory"},
        {"store import " + path("noise"), ""},
        {"store export --data-dir " + path("file"), ""},
        {"store export /dev/full", "cannot write /dev/full: No space left on device"},
        {"store repair --data-dir " + path("file"), ""},
        {"layout " + path("noise") + " --size 10x10", ""},
        {"layout " + path("nowhere") + " --size 10x10", ""},
        {"gallery --info-plist " + path("noise"), ""},
        {"draw PerchWidget --family systemSmall -o " + path("no/folder/w.png"), ""},
        {"call --data-dir " + path("file") + " ThemeManager setCurrentSelectedThemeTypeWithType: 1", ""},
        {"why PerchWidget", ""},
    };
    for (const Complaint& complaint : complaints) expectComplaint(complaint, 1);
}

TEST_F(CommandLineTest, AnUnusableDataDirectoryStillGivesAnEntryWithoutContent) {
    write(path("file"), "no folder");
    for (const char* kind : {"PerchWidget --family systemSmall", "PortfolioWidget --family systemSmall",
                             "NewsWidget --family systemLarge"}) {
        const Outcome outcome = run(std::string("timeline ") + kind + " --data-dir " + path("file"));
        ASSERT_EQ(outcome.exitCode, 0) << outcome.complaint;
        EXPECT_FALSE(ordered_json::parse(outcome.output)["entries"].empty()) << kind;
    }
}

struct StoredValue {
    const char* words;
    const char* json;
};

TEST_F(CommandLineTest, StoredValuesKeepTheirTypesThroughExportAndImport) {
    const StoredValue values[] = {
        {"string '  [a] -x {}'", R"("  [a] -x {}")"},
        {"string ''", R"("")"},
        {"string --verbose", R"("--verbose")"},
        {"integer -9223372036854775808", "-9223372036854775808"},
        {"real -.5", "-0.5"},
        {"boolean true", "true"},
        {"data AP8=", R"({"data":"AP8="})"},
        {"date 2026-11-23T12:00:00+05:30", R"({"date":"2026-11-23T06:30:00.000Z"})"},
        {"plist '<plist><array><integer>1</integer><string>a</string></array></plist>'", R"([1,"a"])"},
    };
    for (const StoredValue& value : values) {
        EXPECT_EQ(run(std::string("store set -- key ") + value.words).exitCode, 0) << value.words;
        EXPECT_EQ(json("store get key"), ordered_json::parse(value.json)) << value.words;

        ASSERT_EQ(run("store export " + path("all.plist")).exitCode, 0);
        ASSERT_EQ(run("store remove key").exitCode, 0);
        EXPECT_EQ(run("store get key").exitCode, 1);
        ASSERT_EQ(run("store import " + path("all.plist")).exitCode, 0);
        EXPECT_EQ(json("store get key"), ordered_json::parse(value.json)) << value.words;
    }
    EXPECT_EQ(std::filesystem::status(path("all.plist")).permissions(), std::filesystem::perms(0600));
    EXPECT_EQ(std::filesystem::status(path("data")).permissions(), std::filesystem::perms(0700));
}

TEST_F(CommandLineTest, ADamagedStoreIsLeftAloneUntilItIsRepaired) {
    ASSERT_EQ(run("store set key integer 1").exitCode, 0);
    std::filesystem::path file;
    for (const auto& each : std::filesystem::directory_iterator(path("data"))) {
        if (each.path().extension() == ".sqlite") file = each.path();
    }
    const std::string damaged(8192, 'x');
    write(file, damaged);

    EXPECT_EQ(run("store get key").exitCode, 1);
    EXPECT_EQ(run("timeline PerchWidget --family systemSmall").exitCode, 0);
    EXPECT_EQ(contentOf(file), damaged);

    const Outcome repaired = run("store repair");
    EXPECT_EQ(repaired.exitCode, 0) << repaired.complaint;
    EXPECT_THAT(repaired.output, HasSubstr(path("data")));
    EXPECT_EQ(run("store set key integer 2").exitCode, 0);
    EXPECT_EQ(run("store repair").output, "The settings store is in order.\n");
}

TEST_F(CommandLineTest, OperationsOfTheAppAreCalledOneByOneOrLineByLineInOneProcess) {
    EXPECT_EQ(run(R"(call UIColor colorFromHexStringAndOpacity:alpha: "#FF9D00" 0.5)").output,
              "{\"hex\":\"#FF9D00\",\"alpha\":0.5}\n");
    EXPECT_THAT(run("call").output, HasSubstr("ThemeManager setCurrentSelectedThemeTypeWithType:"));
    EXPECT_EQ(run("call ThemeManager setCurrentSelectedThemeTypeWithType: 1").output, "null\n");
    EXPECT_EQ(json("store get ThemeType"), 1);

    const Outcome lines = run("call -", "KeyConstants GROUP_TODAY_EXTENSION\n\nClockApp wind\nnot reached\n");
    EXPECT_EQ(lines.exitCode, 2);
    EXPECT_EQ(lines.output, "\"group.shareWithTodayExtension\"\n");
    EXPECT_THAT(lines.complaint, StartsWith("brightledger: line 3: "));
}

TEST_F(CommandLineTest, AHomeScreenEndsWhenItsTimeIsUpAndLogsWhenAskedTo) {
    const Outcome outcome = run("run --for 1 --verbose");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, MatchesRegex("http://127.0.0.1:[0-9]+/.token=[0-9a-f]+\n"));
    EXPECT_THAT(outcome.complaint, HasSubstr("debug: "));
}

TEST_F(CommandLineTest, AUserIsSignedInAndOutAndTheirRowsGoWithThem) {
    EXPECT_EQ(run("user asha").exitCode, 1);  // no service knows them
    const auto service = demo::DemoService::start();
    ASSERT_TRUE(service);
    serve((*service)->origin());
    EXPECT_EQ(run("user nobody").exitCode, 1);
    ASSERT_EQ(run("user asha").exitCode, 0);

    const ordered_json timeline = json("timeline PortfolioWidget --family systemMedium");
    EXPECT_EQ(timeline["entries"][0]["apiError"], "success");
    EXPECT_EQ(run("store get portfolioArray").exitCode, 0);

    ASSERT_EQ(run("user none").exitCode, 0);
    for (const char* key : {"token", "userId", "userPortfolio", "portfolioArray"}) {
        EXPECT_EQ(run(std::string("store get ") + key).exitCode, 1) << key;
    }
    EXPECT_EQ(json("timeline PortfolioWidget --family systemMedium")["entries"][0]["apiError"], "nonLogin");
}

/// Quotes for one index whose link contains a blank, so that it is not an address.
class BrokenLinkTest : public CommandLineTest {
protected:
    BrokenLinkTest() {
        extension::MarketPackage_MultiAssetInfo quotes;
        extension::MarketPackage_MultiAssetDataListItem& quote = *quotes.mutable_data()->add_datalist();
        quote.set_assetid("4 4");
        quote.set_symbol("in;SEN");
        service_.answer({.body = quotes.SerializeAsString()});
        serve(service_.origin());
        write(path("chosen.plist"), *platform::xmlPropertyList(PropertyList::Dictionary{
                                        {"firstTimeAppInstalledForWidget", true},
                                        {"INDICES_WIDGET", PropertyList::Array{PropertyList::Dictionary{
                                                               {"id", "4 4"},
                                                               {"ind_id", "4 4"},
                                                               {"symbol", "in;SEN"},
                                                               {"type", "indices"},
                                                               {"exchg", "bse"},
                                                               {"title", "SENSEX"},
                                                               {"priceIdentifier", "in;SEN-II"}}}}}));
        EXPECT_EQ(run("store import " + path("chosen.plist")).exitCode, 0);
    }

    tests::LoopbackServer service_;
};

TEST_F(BrokenLinkTest, ACompactRowWithoutAnAddressEndsTheExtensionAndOnlyTheCommandFails) {
    const ordered_json timeline = json("timeline PerchWidget --family systemSmall");
    ASSERT_EQ(timeline["entries"][0]["multiAssetDataListItem"].size(), 1U) << timeline.dump();

    const Outcome drawn = run("draw PerchWidget --family systemSmall");
    EXPECT_EQ(drawn.exitCode, 1);
    EXPECT_THAT(drawn.output, IsEmpty());
    EXPECT_THAT(drawn.complaint,
                MatchesRegex("brightledger: the extension was ended by signal 6 \\(SIGABRT\\): [^\n]+\n"));
}

}  // namespace
