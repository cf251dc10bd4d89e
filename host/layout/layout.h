#pragma once

// Gives every view of a tree its frame, by the platform's rules of proposals and answers, and lists what is
// to be painted and where it can be tapped.

#include <nlohmann/json_fwd.hpp>
#include <string>
#include "host/layout/display_list.h"
#include "host/layout/measurer.h"
#include "platform/view/view.h"

namespace host {

/// In points.
inline constexpr double contentMargin = 16.0;

struct LayoutOptions {
    platform::Size size;
    /// From 17 on, links are honoured in the small family too and the container's background is the
    /// system's; `family` decides about links before that.
    int osVersion = 18;
    std::string kind;
    std::string family;
    /// Texts become bars and images grey boxes; nothing is tappable.
    bool isRedacted = false;
    /// From version 17 on, a widget that does not set this has `contentMargin` on every side. A tree that
    /// does not come from a widget has no margins.
    bool contentMarginsDisabled = true;
};

/// Lays the tree out as the root of a widget of the given size and lists what is to be painted. Text
/// that names no colour takes black or white, by the luminance of the container's background. Never fails:
/// what cannot be shown takes no place.
DisplayList makeDisplayList(const platform::View& root, const LayoutOptions& options,
                            const Measurer& measurer);

/// The tree as JSON with a "frame" in every node.
nlohmann::ordered_json laidOutJson(const platform::View& root, const LayoutOptions& options,
                                   const Measurer& measurer);

}  // namespace host
