#include "extension/app/bundle/widget_content.h"

namespace extension {

using namespace platform;

View widgetContent(const View& entryView, const Color& backgroundColor,
                   const EnvironmentValues& environment) {
    // Twice, once in each form that the platform offers.
    const View background = ColorFill(backgroundColor).ignoresSafeArea().ignoresSafeArea();
    const View filled = environment.osVersion >= 17 ? entryView.containerBackground(background)
                                                    : entryView.background(background);
    return filled.padding(0.0);
}

}  // namespace extension
