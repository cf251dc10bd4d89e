#include <algorithm>
#include "platform/base/ascii.h"
#include "serving/http_server.h"

namespace serving {

std::optional<std::string_view> Request::header(std::string_view name) const {
    for (const auto& [key, value] : headers) {
        if (platform::equalsIgnoringAsciiCase(key, name)) return value;
    }
    return std::nullopt;
}

bool Request::isMethod(std::string_view name) const {
    return platform::equalsIgnoringAsciiCase(method, name);
}

std::string percentDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool mayBeEscape = text[i] == '%' && i + 2 < text.size();
        const int high = mayBeEscape ? platform::hexDigit(text[i + 1]) : -1;
        const int low = mayBeEscape ? platform::hexDigit(text[i + 2]) : -1;
        const bool isEscape = high >= 0 && low >= 0;
        decoded += isEscape ? static_cast<char>(high * 16 + low) : text[i] == '+' ? ' ' : text[i];
        if (isEscape) i += 2;
    }
    return decoded;
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
