#pragma once

// A stack that is a row in its compact form and a column in its full one.

#include <concepts>
#include <optional>
#include <type_traits>
#include <vector>
#include "platform/view/view.h"

namespace extension {

/// Mind the direction: compact is side by side. `content` makes the children; the element is a
/// single view either way. For other widgets; nothing here uses it.
template <typename Content>
    requires std::convertible_to<std::invoke_result_t<const Content&>, std::vector<platform::View>>
struct DynamicStack {
    platform::HorizontalAlignment horizontalAlignment = platform::HorizontalAlignment::center;
    platform::VerticalAlignment verticalAlignment = platform::VerticalAlignment::center;
    /// Absent: the platform's default spacing.
    std::optional<double> spacing = std::nullopt;
    bool isCompact = false;
    Content content;

    platform::View body() const {
        return platform::Group(
            {isCompact
                 ? platform::HStack({.alignment = verticalAlignment, .spacing = spacing}, content())
                 : platform::VStack({.alignment = horizontalAlignment, .spacing = spacing}, content())});
    }
};

}  // namespace extension
