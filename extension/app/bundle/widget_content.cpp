#include "extension/app/bundle/widget_content.h"

namespace extension {

using platform::View;

View widgetContent(const View& entryView, const platform::Color& backgroundColor,
                   const platform::EnvironmentValues& environment) {
    // Twice, once in each of the two forms that the platform offers.
    const View background = platform::ColorFill(backgroundColor).ignoresSafeArea().ignoresSafeArea();
    const View filled = environment.osVersion >= 17 ? entryView.containerBackground(background)
                                                    : entryView.background(background);
    return filled.padding(0.0);
}

}  // namespace extension
