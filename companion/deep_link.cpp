#include "companion/deep_link.h"
#include <algorithm>
#include <array>

namespace companion {
namespace {

constexpr std::array<std::string_view, 13> parameterNames{
    "url",    "articleType", "storyId", "isArticle", "id",         "exchg",           "market",
    "ind_id", "sc_id",       "title",   "link_flag", "instrument", "positionSelected"};

bool isParameter(std::string_view piece) {
    const std::size_t equals = piece.find('=');
    return equals != std::string_view::npos &&
           std::ranges::find(parameterNames, piece.substr(0, equals)) != parameterNames.end();
}

}  // namespace

DeepLink parseDeepLink(std::string_view link) {
    const std::size_t scheme = link.find("://");
    if (scheme != std::string_view::npos) link.remove_prefix(scheme + 3);
    // A future of an unknown kind has its parameters without a "?".
    const std::size_t end = std::min(link.find('?'), link.find('&'));
    std::string_view destination = link.substr(0, end);
    if (destination.ends_with('/')) destination.remove_suffix(1);
    DeepLink parts{std::string(destination), {}};
    if (end == std::string_view::npos) return parts;

    link.remove_prefix(end + 1);
    for (;;) {
        const std::size_t ampersand = link.find('&');
        const std::string_view piece = link.substr(0, ampersand);
        if (isParameter(piece) || parts.parameters.empty()) {
            const std::size_t equals = std::min(piece.find('='), piece.size());
            parts.parameters.emplace_back(piece.substr(0, equals),
                                          piece.substr(std::min(equals + 1, piece.size())));
        } else {
            parts.parameters.back().second.append("&").append(piece);
        }
        if (ampersand == std::string_view::npos) return parts;
        link.remove_prefix(ampersand + 1);
    }
}

}  // namespace companion
