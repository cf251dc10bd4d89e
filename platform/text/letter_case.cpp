#include "platform/text/letter_case.h"

#include <unicode/locid.h>
#include <unicode/unistr.h>
#include <algorithm>
#include "platform/base/ascii.h"

namespace platform {
namespace {

bool isPlain(std::string_view text) {
    return std::ranges::all_of(text, [](unsigned char letter) { return letter < 0x80; });
}

icu::UnicodeString wide(std::string_view text) {
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())});
}

}  // namespace

std::string lowerCased(std::string_view text) {
    if (isPlain(text)) return asciiLowerCased(text);
    std::string lowered;
    return wide(text).toLower(icu::Locale::getRoot()).toUTF8String(lowered);
}

std::string upperCased(std::string_view text) {
    std::string raised;
    return wide(text).toUpper(icu::Locale::getRoot()).toUTF8String(raised);
}

}  // namespace platform
