#pragma once

// The commands that play the phone app, and those that ask a running home screen.

#include <string>
#include <vector>
#include "platform/base/result.h"
#include "platform/runtime/process_options.h"

namespace host {

/// Calls a published operation: `words` are its class, its selector and its arguments. Without words it lists
/// all operations; a single "-" reads one call per line from standard input until one fails.
platform::Result<void> callOperation(const platform::ProcessOptions& process,
                                     const std::vector<std::string>& words);

/// Signs a user of the demo service in, as the phone app would; "none" signs out. A running home screen asks
/// its own service; otherwise the information dictionary's web host is asked for its users.
platform::Result<void> signInUser(const platform::ProcessOptions& process, const std::string& name);

/// Prints what the running home screen recorded about a widget's last reload.
platform::Result<void> explainReloads(const platform::ProcessOptions& process, const std::string& kind);

/// Replaces this process by the demo service; returns only when that fails.
platform::Result<void> becomeDemo(int port);

}  // namespace host
