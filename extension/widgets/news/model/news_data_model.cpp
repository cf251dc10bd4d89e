#include "extension/widgets/news/model/news_data_model.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include "platform/json/json_reader.h"

namespace extension {
namespace {

constexpr std::array<std::string_view, 7> storyTypeNames{"liveblog",     "text", "podcast", "videos",
                                                         "photogallery", "news", "blogs"};

}  // namespace

std::string_view rawValue(StoryType type) { return storyTypeNames[static_cast<std::size_t>(type)]; }

std::optional<StoryType> storyType(std::string_view rawValue) {
    const auto* const found = std::ranges::find(storyTypeNames, rawValue);
    if (found == storyTypeNames.end()) return std::nullopt;
    return static_cast<StoryType>(found - storyTypeNames.begin());
}

void decode(platform::JSONReader& reader, StoryType& type) {
    const std::optional<StoryType> known = storyType(reader.text());
    if (!known) return reader.fail("a story type that is not known");
    type = *known;
}

void to_json(nlohmann::ordered_json& json, StoryType type) { json = rawValue(type); }

}  // namespace extension
