#pragma once

// What the page asks the home screen to do.

#include <nlohmann/json_fwd.hpp>
#include <string>
#include "host/home/home_screen.h"
#include "platform/base/result.h"

namespace host {

/// Does what the page asks: {"action": …} and what that needs. Errors are for people to read.
platform::Result<void> act(HomeScreen& home, const nlohmann::ordered_json& request);

/// Signs in as a user of the demo service, or out when the name is empty.
platform::Result<void> signIn(HomeScreen& home, const std::string& name);

}  // namespace host
