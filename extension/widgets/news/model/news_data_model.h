#pragma once

// The service's ranking of stories, as its JSON document tells it.

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include "platform/base/result.h"

namespace extension {

enum class StoryType { liveblog, text, podcast, videos, photogallery, news, blogs };

/// "liveblog", "text", ...: the name in the document.
std::string_view rawValue(StoryType type);
/// The type of exactly that name.
std::optional<StoryType> storyType(std::string_view rawValue);

struct NewsDetails {
    std::optional<std::string> headline = std::nullopt;
    std::optional<std::string> storyID = std::nullopt;
    /// Address of a picture.
    std::optional<std::string> thumbnail = std::nullopt;
    /// The service's words for the story's age.
    std::optional<std::string> timeago = std::nullopt;
    std::optional<std::string> shareUrl = std::nullopt;
    std::optional<StoryType> storyType = std::nullopt;

    bool operator==(const NewsDetails&) const = default;
};

struct NewsDataModel {
    /// The top story first.
    std::optional<std::vector<NewsDetails>> list = std::nullopt;

    bool operator==(const NewsDataModel&) const = default;
};

/// Reads a whole document. A member that is absent or null is absent, others than ours are ignored;
/// one of another type, or a story type that is not known, fails the whole document: better no news than
/// stories whose kind we would have to guess. Never throws.
platform::Result<NewsDataModel> decodeNews(std::string_view body);

/// The same document again; what is absent is left out.
nlohmann::ordered_json encodedNews(const NewsDataModel& news);

}  // namespace extension
