#include "platform/text/number_formatter.h"

#include <unicode/uloc.h>
#include <unicode/unistr.h>
#include <unicode/unum.h>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <mutex>

namespace platform {
namespace {

struct CloseFormat {
    void operator()(UNumberFormat* format) const { unum_close(format); }
};
using Format = std::unique_ptr<UNumberFormat, CloseFormat>;

/// For an unknown locale the library uses its default one, which would come from the environment.
void fixDefaultLocale() {
    static std::once_flag once;
    std::call_once(once, [] {
        UErrorCode status = U_ZERO_ERROR;
        uloc_setDefault(Locale().identifier.c_str(), &status);
    });
}

/// The locale with the digits 0 to 9 instead of its own; empty when it is not a locale identifier.
std::string withLatinDigits(const Locale& locale) {
    std::array<char, ULOC_FULLNAME_CAPACITY> name{};
    if (locale.identifier.size() >= name.size()) return {};
    std::ranges::copy(locale.identifier, name.begin());
    UErrorCode status = U_ZERO_ERROR;
    uloc_setKeywordValue("numbers", "latn", name.data(), static_cast<std::int32_t>(name.size()), &status);
    return U_SUCCESS(status) ? name.data() : std::string();
}

Format makeFormat(const Locale& locale) {
    fixDefaultLocale();
    const std::string name = withLatinDigits(locale);
    UErrorCode status = U_ZERO_ERROR;
    Format format(unum_open(UNUM_DECIMAL, nullptr, 0, name.c_str(), nullptr, &status));
    if (name.empty() || U_FAILURE(status)) return nullptr;
    unum_setAttribute(format.get(), UNUM_FRACTION_DIGITS, 2);
    unum_setAttribute(format.get(), UNUM_ROUNDING_MODE, UNUM_ROUND_HALFEVEN);
    // Some languages write four digits without a separator; the platform's formatter does not follow them.
    unum_setAttribute(format.get(), UNUM_MINIMUM_GROUPING_DIGITS, 1);
    unum_setSymbol(format.get(), UNUM_DECIMAL_SEPARATOR_SYMBOL, u".", 1, &status);
    unum_setSymbol(format.get(), UNUM_GROUPING_SEPARATOR_SYMBOL, u",", 1, &status);
    // Some languages use a longer dash, or a direction mark before it.
    unum_setSymbol(format.get(), UNUM_MINUS_SIGN_SYMBOL, u"-", 1, &status);
    return U_SUCCESS(status) ? std::move(format) : nullptr;
}

/// Whether a decimal number that a double cannot hold is too large, and not too small, judged by the power of
/// ten of its first digit other than 0.
bool isTooLarge(std::string_view number) {
    const std::size_t mark = number.find_first_of("eE");
    const std::string_view digits = number.substr(0, mark);
    const auto point = static_cast<std::int64_t>(std::min(digits.find('.'), digits.size()));
    const auto first = static_cast<std::int64_t>(digits.find_first_of("123456789"));
    std::int64_t exponent = 0;
    if (mark != std::string_view::npos) {
        std::string_view text = number.substr(mark + 1);
        if (text.starts_with('+')) text.remove_prefix(1);
        const auto read = std::from_chars(text.data(), text.data() + text.size(), exponent);
        if (read.ec != std::errc()) return !text.starts_with('-');
    }
    // Beyond the reach of any digits, but small enough for the sum to fit into the type.
    constexpr std::int64_t farthest = std::int64_t{1} << 60;
    return point - first + std::clamp(exponent, -farthest, farthest) > 0;
}

}  // namespace

struct NumberFormatter::Implementation {
    Format format;
};

NumberFormatter::NumberFormatter(const Locale& locale)
    : implementation_(std::make_unique<Implementation>(Implementation{makeFormat(locale)})) {
    // The library compiles a format when it is first used; afterwards it only reads it.
    for (int i = 0; i < 4; ++i) twoDecimals(1234567.891);
}

NumberFormatter::~NumberFormatter() = default;

std::string NumberFormatter::twoDecimals(double value) const {
    if (!implementation_->format || !std::isfinite(value)) return {};
    // 309 digits with a separator after every second one, and some for the sign and the decimals.
    std::array<char16_t, 512> text{};
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length = unum_formatDouble(implementation_->format.get(), value, text.data(),
                                                  static_cast<std::int32_t>(text.size()), nullptr, &status);
    std::string bytes;
    if (U_SUCCESS(status)) icu::UnicodeString(text.data(), length).toUTF8String(bytes);
    return bytes;
}

bool parseDecimal(std::string_view text, double& value) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return false;
    }
    // These would be read as numbers: "inf" and "nan".
    if (text.find_first_not_of("0123456789+-.eE") != std::string_view::npos) return false;

    double number = 0.0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    if (read.ec == std::errc::invalid_argument || read.ptr != text.data() + text.size()) return false;
    if (read.ec == std::errc::result_out_of_range) {
        const bool isNegative = text.starts_with('-');
        if (isTooLarge(isNegative ? text.substr(1) : text)) return false;
        number = isNegative ? -0.0 : 0.0;
    }
    if (!std::isfinite(number)) return false;
    value = number;
    return true;
}

}  // namespace platform
