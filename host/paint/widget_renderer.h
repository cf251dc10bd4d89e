#pragma once

// Lays out and draws widgets for several threads, one widget at a time.

#include <memory>
#include <mutex>
#include <string>
#include "host/layout/display_list.h"
#include "host/paint/painter.h"
#include "platform/base/result.h"
#include "platform/view/screen.h"
#include "platform/view/view.h"

namespace host {

/// The view tree of one widget, with what its layout needs.
struct DrawnWidget {
    platform::View view;
    std::string kind;
    platform::WidgetFamily family = platform::WidgetFamily::systemSmall;
    bool isRedacted = false;

    /// Whether both look alike.
    bool operator==(const DrawnWidget&) const = default;
};

/// Any thread may use it.
class WidgetRenderer {
public:
    WidgetRenderer(std::unique_ptr<Painter> painter, const platform::Screen& screen, int osVersion);

    /// `scale` is 1, 2 or 3 pixels per point.
    DisplayList displayList(const DrawnWidget& widget, int scale);
    platform::Result<std::string> png(const DrawnWidget& widget, int scale);
    /// The tree as JSON text with a frame in every node.
    std::string laidOutText(const DrawnWidget& widget);

private:
    DisplayList list(const DrawnWidget& widget, int scale);

    std::mutex mutex_;
    std::unique_ptr<Painter> painter_;
    platform::Screen screen_;
    int osVersion_;
};

}  // namespace host
