#pragma once

// The states in which the gallery shows the widgets.

#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include "companion/user_choices.h"
#include "host/process/extension_process.h"

namespace host {

struct GalleryState {
    /// Part of a file's name.
    std::string name;
    /// For people.
    std::string title;
    /// What the demo service answers.
    std::string scene;
    /// Of the kinds that have such a state.
    std::vector<std::string_view> kinds;
    EntryRequest request = EntryRequest::timeline;
    companion::ChosenAssets assets = {};
    bool isSignedIn = true;
    /// Absent: the version that the gallery is drawn for.
    std::optional<int> osVersion = {};
};

/// In the order in which they are shown.
std::vector<GalleryState> galleryStates();

}  // namespace host
