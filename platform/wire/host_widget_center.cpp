#include "platform/wire/host_widget_center.h"

#include <utility>
#include "platform/wire/host_channel.h"

namespace platform {

// One widget a line: its kind, a tab, and its family, which may be missing.

std::string placedText(const std::vector<PlacedWidget>& placed) {
    std::string text;
    for (const PlacedWidget& widget : placed)
        text += widget.kind + '\t' + (widget.family ? std::string(description(*widget.family)) : "") + '\n';
    return text;
}

std::vector<PlacedWidget> placedFromText(std::string_view text) {
    std::vector<PlacedWidget> placed;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        const std::size_t tab = std::min(line.find('\t'), line.size());
        if (tab > 0)
            placed.push_back({std::string(line.substr(0, tab)),
                              widgetFamily(line.substr(std::min(tab + 1, line.size())))});
    }
    return placed;
}

HostWidgetCenter::HostWidgetCenter(const std::filesystem::path& dataDirectory)
    : socket_(hostSocketPath(dataDirectory)) {}

HostWidgetCenter::~HostWidgetCenter() { queue_.finish(); }

void HostWidgetCenter::reloadTimelines(std::string_view ofKind) {
    reload(std::string(reloadQuestion) + std::string(ofKind));
}

void HostWidgetCenter::reloadAllTimelines() { reload(std::string(reloadAllQuestion)); }

void HostWidgetCenter::reload(std::string question) {
    queue_.add([this, question = std::move(question)] {
        // Without a running host there is nothing to reload.
        static_cast<void>(askHost(socket_, question, hostExchangeLimit));
    });
}

void HostWidgetCenter::getCurrentConfigurations(
    std::function<void(Result<std::vector<PlacedWidget>>)> completion) {
    queue_.add([this, completion = std::move(completion)] {
        completion(askHost(socket_, placedQuestion, hostExchangeLimit).map([](const std::string& text) {
            return placedFromText(text);
        }));
    });
}

}  // namespace platform
