#pragma once

// One story, ready to be shown.

#include <functional>
#include <optional>
#include <string>
#include "extension/widgets/news/model/news_data_model.h"
#include "platform/base/bytes.h"
#include "platform/base/uuid.h"
#include "platform/url/url.h"

namespace extension {

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

}  // namespace extension
