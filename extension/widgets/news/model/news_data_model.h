#pragma once

// The service's ranking of stories, as its JSON document carries it. Read it with
// `platform::decodedJSON<NewsDataModel>`, write it with `platform::encodedJSON`.

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {
class JSONReader;
}

namespace extension {

enum class StoryType { liveblog, text, podcast, videos, photogallery, news, blogs };

/// "liveblog", "text", ...: the name in the document.
std::string_view rawValue(StoryType type);
/// The type of exactly that name.
std::optional<StoryType> storyType(std::string_view rawValue);

/// A type that is not known fails the whole document: better no news than stories whose kind we would have to
/// guess.
void decode(platform::JSONReader& reader, StoryType& type);
void to_json(nlohmann::ordered_json& json, StoryType type);

struct NewsDetails {
    std::optional<std::string> headline = std::nullopt;
    std::optional<std::string> storyID = std::nullopt;
    /// Address of a picture.
    std::optional<std::string> thumbnail = std::nullopt;
    /// The service's words for the story's age.
    std::optional<std::string> timeago = std::nullopt;
    std::optional<std::string> shareUrl = std::nullopt;
    std::optional<StoryType> storyType = std::nullopt;

    static void members(auto& self, auto&& member) {
        member("headline", self.headline);
        member("story_id", self.storyID);
        member("thumbnail", self.thumbnail);
        member("timeago", self.timeago);
        member("share_url", self.shareUrl);
        member("story_type", self.storyType);
    }
    bool operator==(const NewsDetails&) const = default;
};

struct NewsDataModel {
    /// The top story first.
    std::optional<std::vector<NewsDetails>> list = std::nullopt;

    static void members(auto& self, auto&& member) { member("list", self.list); }
    bool operator==(const NewsDataModel&) const = default;
};

}  // namespace extension
