#pragma once

// What a host must know of the extension: the name of the settings store that the phone app shares with it,
// and the times of day at which its widgets change what they show or when they ask.

#include "extension/app/settings/reload_times.h"
#include "extension/app/settings/store_keys.h"

namespace companion {

inline constexpr std::string_view sharedSuite = extension::keys::GROUP_TODAY_EXTENSION;

using extension::dayBegins;
using extension::dayEnds;
using extension::marketCloses;
using extension::marketOpens;

}  // namespace companion
