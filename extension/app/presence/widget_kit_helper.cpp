#include "extension/app/presence/widget_kit_helper.h"

#include <algorithm>
#include <vector>
#include "extension/app/settings/store_keys.h"
#include "extension/app/settings/widget_names.h"

namespace extension {
namespace {

using platform::PlacedWidget;

void notePresence(const std::vector<PlacedWidget>& placed, std::string_view kind, bool& isAdded,
                  std::string& family) {
    const auto first = std::ranges::find(placed, kind, &PlacedWidget::kind);
    // A widget that was removed stays noted for as long as the process lives.
    if (first == placed.end()) return;
    isAdded = true;
    family = first->family ? platform::description(*first->family) : std::string_view();
}

void notePresence(const std::vector<PlacedWidget>& placed, WidgetPresence& presence) {
    notePresence(placed, perchWidgetKind, presence.isWigetAdded, presence.widgetFamily);
    notePresence(placed, newsWidgetKind, presence.isNewsWidgetAdded, presence.newsWidgetFamily);
    notePresence(placed, portfolioWidgetKind, presence.isPortfolioWigetAdded, presence.portfolioWidgetFamily);
}

}  // namespace

void WidgetKitHelper::getCurrentConfigurations(ProcessState& state, std::function<void()> completion) {
    state.runtime.widgetCenter().getCurrentConfigurations(
        [presence = state.presence,
         completion = std::move(completion)](const platform::Result<std::vector<PlacedWidget>>& placed) {
            if (placed) presence->update([&](WidgetPresence& flags) { notePresence(*placed, flags); });
            if (completion) completion();
        });
}

void WidgetKitHelper::reloadAllWidgets(std::optional<std::string_view> kind, ProcessState& state) {
    if (kind) {
        state.runtime.widgetCenter().reloadTimelines(*kind);
    } else {
        state.runtime.widgetCenter().reloadAllTimelines();
    }
}

platform::Result<void> WidgetKitHelper::updatePortfolioArrayUserDefaults(ProcessState& state) {
    const auto defaults = TRY(sharedDefaults(state.runtime));
    const auto removed = defaults->remove(keys::portfolioArray);
    if (!removed)
        state.runtime.log().write("Saved portfolio rows could not be removed: " + removed.error().message);
    return removed;
}

}  // namespace extension
