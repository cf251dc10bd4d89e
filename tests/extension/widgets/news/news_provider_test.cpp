#include "extension/widgets/news/timeline/news_provider.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>
#include "extension/app/settings/store_keys.h"
#include "extension/theme/hex_codec.h"
#include "platform/settings/keyed_archive.h"
#include "platform/widget/widget.h"
#include "tests/extension/shared_settings.h"
#include "tests/support/served_runtime.h"
#include "tests/support/waiting.h"

namespace extension {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using platform::Bytes;
using platform::PropertyList;
using platform::TimelineReloadPolicy;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using tests::LoopbackServer;
using tests::ServedRuntime;
using tests::snapshotOf;
using tests::TestRuntime;
using tests::timelineOf;

static_assert(platform::TimelineProvider<NewsProvider>);

constexpr const char* rankingTarget = "/newsapi/app/get_news_ranking/main_home_page/allnews/?start=0&limit=5";

std::string document(const std::vector<json>& stories) { return json{{"list", stories}}.dump(); }

json feedStory(const std::string& headline) { return {{"headline", headline}}; }

NewsTimelineEntry entryOf(const TestRuntime& runtime) {
    return timelineOf(NewsProvider(runtime)).entries.at(0);
}

TEST(NewsTimeline, ShowsTheFirstFiveStoriesInTheirOrder) {
    std::vector<json> stories;
    for (const char* headline : {"1", "2", "3", "4", "5", "6", "7"}) stories.push_back(feedStory(headline));
    ServedRuntime phone;
    phone.service.answer(rankingTarget, {.body = document(stories)});

    const auto timeline = timelineOf(NewsProvider(phone.runtime));
    ASSERT_THAT(timeline.entries, SizeIs(1));
    const NewsTimelineEntry& entry = timeline.entries[0];
    EXPECT_TRUE(entry.isSuccess);
    EXPECT_EQ(entry.date, phone.runtime.now());
    EXPECT_EQ(timeline.policy, TimelineReloadPolicy::after(phone.runtime.now() + 30s));
    std::vector<std::string> headlines;
    for (const NewsUIVM& item : entry.newsUIVM) headlines.push_back(item.headline);
    EXPECT_THAT(headlines, ElementsAre("1", "2", "3", "4", "5"));
    EXPECT_EQ(phone.service.requests().at(0).method, "get");
    EXPECT_TRUE(snapshotOf(NewsProvider(phone.runtime)).isSuccess);
}

TEST(NewsTimeline, IsDueAgain30SecondsAfterTheQuestionHoweverLateTheAnswer) {
    const ServedRuntime phone({.body = document({feedStory("good")}), .delay = 300ms});
    const auto asked = phone.runtime.now();
    const auto timeline = timelineOf(NewsProvider(phone.runtime), [&] {
        EXPECT_TRUE(phone.service.waitForRequests(1));
        phone.runtime.clock().set(asked + 20s, 0.0);
    });
    EXPECT_EQ(timeline.entries.at(0).date, asked + 20s);
    EXPECT_EQ(timeline.policy, TimelineReloadPolicy::after(asked + 30s));
}

TEST(NewsTimeline, EveryFailureIsAnEmptyEntryThatIsAskedForAgain) {
    ServedRuntime phone;
    const tests::Answer answers[] = {
        {.status = 500, .body = document({feedStory("good")})},
        {.status = 304},
        {.status = 200},
        {.body = "<html></html>"},
        {.body = "{}"},
        {.body = document({})},
        {.body = document({feedStory("good"), {{"story_type", "sonnet"}}})},
        {.body = document({feedStory("good")}), .ending = tests::Answer::Ending::cut},
        {.body = document({feedStory("good")}), .declaredLength = 100'000},
        {.body = std::string(1000, '[')},
        {.body = document({feedStory(std::string(1U << 20, 'x'))})},
        {.ending = tests::Answer::Ending::noAnswerReset},
    };
    for (const tests::Answer& answer : answers) {
        phone.service.answer(answer);
        const auto timeline = timelineOf(NewsProvider(phone.runtime));
        ASSERT_THAT(timeline.entries, SizeIs(1));
        EXPECT_THAT(timeline.entries[0].newsUIVM, IsEmpty()) << answer.body.substr(0, 40);
        EXPECT_FALSE(timeline.entries[0].isSuccess);
        EXPECT_EQ(timeline.policy, TimelineReloadPolicy::after(phone.runtime.now() + 30s));
    }
    EXPECT_FALSE(entryOf(TestRuntime{}).isSuccess) << "without a host";
}

TEST(NewsTimeline, ThePlaceholderIsEmptyWhateverTheServiceAnswers) {
    const ServedRuntime phone({.body = document({feedStory("good")})});
    const NewsTimelineEntry entry = NewsProvider(phone.runtime).placeholder({});
    EXPECT_THAT(entry.newsUIVM, IsEmpty());
    EXPECT_FALSE(entry.isSuccess);
    EXPECT_EQ(entry.date, phone.runtime.now());
    EXPECT_TRUE(phone.service.waitForRequests(1));
}

TEST(NewsAddress, IsTheWebHostsUnlessTheAppHasPutAnotherInItsPlace) {
    const auto links = [](const PropertyList::Dictionary& texts) {
        return PropertyList(Bytes(platform::archivedObject(texts)));
    };
    const std::tuple<const char*, PropertyList, bool> cases[] = {
        {"replaced", links({{"newsWidgetApiUrl", "http://other/feed"}}), true},
        {"beside others", links({{"newsWidgetApiUrl", "http://other/feed"}, {"more", "x"}}), true},
        {"empty", links({{"newsWidgetApiUrl", ""}}), false},
        {"another key", links({{"newswidgetapiurl", "http://other/feed"}}), false},
        {"not only texts", links({{"newsWidgetApiUrl", "http://other/feed"}, {"more", 1}}), false},
        {"an empty dictionary", links({}), false},
        {"a text", Bytes(platform::archivedObject("http://other/feed")), false},
        {"not an archive", Bytes("http://other/feed"), false},
        {"not data", "http://other/feed", false},
        {"a plain dictionary", PropertyList::Dictionary{{"newsWidgetApiUrl", "http://other/feed"}}, false},
    };
    const TestRuntime runtime{{.webHost = "http://web.invalid"}};
    const NewsViewModel newsViewModel(runtime);
    EXPECT_EQ(newsViewModel.newsAddress(), std::string("http://web.invalid") + rankingTarget);
    for (const auto& [name, stored, isReplaced] : cases) {
        store(runtime, keys::extraLinks, stored);
        EXPECT_EQ(newsViewModel.newsAddress(),
                  isReplaced ? "http://other/feed" : std::string("http://web.invalid") + rankingTarget)
            << name;
        EXPECT_EQ(extension::stored(runtime, keys::extraLinks), stored) << "the key is kept";
    }
    EXPECT_TRUE(runtime.logged("Failed to unarchive object for key extra_links: "));

    const TestRuntime staging{
        {.webHost = "http://web.invalid",
         .information = {{"ENVIRONMENT", "staging"}, {"StagingWebHost", "http://staging.invalid"}}}};
    EXPECT_EQ(NewsViewModel(staging).newsAddress(), std::string("http://staging.invalid") + rankingTarget);
}

TEST(NewsStories, WithoutAnyMemberAreStillItems) {
    platform::IdSource ids(1);
    const ThumbnailReader nothing = [](const platform::URL&) { return std::nullopt; };
    const NewsUIVM bare = makeNewsUIVM({}, ids, nothing);
    EXPECT_EQ(bare.deeplink, "brightledgerwidget://news/?url=&articleType=&storyId=&isArticle=1");
    EXPECT_EQ(bare.headline, "");
    EXPECT_EQ(bare.thumbnailUrl, "");
    EXPECT_FALSE(bare.isLive);
    EXPECT_NE(makeNewsUIVM({}, ids, nothing).id, bare.id);
    const NewsUIVM blog = makeNewsUIVM({.storyType = StoryType::blogs}, ids, nothing);
    EXPECT_EQ(blog.deeplink, "brightledgerwidget://news/?url=&articleType=blogs&storyId=&isArticle=1");
    EXPECT_EQ(blog.storyTypeIncon, std::nullopt);
}

/// Stories with these thumbnails, of which those that begin with a slash are the service's own.
void answerStories(LoopbackServer& service, const std::vector<std::string>& thumbnails) {
    std::vector<json> stories;
    for (const std::string& thumbnail : thumbnails)
        stories.push_back({{"thumbnail", (thumbnail.starts_with("/") ? service.origin() : "") + thumbnail}});
    service.answer(rankingTarget, {.body = document(stories)});
}

TEST(NewsThumbnails, AreReadOneAfterAnotherAndKeptAsTheyCome) {
    ServedRuntime phone;
    phone.service.answer("/picture", {.body = "not a picture", .delay = 50ms});
    phone.service.answer("/missing", {.status = 404, .body = "missing"});
    phone.service.answer("/large", {.body = std::string((2U << 20) + 1, 'x')});
    answerStories(phone.service, {"/picture", "/missing", "/large", "", "not an address"});

    const NewsTimelineEntry entry = entryOf(phone.runtime);
    ASSERT_THAT(entry.newsUIVM, SizeIs(5));
    EXPECT_EQ(entry.newsUIVM[0].thumbnailData, Bytes("not a picture"));
    for (std::size_t i = 1; i < 5; ++i) EXPECT_FALSE(entry.newsUIVM[i].thumbnailData) << i;
    EXPECT_EQ(entry.newsUIVM[4].thumbnailUrl, "not an address");

    // The cut of the large one costs its connection; a warm process opens no other.
    const int connections = phone.service.connectionCount();
    phone.service.answer("/large", {.body = "small"});
    entryOf(phone.runtime);
    entryOf(phone.runtime);
    EXPECT_LE(phone.service.connectionCount(), connections + 1);
    std::vector<std::string> targets;
    for (const auto& request : phone.service.requests()) targets.push_back(request.target);
    targets.resize(4);
    EXPECT_THAT(targets, ElementsAre(rankingTarget, "/picture", "/missing", "/large"));
}

TEST(NewsThumbnails, AllTogetherHaveRoomForTwoMebibytes) {
    ServedRuntime phone;
    phone.service.answer("/half", {.body = std::string(1U << 20, 'x')});
    phone.service.answer("/small", {.body = "x"});
    answerStories(phone.service, {"/half", "/small", "/half", "/small", "/half"});
    std::vector<std::size_t> sizes;
    for (const NewsUIVM& item : entryOf(phone.runtime).newsUIVM)
        sizes.push_back(item.thumbnailData.value_or(Bytes()).size());
    EXPECT_THAT(sizes, ElementsAre(1U << 20, 1, 0, 1, 0));
}

TEST(NewsThumbnails, AllTogetherHaveEightSecondsAndDelayNoOtherAnswer) {
    ServedRuntime phone;
    phone.service.answer("/slow", {.ending = tests::Answer::Ending::silence});
    answerStories(phone.service, {"/slow", "/slow", "/slow"});
    phone.service.answer("/other", {.body = "fine"});

    tests::Awaited<NewsTimelineEntry> entry;
    const auto begin = std::chrono::steady_clock::now();
    NewsProvider(phone.runtime).getSnapshot({}, entry.taker());
    ASSERT_TRUE(phone.service.waitForRequests(2));
    EXPECT_TRUE(phone.runtime.urls().load({.url = *platform::URL::parse(phone.service.origin() + "/other")},
                                          begin + 5s));
    EXPECT_FALSE(entry.isThere());
    EXPECT_THAT(entry.value().newsUIVM, SizeIs(3));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 7900ms);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 12s);
    EXPECT_THAT(phone.service.requests(), SizeIs(3)) << "what is late anyway is not asked for";
}

TEST(NewsViewModel, APublicFeedCannotShowPicturesOfAPrivateNetwork) {
    LoopbackServer pictures;
    pictures.answer({.body = "a picture"});
    const TestRuntime runtime;
    const auto thumbnailOf = [&](const char* peer) {
        platform::HTTPResponse answer{.statusCode = 200, .peerAddress = peer, .headers = {}, .body = {}};
        answer.body = Bytes(document({json{{"thumbnail", pictures.origin()}}}));
        const auto stories = makeStories(answer, runtime);
        EXPECT_EQ(stories.size(), 1U);
        return stories.empty() ? std::nullopt : stories.front().thumbnailData;
    };
    EXPECT_FALSE(thumbnailOf("93.184.216.34"));
    EXPECT_EQ(pictures.requests().size(), 0U);
    EXPECT_TRUE(thumbnailOf("127.0.0.1"));
}

}  // namespace
}  // namespace extension
