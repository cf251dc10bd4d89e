#include "host/schedule/picture_studio.h"
#include <nlohmann/json.hpp>
#include "host/layout/layout.h"

namespace host {

namespace {

LayoutOptions layoutOptions(const Sitter& sitter, int osVersion) {
    return {.size = platform::widgetSize(sitter.family),
            .osVersion = osVersion,
            .kind = sitter.kind,
            .family = std::string(platform::description(sitter.family)),
            .isRedacted = sitter.isRedacted};
}

}  // namespace

PictureStudio::PictureStudio(std::unique_ptr<Painter> painter, int osVersion)
    : painter_(std::move(painter)), osVersion_(osVersion) {}

DisplayList PictureStudio::list(const Sitter& sitter, int scale) {
    return makeDisplayList(sitter.view, layoutOptions(sitter, osVersion_), painter_->measurer(scale));
}

DisplayList PictureStudio::displayList(const Sitter& sitter, int scale) {
    const std::lock_guard lock(mutex_);
    return list(sitter, scale);
}

platform::Result<std::string> PictureStudio::png(const Sitter& sitter, int scale) {
    const std::lock_guard lock(mutex_);
    return painter_->png(list(sitter, scale), scale);
}

std::string PictureStudio::laidOutText(const Sitter& sitter) {
    const std::lock_guard lock(mutex_);
    return laidOutJson(sitter.view, layoutOptions(sitter, osVersion_), painter_->measurer(3))
        .dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace host
