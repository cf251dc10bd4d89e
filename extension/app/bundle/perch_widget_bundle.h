#pragma once

// The widgets that this extension offers, in the gallery's order.

#include <memory>
#include <string_view>
#include <vector>
#include "platform/runtime/runtime.h"
#include "platform/widget/widget.h"

namespace extension {

/// Any thread may ask the widgets; the bundle and `runtime` outlive their answers.
class PerchWidgetBundle {
public:
    explicit PerchWidgetBundle(const platform::Runtime& runtime);

    /// News, Perch, Portfolio.
    const std::vector<std::unique_ptr<platform::WidgetConfiguration>>& body() const { return widgets_; }
    /// Null when there is no widget of that kind.
    platform::WidgetConfiguration* widget(std::string_view kind) const;

private:
    std::vector<std::unique_ptr<platform::WidgetConfiguration>> widgets_;
};

}  // namespace extension
