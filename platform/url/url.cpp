#include "platform/url/url.h"

#include <uriparser/Uri.h>

#include <algorithm>

namespace platform {
namespace {

std::string lowerCased(const UriTextRangeA& range) {
    std::string text(range.first, range.afterLast);
    std::ranges::transform(text, text.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

}  // namespace

std::optional<URL> URL::parse(std::string_view text) {
    // The library takes the empty text for an address.
    if (text.empty()) return std::nullopt;
    UriUriA parts;
    const char* errorPosition = nullptr;
    if (uriParseSingleUriExA(&parts, text.data(), text.data() + text.size(), &errorPosition) != URI_SUCCESS) {
        return std::nullopt;
    }
    URL url;
    url.text_ = text;
    if (parts.scheme.first != nullptr) url.scheme_ = lowerCased(parts.scheme);
    if (parts.hostText.first != nullptr) url.host_ = lowerCased(parts.hostText);
    uriFreeUriMembersA(&parts);
    return url;
}

}  // namespace platform
