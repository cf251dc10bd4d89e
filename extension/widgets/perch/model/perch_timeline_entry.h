#pragma once

// What the Perch widget shows from one moment on.

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <vector>
#include "extension/widgets/perch/model/perch_multi_assets_vm.h"
#include "platform/base/clock.h"
#include "platform/base/color.h"
#include "platform/base/uuid.h"
#include "platform/runtime/runtime.h"

namespace extension {

struct PerchTimelineEntry {
    /// An entry of this moment, in the colours of the current theme.
    PerchTimelineEntry(const platform::Runtime& runtime, std::optional<std::vector<PerchMultiAssetsVM>> rows);

    platform::UUID id;
    platform::Instant date;
    /// Absent only in a placeholder whose request is under way; empty when there is nothing to show.
    std::optional<std::vector<PerchMultiAssetsVM>> multiAssetDataListItem;
    platform::Color backgroundColor;
    platform::Color textColor;
    platform::Color dateTimeColor;

    bool operator==(const PerchTimelineEntry&) const = default;
};

/// The entry's own fields, in their own order; what is absent is left out.
nlohmann::ordered_json entryJson(const PerchTimelineEntry& entry);

}  // namespace extension
