#pragma once

// How other processes reach a running widget host: a socket in the user's runtime directory that takes one
// question a connection and gives one answer, each in a frame.

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include "platform/base/result.h"

namespace platform {

/// The time that a whole exchange with a host may take.
inline constexpr std::chrono::seconds hostExchangeLimit{2};

/// Where the host that shows the widgets of this data directory listens: one socket per data directory, in
/// a folder that only the user can enter ($XDG_RUNTIME_DIR, or below /tmp).
std::filesystem::path hostSocketPath(const std::filesystem::path& dataDirectory);

/// Asks the host one question and waits for its answer. Errors (domain "WidgetCenterError"): no host is
/// running, it did not answer in time, or it refused, with its words as the message. `limit` counts for
/// connecting, asking and answering together.
Result<std::string> askHost(const std::filesystem::path& socket, std::string_view question,
                            std::chrono::milliseconds limit);

/// A host's answer as it travels; `askHost` takes it apart.
std::string hostAnswer(const Result<std::string>& answer);

}  // namespace platform
