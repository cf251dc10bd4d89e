#pragma once

// What other processes ask a running home screen, from both ends.

#include <filesystem>
#include <string>
#include <string_view>
#include "host/home/home_screen.h"
#include "platform/base/result.h"

namespace host {

/// Answers a question of another process: those below and those of a WidgetCenter.
platform::Result<std::string> answerQuestion(HomeScreen& home, std::string_view question);

// Asking. `socket` is the host's (platform::hostSocketPath); errors are those of platform::askHost.

bool isHostRunning(const std::filesystem::path& socket);
/// The latest lines of the ledger about the widgets of that kind.
platform::Result<std::string> askWhy(const std::filesystem::path& socket, const std::string& kind);
/// Signs in as a user of the host's demo service, or out when the name is empty.
platform::Result<void> askToSignIn(const std::filesystem::path& socket, const std::string& name);

}  // namespace host
