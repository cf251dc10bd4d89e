#pragma once

// What the News widget shows from one moment on.

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>
#include "extension/widgets/news/model/news_ui_vm.h"
#include "platform/base/clock.h"
#include "platform/base/color.h"
#include "platform/runtime/runtime.h"

namespace extension {

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
