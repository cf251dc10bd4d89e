#include "extension/widgets/news/model/news_data_model.h"

#include <gtest/gtest.h>

#include <string>
#include "platform/json/json_coding.h"

namespace extension {
namespace {

TEST(NewsDocument, ReadsEveryMemberInAnyOrderAndIgnoresOthers) {
    const auto news = platform::decodedJSON<NewsDataModel>(R"({"status": 1, "list": [
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
    EXPECT_EQ(platform::decodedJSON<NewsDataModel>("{}"), NewsDataModel{});
    EXPECT_EQ(platform::decodedJSON<NewsDataModel>(R"({"list": null})"), NewsDataModel{});
    EXPECT_EQ(platform::decodedJSON<NewsDataModel>(R"({"list": []})"),
              NewsDataModel{.list = std::vector<NewsDetails>{}});
    EXPECT_EQ(platform::decodedJSON<NewsDataModel>(R"({"list": [{"story_type": null, "headline": null}]})"),
              NewsDataModel{.list = std::vector<NewsDetails>(1)});
    EXPECT_TRUE(platform::decodedJSON<NewsDataModel>("\xef\xbb\xbf{}"))
        << "a byte order mark is no part of the document";
}

TEST(NewsDocument, KnowsExactlySevenStoryTypes) {
    for (const char* name : {"liveblog", "text", "podcast", "videos", "photogallery", "news", "blogs"}) {
        ASSERT_TRUE(storyType(name)) << name;
        EXPECT_EQ(rawValue(*storyType(name)), name);
    }
    for (const char* name : {"", "Podcast", "video", "photoGallery", "blog", "news "}) {
        EXPECT_FALSE(storyType(name)) << name;
        EXPECT_FALSE(platform::decodedJSON<NewsDataModel>(R"({"list": [{}, {"story_type": ")" +
                                                          std::string(name) + "\"}]}"))
            << name;
    }
}

TEST(NewsDocument, DoesNotFailForTheContentsOfOtherMembers) {
    std::string many = "[0";
    for (int i = 0; i < 60'000; ++i) many += ",0";
    for (const std::string& value : {std::string("1e400"), std::string(400, '9'), std::string(R"("\ud800")"),
                                     R"({"\ud800":[-1e999]})" + std::string(), many + "]"}) {
        const std::string member = "\"x\":" + value;
        const auto news = platform::decodedJSON<NewsDataModel>("{" + member + R"(, "list": [{)" + member +
                                                               R"(, "headline": "A"}], "y": 1e400})");
        ASSERT_TRUE(news) << value.substr(0, 20) << ": " << news.error().message;
        EXPECT_EQ(news->list, std::vector<NewsDetails>{{.headline = "A"}});
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
    for (const std::string& text : cases)
        EXPECT_FALSE(platform::decodedJSON<NewsDataModel>(text)) << text.substr(0, 60);
}

TEST(NewsDocument, IsWrittenWithTheSameKeysAndReadBackAsItWas) {
    for (const char* text : {"{}", R"({"list":[]})",
                             R"({"list":[{"headline":"A","story_id":"1","thumbnail":"t","timeago":"now",)"
                             R"("share_url":"u","story_type":"liveblog"},{},{"story_type":"blogs"}]})"}) {
        const auto news = platform::decodedJSON<NewsDataModel>(text);
        ASSERT_TRUE(news);
        EXPECT_EQ(platform::encodedJSON(*news).dump(), text);
    }
}

}  // namespace
}  // namespace extension
