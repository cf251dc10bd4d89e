#include "host/paint/widget_renderer.h"
#include <nlohmann/json.hpp>
#include "host/layout/layout.h"

namespace host {
namespace {

LayoutOptions layoutOptions(const DrawnWidget& widget, const platform::Screen& screen, int osVersion) {
    return {.size = screen.widgetSize(widget.family),
            .osVersion = osVersion,
            .kind = widget.kind,
            .family = std::string(platform::description(widget.family)),
            .isRedacted = widget.isRedacted};
}

}  // namespace

WidgetRenderer::WidgetRenderer(std::unique_ptr<Painter> painter, const platform::Screen& screen,
                               int osVersion)
    : painter_(std::move(painter)), screen_(screen), osVersion_(osVersion) {}

DisplayList WidgetRenderer::list(const DrawnWidget& widget, int scale) {
    return makeDisplayList(widget.view, layoutOptions(widget, screen_, osVersion_),
                           painter_->measurer(scale));
}

DisplayList WidgetRenderer::displayList(const DrawnWidget& widget, int scale) {
    const std::lock_guard lock(mutex_);
    return list(widget, scale);
}

platform::Result<std::string> WidgetRenderer::png(const DrawnWidget& widget, int scale) {
    const std::lock_guard lock(mutex_);
    return painter_->png(list(widget, scale), scale);
}

std::string WidgetRenderer::laidOutText(const DrawnWidget& widget) {
    const std::lock_guard lock(mutex_);
    return laidOutJson(widget.view, layoutOptions(widget, screen_, osVersion_), painter_->measurer(3))
        .dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace host
