#include "host/home/home_screen.h"
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <algorithm>
#include <boost/asio.hpp>
#include <fstream>
#include <future>
#include <nlohmann/json.hpp>
#include <thread>
#include "companion/deep_link.h"
#include "extension/app/presence/widget_kit_helper.h"
#include "host/home/host_socket.h"
#include "host/home/page_actions.h"
#include "host/home/page_state.h"
#include "host/home/placements.h"
#include "host/process/demo_child.h"
#include "host/schedule/day_strip.h"
#include "host/web/page_server.h"
#include "platform/base/files.h"
#include "platform/wire/framing.h"
#include "platform/wire/host_channel.h"
#include "tests/support/raw_client.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/test_runtime.h"

namespace host {
namespace {

using namespace std::chrono_literals;
using Local = boost::asio::local::stream_protocol;
using nlohmann::json;
using platform::WidgetFamily;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

TEST(Placements, ArePackedInOrderAndNeverOnAnEarlierPage) {
    const Placement small{1, "PerchWidget", WidgetFamily::systemSmall};
    const Placement medium{2, "PerchWidget", WidgetFamily::systemMedium};
    const Placement large{3, "NewsWidget", WidgetFamily::systemLarge};
    using Place = GridPlace;
    EXPECT_THAT(packed({small, medium, small, large}),
                ElementsAre(Place{0, 0, 0}, Place{0, 0, 1}, Place{0, 1, 0}, Place{1, 0, 0}));
    EXPECT_THAT(packed({large, medium, large, small, small}),
                ElementsAre(Place{0, 0, 0}, Place{0, 0, 2}, Place{1, 0, 0}, Place{1, 0, 2}, Place{1, 1, 2}));
    EXPECT_THAT(packed({}), IsEmpty());
}

TEST(Placements, AreKeptInAFileOfTheOwnerAndADamagedFileIsKeptToo) {
    const tests::TemporaryDirectory folder;
    const auto file = folder.path() / "home-screen.json";
    {
        Placements first(file);
        ASSERT_TRUE(first.load({{7, "PerchWidget", WidgetFamily::systemSmall}}));
        EXPECT_EQ(first.add("NewsWidget", WidgetFamily::systemLarge)->id, 2);
        ASSERT_TRUE(first.move(2, 0));
        EXPECT_FALSE(first.move(3, 0));
        EXPECT_FALSE(first.remove(3));
    }
    Placements again(file);
    ASSERT_TRUE(again.load({}));
    EXPECT_THAT(again.all(), ElementsAre(Placement{1, "NewsWidget", WidgetFamily::systemLarge},
                                         Placement{2, "PerchWidget", WidgetFamily::systemSmall}));
    struct stat status = {};
    ::stat(file.c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    int damaged = 0;
    for (const char* nonsense : {"", "{", "[]", R"({"widgets":[{"kind":"A","family":"huge"}]})",
                                 R"({"widgets":[{"kind":1,"family":"systemSmall"}]})"}) {
        std::ofstream(file, std::ios::trunc) << nonsense;
        const std::string kept = file.string() + ".damaged-" + std::to_string(++damaged);
        EXPECT_THAT(again.load({{1, "NewsWidget", WidgetFamily::systemLarge}}).error().message,
                    HasSubstr(kept));
        EXPECT_EQ(platform::readFile(kept, 1000), nonsense);
        EXPECT_EQ(again.all().size(), 1U);
        EXPECT_FALSE(std::filesystem::exists(file));
    }
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    EXPECT_FALSE(again.load({})) << "and does not wait for a writer";
    ASSERT_TRUE(again.add("NewsWidget", WidgetFamily::systemLarge));
}

TEST(DeepLinks, AreTakenApartAsThePhoneAppWould) {
    using Parameters = std::vector<std::pair<std::string, std::string>>;
    const struct {
        const char* link;
        companion::DeepLink parts;
    } cases[] = {
        {"brightledgerwidget://openPortfolio", {"openPortfolio", {}}},
        {"brightledgerwidget://indices/?id=4&exchg=bse&link_flag=1&positionSelected=1",
         {"indices",
          Parameters{{"id", "4"}, {"exchg", "bse"}, {"link_flag", "1"}, {"positionSelected", "1"}}}},
        {"brightledgerwidget://news/?url=https://x.invalid/a?b=c&d=e&articleType=news&storyId=&isArticle=1",
         {"news", Parameters{{"url", "https://x.invalid/a?b=c&d=e"},
                             {"articleType", "news"},
                             {"storyId", ""},
                             {"isArticle", "1"}}}},
        {"brightledgerwidget://future/&instrument=X&positionSelected=2",
         {"future", Parameters{{"instrument", "X"}, {"positionSelected", "2"}}}},
        {"", {"", {}}},
        {"brightledgerwidget://&&", {"", Parameters{{"", "&"}}}},
    };
    for (const auto& [link, parts] : cases) EXPECT_EQ(companion::parseDeepLink(link), parts) << link;
}

TEST(HostSocket, AnswersOtherProcessesOfTheSameUserAndGoesWithItsHost) {
    const tests::TemporaryDirectory folder;
    const auto path = folder.path() / "ours" / "host.socket";
    EXPECT_THAT(platform::askHost(path, "placed", 1s).error().message, HasSubstr("no widget host"));
    {
        const auto socket =
            HostSocket::open(path, [](std::string_view question) -> platform::Result<std::string> {
                if (question.size() < 9) return platform::failure("Error", 1, "no");
                return std::string(question.size(), 'x');
            });
        ASSERT_TRUE(socket) << socket.error().message;
        struct stat status = {};
        ::stat(path.c_str(), &status);
        EXPECT_EQ(status.st_mode & 0777, 0600U);
        // Connections that say nothing hold up nobody.
        std::vector<Local::iostream> silent;
        for (int i = 0; i < 5; ++i) silent.emplace_back(Local::endpoint(path.string()));
        EXPECT_EQ(platform::askHost(path, std::string(300000, 'q'), 5s)->size(), 300000U);
        // However it answers: a host that is starting knows nothing yet.
        EXPECT_THAT(HostSocket::open(path, {}).error().message, HasSubstr("running already"));
        EXPECT_EQ(platform::askHost(path, "bad", 1s).error().message, "no");
    }
    EXPECT_FALSE(platform::askHost(path, "placed", 1s));
    ASSERT_EQ(::chmod(path.parent_path().c_str(), 0777), 0);
    EXPECT_THAT(HostSocket::open(path, {}).error().message, HasSubstr("other users can enter"));
}

/// Plays a host that sends its answer a byte at a time with pauses.
std::jthread slowHost(const std::filesystem::path& path, std::string answer,
                      std::chrono::milliseconds pause) {
    auto context = std::make_unique<boost::asio::io_context>();
    Local::acceptor listener(*context, path.string());
    return std::jthread(
        [context = std::move(context), listener = std::move(listener), answer, pause]() mutable {
            auto connection = listener.accept();
            boost::system::error_code error;
            for (const char byte : answer) {
                std::this_thread::sleep_for(pause);
                if (connection.send(boost::asio::buffer(&byte, 1), 0, error) != 1) return;
            }
        });
}

std::string framed(const std::string& text) { return *platform::frameLength(text.size()) + text; }

TEST(HostChannel, HasOneLimitForTheWholeExchange) {
    const tests::TemporaryDirectory folder;
    const auto path = folder.path() / "host.socket";
    const std::jthread host = slowHost(path, framed("ok\n" + std::string(50, 'x')), 50ms);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THAT(platform::askHost(path, "placed", 400ms).error().message, HasSubstr("did not answer"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
}

TEST(HostWidgetCenter, AsksInTheBackgroundAndSetsThePropertiesWhenTheAnswerArrives) {
    const tests::TemporaryDirectory folder;
    ASSERT_EQ(::setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1), 0);
    const auto path = platform::hostSocketPath(folder.path());
    std::filesystem::create_directory(path.parent_path());
    // A medium PerchWidget, and a NewsWidget that reports no family.
    const std::jthread host = slowHost(path, framed("ok\nPerchWidget\tsystemMedium\nNewsWidget\n"), 10ms);
    const tests::TestRuntime runtime(
        {.widgetCenter = std::make_shared<platform::HostWidgetCenter>(folder.path())});
    extension::ProcessState state(runtime);
    std::promise<void> answered;
    extension::WidgetKitHelper::getCurrentConfigurations(state, [&] { answered.set_value(); });
    EXPECT_FALSE(state.presence->get().isWigetAdded);
    answered.get_future().wait();
    EXPECT_EQ(state.presence->get(), (extension::WidgetPresence{.isWigetAdded = true,
                                                                .widgetFamily = "systemMedium",
                                                                .isNewsWidgetAdded = true,
                                                                .newsWidgetFamily = "",
                                                                .isPortfolioWigetAdded = false,
                                                                .portfolioWidgetFamily = ""}));
}

/// A home screen with the real extension on the real demo service, and its page.
struct House {
    House() {
        const std::filesystem::path& directory = folder.path();
        const std::filesystem::path programs = BRIGHTLEDGER_PROGRAM_DIR;
        demo = std::move(*DemoChild::start(programs / "brightledger-demo"));
        const auto plist = directory / "info.plist";
        platform::RuntimeOptions runtime;
        runtime.dataDirectory = directory / "data";
        HomeScreenOptions options{
            .runtime = runtime,
            .extension = {.program = programs / "brightledger-extension",
                          .arguments = {"--data-dir", (directory / "data").string(), "--info-plist",
                                        plist.string(), "--locale", "en_IN", "--time-zone", "Asia/Kolkata"},
                          .log = {}},
            .infoPlist = plist,
            .resources = std::filesystem::path(BRIGHTLEDGER_SOURCE_DIR) / "resources",
            .demoOrigin = demo->origin()};
        auto started = HomeScreen::start(std::move(options));
        EXPECT_TRUE(started) << started.error().message;
        home = std::move(*started);
        screen = std::make_unique<PageState>(*home);
        page = std::move(
            *PageServer::start(*home, 0, std::filesystem::path(BRIGHTLEDGER_SOURCE_DIR) / "resources/web"));
    }

    json state() const { return json::parse(screen->state()); }

    /// Waits until the state is as it should be; the state then, or the last one.
    json waitFor(const std::function<bool(const json&)>& isGood) const {
        const auto end = std::chrono::steady_clock::now() + 20s;
        json now = state();
        while (!isGood(now) && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(20ms);
            now = state();
        }
        EXPECT_TRUE(isGood(now)) << now.dump(1).substr(0, 3000);
        return now;
    }

    /// The answer to one request on a connection of its own.
    std::string ask(const std::string& request) const {
        tests::RawClient client(std::stoi(host().substr(10)));
        client.send(request);
        return client.read();
    }
    std::string host() const { return page->address().substr(7, page->address().find("/?") - 7); }

    tests::TemporaryDirectory folder;
    std::unique_ptr<DemoChild> demo;
    std::unique_ptr<HomeScreen> home;
    std::unique_ptr<PageState> screen;
    std::unique_ptr<PageServer> page;
};

bool areAllShown(const json& state) {
    return std::ranges::all_of(state["widgets"], [](const json& widget) {
        return !widget["picture"].is_null() && widget["picture"]["isPlaceholder"] == false;
    });
}

const json& widgetOf(const json& state, const std::string& kind) {
    return *std::ranges::find_if(state["widgets"],
                                 [&](const json& widget) { return widget["kind"] == kind; });
}

TEST(HostQuestions, TravelFromAnyProcessToTheHomeScreen) {
    const House house;
    ASSERT_EQ(::setenv("XDG_RUNTIME_DIR", house.folder.path().c_str(), 1), 0);
    const auto path = platform::hostSocketPath(house.folder.path());
    EXPECT_FALSE(isHostRunning(path));
    const auto socket = HostSocket::open(
        path, [&](std::string_view question) { return answerQuestion(*house.home, question); });
    ASSERT_TRUE(socket) << socket.error().message;
    EXPECT_TRUE(isHostRunning(path));
    house.waitFor(areAllShown);
    {
        platform::HostWidgetCenter center(house.folder.path());
        center.getCurrentConfigurations([&](const auto& placed) {
            EXPECT_EQ(placed->size(), 6U);
            EXPECT_EQ(placed->front(), (platform::PlacedWidget{"PerchWidget", WidgetFamily::systemMedium}));
        });
        center.reloadTimelines("NewsWidget");
    }
    // A reload is listed once it has ended.
    house.waitFor(
        [&](const json&) { return askWhy(path, "NewsWidget")->find("asked by app") != std::string::npos; });
    EXPECT_THAT(*askWhy(path, "NewsWidget"), HasSubstr("asked by placement"));
    EXPECT_THAT(*askWhy(path, "PerchWidget"), Not(HasSubstr("asked by app")));
    EXPECT_THAT(askWhy(path, "Nothing").error().message, HasSubstr("choose NewsWidget, "));
    EXPECT_TRUE(askToSignIn(path, "asha"));
    EXPECT_EQ(house.state()["app"]["user"], "asha");
    EXPECT_THAT(askToSignIn(path, "nobody").error().message, HasSubstr("unknown user \"nobody\""));
    EXPECT_TRUE(askToSignIn(path, ""));
    EXPECT_EQ(house.state()["app"]["user"], "");
}

TEST(HomePage, LetsNobodyInWithoutTheAddressThatWasPrinted) {
    const House house;
    const std::string host = "Host: " + house.host() + "\r\n";
    const auto ask = [&](const std::string& request, const std::string& headers,
                         const std::string& body = {}) {
        return house.ask(request + " HTTP/1.1\r\n" + headers + "Connection: close\r\nContent-Length: " +
                         std::to_string(body.size()) + "\r\n\r\n" + body);
    };
    const std::string withToken = "GET " + house.page->address().substr(house.page->address().find("/?"));
    const std::string entry = ask(withToken, host);
    EXPECT_THAT(entry,
                testing::AllOf(StartsWith("HTTP/1.1 303"), HasSubstr("; HttpOnly; SameSite=Strict\r\n")));
    const std::string named = entry.substr(entry.find("Set-Cookie: ") + 4);
    const std::string cookie = named.substr(0, named.find(';'));
    const std::string known = host + cookie + "\r\n";
    const std::string own = "Origin: http://" + house.host() + "\r\n";
    const std::string reload = R"({"action":"reload"})";
    const struct {
        std::string request, headers, body;
        int status;
    } cases[] = {
        {"GET /", known, "", 200},
        {"GET /state", known, "", 200},
        {"GET /", host, "", 403},
        {"GET /state", host + cookie + "0\r\n", "", 403},
        {"GET /picture/1", host, "", 403},
        {"GET /?token=", host, "", 403},
        {"GET /?token=" + std::string(64, '0'), host, "", 403},
        {"GET /state" + house.page->address().substr(house.page->address().find('?')), host, "", 403},
        {withToken, host, "", 403},
        {withToken, known, "", 303},
        {"GET /", "Host: localhost:" + house.host().substr(10) + "\r\n" + cookie + "\r\n", "", 421},
        {"POST /act", known, reload, 403},
        {"POST /act", known + "Origin: http://evil.invalid\r\n", reload, 403},
        {"POST /act", host + own, reload, 403},
        {"POST /act", known + own, reload, 200},
        {"GET /act?action=reload", known + own, "", 404},
        {"GET /..%2f..%2fInfo.plist", known, "", 404},
        {"GET /../Info.plist", known, "", 404},
        {"PUT /", known, "", 405},
    };
    for (const auto& [request, headers, body, status] : cases)
        EXPECT_THAT(ask(request, headers, body), StartsWith("HTTP/1.1 " + std::to_string(status)))
            << request << "\n"
            << headers;
    EXPECT_THAT(house.ask("POST /act HTTP/1.1\r\n" + known + own + "Content-Length: 100000\r\n\r\n"),
                StartsWith("HTTP/1.1 413"));
    EXPECT_THAT(ask("GET /", known), testing::AllOf(HasSubstr("default-src 'none'"),
                                                    Not(testing::ContainsRegex("unsafe|data:|\\*"))));
}

TEST(HomePage, DoesWhatThePhoneAppWouldAndRefusesWhatItCannot) {
    const House house;
    house.waitFor(areAllShown);
    for (const json& action : {json{{"action", "user"}, {"user", "asha"}},
                               {{"action", "user"}, {"user", ""}},
                               {{"action", "theme"}, {"theme", 2}},
                               {{"action", "clock"}, {"instant", "2026-11-22T19:00:01+05:30"}},
                               {{"action", "place"}, {"kind", "PerchWidget"}, {"family", "systemSmall"}},
                               {{"action", "move"}, {"id", 5}, {"index", 0}},
                               {{"action", "remove"}, {"id", 1}},
                               {{"action", "kill"}},
                               {{"action", "assets"}, {"keys", {"in;NSX-II", "KVT-EQ"}}}}) {
        const auto done = act(*house.home, action);
        EXPECT_TRUE(done) << action << done.error().message;
    }
    house.waitFor([](const json& now) {
        const json& picture = widgetOf(now, "PerchWidget")["picture"];
        const std::string text = picture.is_null() ? "" : picture["text"];
        return text.find("Kaveri") != std::string::npos && text.find("SENSEX") == std::string::npos;
    });
    for (const json& action : {json{{"action", "assets"}, {"keys", {"nonsense"}}},
                               {{"action", "place"}, {"kind", "NewsWidget"}, {"family", "systemSmall"}},
                               {{"action", "clock"}, {"instant", "tomorrow"}},
                               {{"action", "unknown"}}})
        EXPECT_FALSE(act(*house.home, action)) << action;
}

TEST(HomePage, LetsNobodyWaitForASlowService) {
    const House house;
    house.waitFor(areAllShown);
    ASSERT_TRUE(act(*house.home, {{"action", "fault"}, {"fault", "slow"}}));
    // More than are asked at a time.
    for (const char* family : {"systemSmall", "systemMedium", "systemLarge"})
        ASSERT_TRUE(act(*house.home, {{"action", "place"}, {"kind", "PerchWidget"}, {"family", family}}));
    // The last one's placeholder is there while its timeline is not even asked for.
    const json state =
        house.waitFor([](const json& now) { return !now["widgets"].back()["picture"].is_null(); });
    EXPECT_EQ(state["widgets"].back()["picture"]["isPlaceholder"], true);
    EXPECT_EQ(state["widgets"].back()["isRunning"], false);

    // The end of the home screen ends a day that is being computed.
    auto day = std::async(std::launch::async, [&] { return house.screen->day(); });
    house.home->stop();
    EXPECT_THAT(day.get(), HasSubstr("the extension was ended"));
}

TEST(DayStrip, EndsWhenItsTimeIsUpAndSaysSo) {
    ExtensionProcess extension({.program = "/bin/sleep", .arguments = {"60"}, .log = {}});
    const std::vector<WidgetListing> gallery{
        {"NewsWidget", "", "", {WidgetFamily::systemLarge}},
        {"PerchWidget", "", "", {WidgetFamily::systemSmall, WidgetFamily::systemLarge}}};
    const auto rows =
        lookThroughDay(extension, gallery, *platform::parseInstant("2026-11-22T09:00:00Z"),
                       platform::Calendar({"Asia/Kolkata"}), std::chrono::steady_clock::now() + 200ms);
    ASSERT_EQ(rows.size(), 3U);
    for (const DayRow& row : rows) EXPECT_THAT(row.error, HasSubstr("too slow"));
    EXPECT_EQ(rows[0].questions + rows[1].questions + rows[2].questions, 1);
}

}  // namespace
}  // namespace host
