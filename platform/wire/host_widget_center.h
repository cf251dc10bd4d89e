#pragma once

// The way to a running widget host from another process.

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>
#include "platform/base/result.h"
#include "platform/base/serial_queue.h"
#include "platform/widget/widget_center.h"

namespace platform {

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
