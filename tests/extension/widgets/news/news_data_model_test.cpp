#include "extension/widgets/news/model/news_data_model.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>
#include "platform/json/json_coding.h"
#include "tests/support/expected_text.h"

namespace extension {
namespace {

TEST(NewsDocument, IsReadWhollyOrNotAtAll) {
    const auto answer = [](const std::string& text) {
        const auto news = platform::decodedJSON<NewsDataModel>(text);
        return news ? platform::encodedJSON(*news).dump() : "refused";
    };
    EXPECT_TRUE(tests::answersAsExpected("extension/news_documents.txt", answer));
    EXPECT_EQ(answer("\xef\xbb\xbf{}"), "{}") << "a byte order mark is not part of the document";
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

}  // namespace
}  // namespace extension
