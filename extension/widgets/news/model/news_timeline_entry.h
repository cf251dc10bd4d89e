#pragma once

// What the News widget shows from one moment on: the stories, ready to be drawn.

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>
#include "extension/widgets/news/model/news_data_model.h"
#include "platform/base/bytes.h"
#include "platform/base/clock.h"
#include "platform/base/color.h"
#include "platform/base/uuid.h"
#include "platform/runtime/runtime.h"
#include "platform/url/url.h"

namespace extension {

/// One story.
struct NewsUIVM {
    /// New for every conversion, so that the same story twice is two items.
    platform::UUID id;
    std::string thumbnailUrl;
    std::string headline;
    /// Text, not yet known to be an address: a share URL goes in as it came.
    std::string deeplink;
    /// Name of the badge's picture asset.
    std::optional<std::string> storyTypeIncon;
    /// The bytes as they came; they need not be a picture.
    std::optional<platform::Bytes> thumbnailData;
    bool isLive = false;

    bool operator==(const NewsUIVM&) const = default;
};

/// Reads what is at an address, now; nothing when that fails.
using ThumbnailReader = std::function<std::optional<platform::Bytes>(const platform::URL&)>;

/// Asks `readThumbnail` for the picture when the story names an address.
NewsUIVM makeNewsUIVM(const NewsDetails& story, platform::IdSource& ids,
                      const ThumbnailReader& readThumbnail);

struct NewsTimelineEntry {
    /// An entry of this moment, in the colours of the current theme.
    NewsTimelineEntry(const platform::Runtime& runtime, std::vector<NewsUIVM> stories, bool isSuccessful);

    platform::Instant date;
    /// At most five, the top story first.
    std::vector<NewsUIVM> newsUIVM;
    bool isSuccess = false;
    platform::Color backgroundColor;
    platform::Color textColor;
    /// Name of a picture asset.
    std::string arrowIcon;

    bool operator==(const NewsTimelineEntry&) const = default;
};

/// The entry's own fields, in their own order; what is absent is left out.
nlohmann::ordered_json entryJson(const NewsTimelineEntry& entry);

}  // namespace extension
