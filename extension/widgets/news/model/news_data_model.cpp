#include "extension/widgets/news/model/news_data_model.h"

#include <array>
#include <nlohmann/json.hpp>
#include <utility>
#include "platform/json/strict_json.h"

namespace extension {
namespace {

using nlohmann::json;
using nlohmann::ordered_json;
using platform::Result;

constexpr std::array<std::string_view, 7> storyTypeNames{"liveblog",     "text", "podcast", "videos",
                                                         "photogallery", "news", "blogs"};

using TextField = std::optional<std::string> NewsDetails::*;

struct TextMember {
    const char* key;
    TextField field;
};
constexpr std::array<TextMember, 5> textMembers{{{"headline", &NewsDetails::headline},
                                                 {"story_id", &NewsDetails::storyID},
                                                 {"thumbnail", &NewsDetails::thumbnail},
                                                 {"timeago", &NewsDetails::timeago},
                                                 {"share_url", &NewsDetails::shareUrl}}};
constexpr const char* storyTypeKey = "story_type";
constexpr const char* listKey = "list";

tl::unexpected<platform::Error> newsFailure(std::string message) {
    return platform::failure("DecodingError", 1, std::move(message));
}

Result<std::optional<StoryType>> decodeStoryType(const json& story) {
    const Result<std::optional<std::string>> name = platform::optionalText(story, storyTypeKey);
    if (!name) return tl::unexpected(name.error());
    if (!*name) return std::nullopt;
    const std::optional<StoryType> type = storyType(**name);
    if (!type) return newsFailure("a story type that is not known");
    return type;
}

Result<NewsDetails> decodeStory(const json& story) {
    if (const auto isObject = platform::requireObject(story, "a story"); !isObject) {
        return tl::unexpected(isObject.error());
    }
    NewsDetails details;
    for (const auto& [key, field] : textMembers) {
        Result<std::optional<std::string>> text = platform::optionalText(story, key);
        if (!text) return tl::unexpected(std::move(text.error()));
        details.*field = *std::move(text);
    }
    const Result<std::optional<StoryType>> type = decodeStoryType(story);
    if (!type) return tl::unexpected(type.error());
    details.storyType = *type;
    return details;
}

ordered_json encodedStory(const NewsDetails& story) {
    ordered_json object = ordered_json::object();
    for (const auto& [key, field] : textMembers) {
        if (const auto& text = story.*field) object[key] = *text;
    }
    if (story.storyType) object[storyTypeKey] = rawValue(*story.storyType);
    return object;
}

}  // namespace

std::string_view rawValue(StoryType type) { return storyTypeNames[static_cast<std::size_t>(type)]; }

std::optional<StoryType> storyType(std::string_view rawValue) {
    for (std::size_t i = 0; i < storyTypeNames.size(); ++i) {
        if (storyTypeNames[i] == rawValue) return static_cast<StoryType>(i);
    }
    return std::nullopt;
}

Result<NewsDataModel> decodeNews(std::string_view body) {
    const Result<json> document = platform::parseStrictJson(body);
    if (!document) return tl::unexpected(document.error());
    if (const auto isObject = platform::requireObject(*document, "the document"); !isObject) {
        return tl::unexpected(isObject.error());
    }
    const json* list = platform::presentMember(*document, listKey);
    if (list == nullptr) return NewsDataModel{};
    if (!list->is_array()) return newsFailure("\"list\" is no array");

    std::vector<NewsDetails> stories;
    stories.reserve(list->size());
    for (const json& element : *list) {
        Result<NewsDetails> story = decodeStory(element);
        if (!story) return tl::unexpected(std::move(story.error()));
        stories.push_back(*std::move(story));
    }
    return NewsDataModel{.list = std::move(stories)};
}

ordered_json encodedNews(const NewsDataModel& news) {
    ordered_json document = ordered_json::object();
    if (!news.list) return document;
    ordered_json& list = document[listKey] = ordered_json::array();
    for (const NewsDetails& story : *news.list) list.push_back(encodedStory(story));
    return document;
}

}  // namespace extension
