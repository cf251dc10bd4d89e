#pragma once

// How an app or extension reaches the host of its widgets.

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include "platform/base/result.h"
#include "platform/view/screen.h"

namespace platform {

/// One widget on the home screen; a host may not know its size.
struct PlacedWidget {
    std::string kind;
    std::optional<WidgetFamily> family;

    bool operator==(const PlacedWidget&) const = default;
};

/// What the running widget host does for an app. Without a running host, reload requests have no
/// effect and the query reports an error (domain "WidgetCenterError").
class WidgetCenter {
public:
    virtual ~WidgetCenter() = default;

    virtual void reloadTimelines(std::string_view ofKind) = 0;
    virtual void reloadAllTimelines() = 0;
    /// Calls `completion` exactly once, possibly before it returns and on any thread.
    virtual void getCurrentConfigurations(
        std::function<void(Result<std::vector<PlacedWidget>>)> completion) = 0;
};

}  // namespace platform
