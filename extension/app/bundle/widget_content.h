#pragma once

// What every widget puts around its entry view.

#include "platform/base/color.h"
#include "platform/view/view.h"

namespace extension {

/// The entry view on its background, edge to edge and without the system's margins: from version 17 on
/// the background is the container's, before that a plain one.
platform::View widgetContent(const platform::View& entryView, const platform::Color& backgroundColor,
                             const platform::EnvironmentValues& environment);

}  // namespace extension
