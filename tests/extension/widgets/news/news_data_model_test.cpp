#include "extension/widgets/news/model/news_data_model.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

namespace extension {
namespace {

TEST(NewsDocument, ReadsEveryMemberInAnyOrderAndIgnoresOthers) {
    const auto news = decodeNews(R"({"status": 1, "list": [
        {"story_type": "videos", "share_url": "https://a/b", "timeago": "2 hours ago", "more": {"x": [1]},
         "thumbnail": "https://a/c.jpg", "story_id": "42", "headline": "बाज़ार \u20b9"},
        {}], "paging": null})");
    ASSERT_TRUE(news);
    const std::vector<NewsDetails> stories{{.headline = "बाज़ार ₹",
                                            .storyID = "42",
                                            .thumbnail = "https://a/c.jpg",
                                            .timeago = "2 hours ago",
                                            .shareUrl = "https://a/b",
                                            .storyType = StoryType::videos},
                                           {}};
    EXPECT_EQ(news->list, stories);
}

TEST(NewsDocument, AbsentAndNullAreTheSame) {
    EXPECT_EQ(decodeNews("{}"), NewsDataModel{});
    EXPECT_EQ(decodeNews(R"({"list": null})"), NewsDataModel{});
    EXPECT_EQ(decodeNews(R"({"list": []})"), NewsDataModel{.list = std::vector<NewsDetails>{}});
    EXPECT_EQ(decodeNews(R"({"list": [{"story_type": null, "headline": null}]})"),
              NewsDataModel{.list = std::vector<NewsDetails>(1)});
    EXPECT_TRUE(decodeNews("\xef\xbb\xbf{}")) << "a byte order mark is no part of the document";
}

TEST(NewsDocument, KnowsExactlySevenStoryTypes) {
    for (const char* name : {"liveblog", "text", "podcast", "videos", "photogallery", "news", "blogs"}) {
        ASSERT_TRUE(storyType(name)) << name;
        EXPECT_EQ(rawValue(*storyType(name)), name);
    }
    for (const char* name : {"", "Podcast", "video", "photoGallery", "blog", "news "}) {
        EXPECT_FALSE(storyType(name)) << name;
        EXPECT_FALSE(decodeNews(R"({"list": [{}, {"story_type": ")" + std::string(name) + "\"}]}")) << name;
    }
}

TEST(NewsDocument, AnyFaultFailsTheWholeDocument) {
    const std::string cases[] = {
        "",
        "null",
        "[]",
        R"({"list": {}})",
        R"({"list": "none"})",
        R"({"list": [null]})",
        R"({"list": [[]]})",
        R"({"list": [{"story_id": 42}]})",
        R"({"list": [{"headline": true}]})",
        R"({"list": [{"thumbnail": {}}]})",
        R"({"list": [{"timeago": 2.5}]})",
        R"({"list": [{"share_url": []}]})",
        R"({"list": [{"story_type": 1}]})",
    };
    for (const std::string& text : cases) EXPECT_FALSE(decodeNews(text)) << text.substr(0, 60);
}

TEST(NewsDocument, IsWrittenWithTheSameKeysAndReadBackAsItWas) {
    for (const char* text : {"{}", R"({"list":[]})",
                             R"({"list":[{"headline":"A","story_id":"1","thumbnail":"t","timeago":"now",)"
                             R"("share_url":"u","story_type":"liveblog"},{},{"story_type":"blogs"}]})"}) {
        const auto news = decodeNews(text);
        ASSERT_TRUE(news);
        EXPECT_EQ(encodedNews(*news).dump(), text);
    }
}

}  // namespace
}  // namespace extension
