#include "host/paint/svg_names.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <unordered_map>

namespace host {
namespace {

// What comes before a name where it is defined or used.
constexpr std::array<std::string_view, 3> leads{"id=\"", "=\"#", "url(#"};

}  // namespace

std::string withRenumberedIds(std::string_view svg) {
    std::unordered_map<std::string_view, std::size_t> numbers;
    std::string renumbered;
    renumbered.reserve(svg.size());
    for (std::size_t place = 0; place < svg.size();) {
        const auto* lead = std::ranges::find_if(
            leads, [&](std::string_view candidate) { return svg.substr(place).starts_with(candidate); });
        if (lead == leads.end()) {
            renumbered += svg[place++];
            continue;
        }
        const std::size_t begin = place + lead->size();
        const std::size_t end = std::min(svg.find_first_of("\")", begin), svg.size());
        const std::size_t number =
            numbers.try_emplace(svg.substr(begin, end - begin), numbers.size()).first->second;
        renumbered.append(*lead).append("n").append(std::to_string(number));
        place = end;
    }
    return renumbered;
}

}  // namespace host
