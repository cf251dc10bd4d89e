#include <algorithm>
#include "platform/base/ascii.h"
#include "serving/http_server.h"

namespace serving {

namespace {

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return platform::asciiLowerCased(a) == platform::asciiLowerCased(b);
}

}  // namespace

std::optional<std::string_view> Request::header(std::string_view name) const {
    for (const auto& [key, value] : headers) {
        if (equalsIgnoringCase(key, name)) return value;
    }
    return std::nullopt;
}

bool Request::isMethod(std::string_view name) const { return equalsIgnoringCase(method, name); }

std::string percentDecoded(std::string_view text) {
    std::string blanks(text);
    std::ranges::replace(blanks, '+', ' ');
    return platform::percentDecoded(blanks);
}

std::optional<std::string> queryValue(std::string_view query, std::string_view name) {
    while (!query.empty()) {
        const std::string_view pair = query.substr(0, query.find('&'));
        query.remove_prefix(std::min(query.size(), pair.size() + 1));
        const std::size_t equals = pair.find('=');
        if (percentDecoded(pair.substr(0, equals)) != name) continue;
        return equals == std::string_view::npos ? "" : percentDecoded(pair.substr(equals + 1));
    }
    return std::nullopt;
}

}  // namespace serving
