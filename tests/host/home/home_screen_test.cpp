#include "host/home/home_screen.h"
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <future>
#include <nlohmann/json.hpp>
#include <thread>
#include "companion/deep_link.h"
#include "extension/app/presence/widget_kit_helper.h"
#include "host/home/host_questions.h"
#include "host/home/host_socket.h"
#include "host/home/page_actions.h"
#include "host/home/page_state.h"
#include "host/home/placements.h"
#include "host/process/demo_child.h"
#include "host/schedule/day_strip.h"
#include "host/web/page_server.h"
#include "platform/wire/framing.h"
#include "platform/wire/host_channel.h"
#include "platform/wire/host_widget_center.h"
#include "tests/support/temporary_directory.h"

namespace host {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using platform::WidgetFamily;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

sockaddr_un addressOf(const std::filesystem::path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    return address;
}

platform::FileDescriptor listenAt(const std::filesystem::path& path) {
    platform::FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
    const sockaddr_un address = addressOf(path);
    EXPECT_EQ(::bind(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(socket.number(), 4), 0);
    return socket;
}

platform::FileDescriptor connectTo(const std::filesystem::path& path) {
    platform::FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
    const sockaddr_un address = addressOf(path);
    EXPECT_EQ(::connect(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    return socket;
}

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

TEST(Placements, AreKeptInAFileOfTheOwnerAndADamagedFileIsAnError) {
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
    for (const char* nonsense : {"", "{", "[]", R"({"widgets":[{"kind":"A","family":"huge"}]})",
                                 R"({"widgets":[{"kind":1,"family":"systemSmall"}]})"}) {
        std::ofstream(file, std::ios::trunc) << nonsense;
        EXPECT_FALSE(again.load({})) << nonsense;
        EXPECT_THAT(again.all(), IsEmpty());
    }
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
        std::vector<platform::FileDescriptor> silent;
        for (int i = 0; i < 5; ++i) silent.push_back(connectTo(path));
        EXPECT_EQ(platform::askHost(path, std::string(300000, 'q'), 5s)->size(), 300000U);
        // However it answers: a host that is starting knows nothing yet.
        EXPECT_THAT(HostSocket::open(path, {}).error().message, HasSubstr("running already"));
        EXPECT_EQ(platform::askHost(path, "bad", 1s).error().message, "no");
    }
    EXPECT_FALSE(platform::askHost(path, "placed", 1s));
    ASSERT_EQ(::chmod(path.parent_path().c_str(), 0777), 0);
    EXPECT_THAT(HostSocket::open(path, {}).error().message, HasSubstr("other users can enter"));
}

/// A host that sends its answer a byte at a time with pauses.
class SlowHost {
public:
    SlowHost(const std::filesystem::path& path, std::string answer, std::chrono::milliseconds pause)
        : listener_(listenAt(path)), thread_([this, pause, text = std::move(answer)] {
              const platform::FileDescriptor connection(::accept(listener_.number(), nullptr, nullptr));
              for (const char byte : text) {
                  std::this_thread::sleep_for(pause);
                  if (::send(connection.number(), &byte, 1, MSG_NOSIGNAL) != 1) return;
              }
          }) {}
    ~SlowHost() { thread_.join(); }
    SlowHost(const SlowHost&) = delete;
    SlowHost& operator=(const SlowHost&) = delete;

private:
    platform::FileDescriptor listener_;
    std::thread thread_;
};

std::string framed(const std::string& text) { return *platform::frameLength(text.size()) + text; }

TEST(HostChannel, HasOneLimitForTheWholeExchange) {
    const tests::TemporaryDirectory folder;
    const auto path = folder.path() / "host.socket";
    const SlowHost host(path, framed("ok\n" + std::string(50, 'x')), 50ms);
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
    const SlowHost host(path, framed("ok\nPerchWidget\tsystemMedium\nNewsWidget\n"), 10ms);
    platform::RuntimeOptions options;
    options.dataDirectory = folder.path();
    options.widgetCenter = std::make_shared<platform::HostWidgetCenter>(folder.path());
    const platform::Runtime runtime(options);
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
    explicit House(const std::filesystem::path& directory) {
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

    std::string ask(const std::string& request) const {
        const std::string address = page->address();
        const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in place{};
        place.sin_family = AF_INET;
        place.sin_port = htons(static_cast<std::uint16_t>(std::stoi(address.substr(17))));
        place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(::connect(socket, reinterpret_cast<sockaddr*>(&place), sizeof place), 0);
        ::send(socket, request.data(), request.size(), MSG_NOSIGNAL);
        std::string answer;
        char piece[4096];
        for (ssize_t got = 0; (got = ::recv(socket, piece, sizeof piece, 0)) > 0;)
            answer.append(piece, static_cast<std::size_t>(got));
        ::close(socket);
        return answer;
    }
    std::string host() const { return page->address().substr(7, page->address().find("/?") - 7); }
    std::string cookie() const {
        const std::string answer = ask("GET " + page->address().substr(page->address().find("/?")) +
                                       " HTTP/1.1\r\nHost: " + host() + "\r\nConnection: close\r\n\r\n");
        const std::size_t start = answer.find("Set-Cookie: ") + 12;
        return answer.substr(start, answer.find(';', start) - start);
    }

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
    const tests::TemporaryDirectory folder;
    const House house(folder.path());
    ASSERT_EQ(::setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1), 0);
    const auto path = platform::hostSocketPath(folder.path());
    EXPECT_FALSE(isHostRunning(path));
    const auto socket = HostSocket::open(
        path, [&](std::string_view question) { return answerQuestion(*house.home, question); });
    ASSERT_TRUE(socket) << socket.error().message;
    EXPECT_TRUE(isHostRunning(path));
    house.waitFor(areAllShown);
    {
        platform::HostWidgetCenter center(folder.path());
        center.getCurrentConfigurations([&](const auto& placed) {
            EXPECT_EQ(placed->size(), 6U);
            EXPECT_EQ(placed->front(), (platform::PlacedWidget{"PerchWidget", WidgetFamily::systemMedium}));
        });
        center.reloadTimelines("NewsWidget");
    }
    EXPECT_THAT(*askWhy(path, "NewsWidget"),
                testing::AllOf(HasSubstr("asked by placement"), HasSubstr("asked by app")));
    EXPECT_THAT(*askWhy(path, "PerchWidget"), Not(HasSubstr("asked by app")));
    EXPECT_THAT(askWhy(path, "Nothing").error().message, HasSubstr("choose NewsWidget, "));
    EXPECT_TRUE(askToSignIn(path, "asha"));
    EXPECT_EQ(house.state()["app"]["user"], "asha");
    EXPECT_THAT(askToSignIn(path, "nobody").error().message, HasSubstr("unknown user \"nobody\""));
    EXPECT_TRUE(askToSignIn(path, ""));
    EXPECT_EQ(house.state()["app"]["user"], "");
}

TEST(HomePage, LetsNobodyInWithoutTheAddressThatWasPrinted) {
    const tests::TemporaryDirectory folder;
    const House house(folder.path());
    const std::string host = "\r\nHost: " + house.host() + "\r\nConnection: close\r\n";
    const std::string cookie = "Cookie: " + house.cookie() + "\r\n";
    const std::string body = R"({"action":"reload"})";
    const std::string length = "Content-Length: " + std::to_string(body.size()) + "\r\n";
    const struct {
        std::string request;
        const char* status;
    } cases[] = {
        {"GET / HTTP/1.1" + host + cookie + "\r\n", "HTTP/1.1 200"},
        {"GET /state HTTP/1.1" + host + cookie + "\r\n", "HTTP/1.1 200"},
        {"GET / HTTP/1.1" + host + "\r\n", "HTTP/1.1 403"},
        {"GET /state HTTP/1.1" + host + "Cookie: " + house.cookie() + "0\r\n\r\n", "HTTP/1.1 403"},
        {"GET /?token=0 HTTP/1.1" + host + "\r\n", "HTTP/1.1 403"},
        {"GET / HTTP/1.1\r\nHost: localhost:" + house.host().substr(10) + "\r\nConnection: close\r\n" +
             cookie + "\r\n",
         "HTTP/1.1 421"},
        {"GET / HTTP/1.1\r\nHost: evil.invalid\r\nConnection: close\r\n" + cookie + "\r\n", "HTTP/1.1 421"},
        {"POST /act HTTP/1.1" + host + cookie + length + "\r\n" + body, "HTTP/1.1 403"},
        {"POST /act HTTP/1.1" + host + cookie + "Origin: http://evil.invalid\r\n" + length + "\r\n" + body,
         "HTTP/1.1 403"},
        {"POST /act HTTP/1.1" + host + "Origin: http://" + house.host() + "\r\n" + length + "\r\n" + body,
         "HTTP/1.1 403"},
        {"POST /act HTTP/1.1" + host + cookie + "Origin: http://" + house.host() + "\r\n" + length + "\r\n" +
             body,
         "HTTP/1.1 200"},
        {"GET /act?action=reload HTTP/1.1" + host + cookie + "\r\n", "HTTP/1.1 404"},
        {"GET /../Info.plist HTTP/1.1" + host + cookie + "\r\n", "HTTP/1.1 404"},
        {"PUT / HTTP/1.1" + host + cookie + "\r\n", "HTTP/1.1 405"},
    };
    for (const auto& [request, status] : cases)
        EXPECT_THAT(house.ask(request), StartsWith(status)) << request;
    EXPECT_THAT(house.ask(cases[0].request),
                testing::AllOf(HasSubstr("default-src 'none'"), Not(HasSubstr("unsafe"))));
}

TEST(HomePage, ShowsTheWidgetsAndDoesWhatThePhoneAppWould) {
    const tests::TemporaryDirectory folder;
    const House house(folder.path());
    const auto perform = [&](const json& request) {
        const auto done = act(*house.home, request);
        EXPECT_TRUE(done) << request << done.error().message;
    };
    json state = house.waitFor(areAllShown);
    EXPECT_EQ(state["widgets"].size(), 6U);
    EXPECT_THAT(widgetOf(state, "PortfolioWidget")["picture"]["text"].get<std::string>(), HasSubstr("login"));
    EXPECT_THAT(widgetOf(state, "PerchWidget")["picture"]["links"][0]["name"].get<std::string>(),
                HasSubstr("SENSEX"));

    perform({{"action", "user"}, {"user", "asha"}});
    state = house.waitFor([](const json& now) {
        const json& picture = widgetOf(now, "PortfolioWidget")["picture"];
        return !picture.is_null() && picture["text"].get<std::string>().find("Invested") != std::string::npos;
    });
    EXPECT_EQ(state["app"]["user"], "asha");
    for (const char* secret : {"demo-a7c1", "10042", "portfolioapi"}) {
        EXPECT_THAT(state.dump(), Not(HasSubstr(secret)));
        EXPECT_THAT(*house.screen->inspection(widgetOf(state, "PortfolioWidget")["id"]),
                    Not(HasSubstr(secret)));
        EXPECT_THAT(house.screen->choices() + house.screen->ledger(0), Not(HasSubstr(secret)));
    }
    perform({{"action", "user"}, {"user", ""}});
    EXPECT_THAT(house.state().dump(), Not(HasSubstr("Invested")));

    perform({{"action", "assets"}, {"keys", {"in;NSX-II", "KVT-EQ"}}});
    house.waitFor([](const json& now) {
        const std::string text = widgetOf(now, "PerchWidget")["picture"]["text"];
        return text.find("Kaveri") != std::string::npos && text.find("SENSEX") == std::string::npos;
    });
    EXPECT_FALSE(act(*house.home, {{"action", "assets"}, {"keys", {"nonsense"}}}));
    EXPECT_FALSE(act(*house.home, {{"action", "place"}, {"kind", "NewsWidget"}, {"family", "systemSmall"}}));
    EXPECT_FALSE(act(*house.home, {{"action", "unknown"}}));
}

TEST(HomePage, LetsNobodyWaitForASlowService) {
    const tests::TemporaryDirectory folder;
    const House house(folder.path());
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

TEST(HomePage, KeepsThePicturesWhenTheExtensionIsKilledAndSaysWhatHappened) {
    const tests::TemporaryDirectory folder;
    const House house(folder.path());
    house.waitFor(areAllShown);
    const int process = house.state()["extension"]["process"];
    ASSERT_TRUE(act(*house.home, {{"action", "kill"}}));
    house.waitFor([&](const json& now) {
        return now["extension"]["process"] != 0 && now["extension"]["process"] != process && areAllShown(now);
    });
}

TEST(HomePage, PlacesMovesAndRemovesAndRemembersIt) {
    const tests::TemporaryDirectory folder;
    {
        const House house(folder.path());
        const int news = widgetOf(house.state(), "NewsWidget")["id"];
        EXPECT_TRUE(act(*house.home, {{"action", "move"}, {"id", news}, {"index", 0}}));
        EXPECT_TRUE(
            act(*house.home, {{"action", "place"}, {"kind", "PerchWidget"}, {"family", "systemSmall"}}));
        const json widgets = house.state()["widgets"];
        EXPECT_EQ(widgets[0]["id"], news);
        EXPECT_TRUE(act(*house.home, {{"action", "remove"}, {"id", widgets[1]["id"]}}));
    }
    const House house(folder.path());
    const json state = house.state();
    std::vector<std::string> kinds;
    for (const json& widget : state["widgets"])
        kinds.push_back(widget["kind"].get<std::string>() + widget["family"].get<std::string>().substr(6));
    EXPECT_THAT(kinds, ElementsAre("NewsWidgetLarge", "PortfolioWidgetSmall", "PerchWidgetSmall",
                                   "PortfolioWidgetMedium", "PerchWidgetLarge", "PerchWidgetSmall"));
}

TEST(HomePage, ChangesTheAutomaticThemeWhenItsClockPassesTheEvening) {
    const tests::TemporaryDirectory folder;
    const House house(folder.path());
    house.waitFor(areAllShown);
    ASSERT_TRUE(act(*house.home, {{"action", "theme"}, {"theme", 2}}));
    const auto backgroundAt = [&](const char* instant) {
        const auto wanted = *platform::parseInstant(instant);
        EXPECT_TRUE(act(*house.home, {{"action", "clock"}, {"instant", instant}}));
        std::string color;
        house.waitFor([&](const json& now) {
            const int id = widgetOf(now, "PerchWidget")["id"];
            const json entry = json::parse(*house.screen->inspection(id))["entry"];
            color = entry["backgroundColor"]["hex"];
            return platform::parseInstant(entry["date"].get<std::string>()) == wanted;
        });
        return color;
    };
    EXPECT_EQ(backgroundAt("2026-11-22T19:00:00+05:30"), "#FFFFFF");
    EXPECT_EQ(backgroundAt("2026-11-22T19:00:01+05:30"), "#1A1A22");
    EXPECT_FALSE(act(*house.home, {{"action", "clock"}, {"instant", "tomorrow"}}));
}

}  // namespace
}  // namespace host
