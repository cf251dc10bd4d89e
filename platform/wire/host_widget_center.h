#pragma once

// The way to a running widget host from another process: a socket in the user's runtime directory.

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include "platform/base/result.h"
#include "platform/widget/widget_center.h"

namespace platform {

/// Where the host that shows the widgets of this data directory listens: one socket a data directory, in
/// a folder of the user's own ($XDG_RUNTIME_DIR, or below the system's temporary folder).
std::filesystem::path hostSocketPath(const std::filesystem::path& dataDirectory);

/// Asks the host one question and waits for its answer. Errors (domain "WidgetCenterError"): no host
/// is running, it did not answer in time, or it refused, with its words as the message.
///
/// Questions are short texts: "reload", "reload KIND", "placed" (one "KIND FAMILY" a line),
/// "user NAME" or "user none", and "why KIND". An answer begins with "ok\n" or "error\n".
Result<std::string> askHost(const std::filesystem::path& socket, std::string_view question,
                            std::chrono::milliseconds limit);

/// The host's end of one connection: reads a question, lets `answer` make its whole answer and writes it.
/// False when the other side has gone or sent what is no frame (more than 16 MiB).
bool answerOneQuestion(int connection, const std::function<std::string(std::string_view)>& answer);

/// Speaks to the host of one data directory, anew with each call. Any thread.
class HostWidgetCenter final : public WidgetCenter {
public:
    explicit HostWidgetCenter(const std::filesystem::path& dataDirectory);

    void reloadTimelines(std::string_view ofKind) override;
    void reloadAllTimelines() override;
    /// Completes before it returns.
    void getCurrentConfigurations(std::function<void(Result<std::vector<PlacedWidget>>)> completion) override;

private:
    std::filesystem::path socket_;
};

}  // namespace platform
