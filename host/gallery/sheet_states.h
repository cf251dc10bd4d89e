#pragma once

// The states in which the sheet shows the widgets.

#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include "companion/user_choices.h"
#include "host/process/extension_process.h"

namespace host {

struct SheetState {
    /// Part of the file names of its pictures.
    std::string name;
    /// Shown above its pictures.
    std::string title;
    /// Which scene of the demo service answers the extension, see demo/scenes.h.
    std::string scene;
    /// The widgets that have this state.
    std::vector<std::string_view> kinds;
    EntryRequest request = EntryRequest::timeline;
    companion::ChosenAssets assets = {};
    bool isSignedIn = true;
    /// Absent: the version for which the whole sheet is drawn.
    std::optional<int> osVersion = {};
};

/// In the order in which they are shown.
std::vector<SheetState> sheetStates();

}  // namespace host
