#pragma once

// How other processes reach a running widget host: a socket in the user's runtime directory that takes one
// question a connection and gives one answer, each in a frame; and the widget center that asks it.

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>
#include "platform/base/result.h"
#include "platform/base/serial_queue.h"
#include "platform/widget/widget_center.h"

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

// The questions of a WidgetCenter, as the host gets them.
inline constexpr std::string_view placedQuestion = "placed";
inline constexpr std::string_view reloadAllQuestion = "reload";
/// The kind follows.
inline constexpr std::string_view reloadQuestion = "reload ";

/// The answer to `placedQuestion`, and how it is read.
std::string placedText(const std::vector<PlacedWidget>& placed);
std::vector<PlacedWidget> placedFromText(std::string_view text);

/// Asks the host of one data directory. Calls return at once; the questions go out one after another on a
/// thread of the center, and `completion` is called there. Any thread.
class HostWidgetCenter final : public WidgetCenter {
public:
    explicit HostWidgetCenter(const std::filesystem::path& dataDirectory);
    /// Waits until the questions that were asked are answered, at most two seconds each.
    ~HostWidgetCenter() override;

    void reloadTimelines(std::string_view ofKind) override;
    void reloadAllTimelines() override;
    void getCurrentConfigurations(std::function<void(Result<std::vector<PlacedWidget>>)> completion) override;

private:
    void reload(std::string question);

    std::filesystem::path socket_;
    SerialQueue queue_;
};

}  // namespace platform
