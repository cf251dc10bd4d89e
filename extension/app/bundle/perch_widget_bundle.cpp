#include "extension/app/bundle/perch_widget_bundle.h"

#include "extension/app/bundle/widgets.h"

namespace extension {

PerchWidgetBundle::PerchWidgetBundle(const platform::Runtime& runtime) {
    widgets_.push_back(NewsWidget{}.body(runtime));
    widgets_.push_back(PerchWidget{}.body(runtime));
    widgets_.push_back(PortfolioWidget{}.body(runtime));
}

platform::WidgetConfiguration* PerchWidgetBundle::widget(std::string_view kind) const {
    for (const auto& candidate : widgets_) {
        if (candidate->description().kind == kind) return candidate.get();
    }
    return nullptr;
}

}  // namespace extension
