#include "platform/text/letter_case.h"

#include <unicode/locid.h>
#include <unicode/unistr.h>
#include <algorithm>

namespace platform {
namespace {

bool isPlain(std::string_view text) {
    return std::ranges::all_of(text, [](unsigned char letter) { return letter < 0x80; });
}

char lowerCasedLetter(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

char upperCasedLetter(char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

icu::UnicodeString wide(std::string_view text) {
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())});
}

}  // namespace

std::string lowerCased(std::string_view text) {
    std::string lowered(text);
    if (isPlain(text)) {
        std::ranges::transform(lowered, lowered.begin(), lowerCasedLetter);
        return lowered;
    }
    lowered.clear();
    return wide(text).toLower(icu::Locale::getRoot()).toUTF8String(lowered);
}

std::string upperCased(std::string_view text) {
    std::string raised(text);
    if (isPlain(text)) {
        std::ranges::transform(raised, raised.begin(), upperCasedLetter);
        return raised;
    }
    raised.clear();
    return wide(text).toUpper(icu::Locale::getRoot()).toUTF8String(raised);
}

}  // namespace platform
