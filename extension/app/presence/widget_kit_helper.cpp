#include "extension/app/presence/widget_kit_helper.h"

#include <algorithm>
#include <vector>
#include "extension/app/settings/store_keys.h"
#include "extension/app/settings/widget_kinds.h"

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

Guarded<WidgetPresence>& sharedPresence() { return *ProcessState::shared().presence; }

template <typename T>
T read(PresenceMember<T> property) {
    return sharedPresence().get().*property;
}

template <typename T>
void write(PresenceMember<T> property, T value) {
    sharedPresence().update([&](WidgetPresence& presence) { presence.*property = std::move(value); });
}

}  // namespace

void queryPlacedWidgets(ProcessState& state, std::function<void()> completion) {
    state.runtime.widgetCenter().getCurrentConfigurations(
        [presence = state.presence,
         completion = std::move(completion)](const platform::Result<std::vector<PlacedWidget>>& placed) {
            if (placed) presence->update([&](WidgetPresence& flags) { notePresence(*placed, flags); });
            if (completion) completion();
        });
}

void reloadWidgets(const platform::Runtime& runtime, std::optional<std::string_view> kind) {
    if (kind) {
        runtime.widgetCenter().reloadTimelines(*kind);
    } else {
        runtime.widgetCenter().reloadAllTimelines();
    }
}

platform::Result<void> removeSavedPortfolioRows(const platform::Runtime& runtime) {
    const auto defaults = sharedDefaults(runtime);
    if (!defaults) return tl::unexpected(defaults.error());
    const auto removed = (*defaults)->remove(keys::portfolioArray);
    if (!removed) {
        runtime.log().write("Saved portfolio rows could not be removed: " + removed.error().message);
    }
    return removed;
}

bool WidgetKitHelper::isWigetAdded() { return read(&WidgetPresence::isWigetAdded); }

void WidgetKitHelper::setIsWigetAdded(bool value) { write(&WidgetPresence::isWigetAdded, value); }

std::string WidgetKitHelper::widgetFamily() { return read(&WidgetPresence::widgetFamily); }

void WidgetKitHelper::setWidgetFamily(std::string value) {
    write(&WidgetPresence::widgetFamily, std::move(value));
}

bool WidgetKitHelper::isNewsWidgetAdded() { return read(&WidgetPresence::isNewsWidgetAdded); }

void WidgetKitHelper::setIsNewsWidgetAdded(bool value) { write(&WidgetPresence::isNewsWidgetAdded, value); }

std::string WidgetKitHelper::newsWidgetFamily() { return read(&WidgetPresence::newsWidgetFamily); }

void WidgetKitHelper::setNewsWidgetFamily(std::string value) {
    write(&WidgetPresence::newsWidgetFamily, std::move(value));
}

bool WidgetKitHelper::isPortfolioWigetAdded() { return read(&WidgetPresence::isPortfolioWigetAdded); }

void WidgetKitHelper::setIsPortfolioWigetAdded(bool value) {
    write(&WidgetPresence::isPortfolioWigetAdded, value);
}

std::string WidgetKitHelper::portfolioWidgetFamily() { return read(&WidgetPresence::portfolioWidgetFamily); }

void WidgetKitHelper::setPortfolioWidgetFamily(std::string value) {
    write(&WidgetPresence::portfolioWidgetFamily, std::move(value));
}

void WidgetKitHelper::getCurrentConfigurations() { queryPlacedWidgets(ProcessState::shared()); }

void WidgetKitHelper::reloadAllWidgets(std::optional<std::string_view> kind) {
    reloadWidgets(ProcessState::shared().runtime, kind);
}

void WidgetKitHelper::updatePortfolioArrayUserDefaults() {
    removeSavedPortfolioRows(ProcessState::shared().runtime);
}

}  // namespace extension
