#include "host/gallery/sheet_page.h"

#include <nlohmann/json.hpp>
#include <string_view>
#include "host/paint/widget_outline.h"

namespace host {

std::string sheetPage(std::string page, nlohmann::ordered_json data, const platform::Screen& screen) {
    for (const platform::WidgetFamily family : platform::allWidgetFamilies) {
        const platform::Size size = screen.widgetSize(family);
        data["families"][std::string(description(family))] = {
            {"width", size.width}, {"height", size.height}, {"outline", widgetOutline(size)}};
    }
    std::string text = data.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    // Only texts hold this character, and the page's parser would take some of them for an element.
    for (std::size_t place = 0; (place = text.find('<', place)) != std::string::npos;)
        text.replace(place, 1, "\\u003c");
    constexpr std::string_view mark = "{{data}}";
    return page.replace(page.find(mark), mark.size(), text);
}

}  // namespace host
