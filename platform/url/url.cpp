#include "platform/url/url.h"

#include <uriparser/Uri.h>

#include "platform/base/ascii.h"

namespace platform {
namespace {

std::string lowerCased(const UriTextRangeA& range) { return asciiLowerCased({range.first, range.afterLast}); }

}  // namespace

std::optional<URL> URL::parse(std::string_view text) {
    // The library accepts the empty text as an address.
    if (text.empty()) return std::nullopt;
    UriUriA parts;
    const char* errorPosition = nullptr;
    if (uriParseSingleUriExA(&parts, text.data(), text.data() + text.size(), &errorPosition) != URI_SUCCESS)
        return std::nullopt;
    URL url;
    url.text_ = text;
    if (parts.scheme.first != nullptr) url.scheme_ = lowerCased(parts.scheme);
    if (parts.hostText.first != nullptr) url.host_ = lowerCased(parts.hostText);
    uriFreeUriMembersA(&parts);
    return url;
}

}  // namespace platform
