#include <charconv>
#include <cmath>
#include <limits>
#include "platform/base/ascii.h"
#include "platform/settings/user_defaults.h"

namespace platform {
namespace {

constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
constexpr auto largest = std::numeric_limits<std::int64_t>::max();

/// The integer at the start of the text, limited to 64 bits; 0 when the text does not start with an integer.
std::int64_t leadingInteger(std::string_view text) {
    text = trimmed(text, " \t\n\v\f\r");
    const bool isNegative = text.starts_with('-');
    if (text.starts_with("+-")) return 0;
    if (text.starts_with('+')) text.remove_prefix(1);
    std::int64_t value = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) return isNegative ? smallest : largest;
    return value;
}

std::int64_t wholePart(double real) {
    if (std::isnan(real)) return 0;
    if (real <= static_cast<double>(smallest)) return smallest;
    if (real >= static_cast<double>(largest)) return largest;
    return static_cast<std::int64_t>(real);
}

/// Judged by the first letter of "true", "yes" and the like, or by the first digit other than 0 of a number.
bool meansTrue(std::string_view text) {
    text = trimmed(text, " \t\n\v\f\r");
    if (text.empty()) return false;
    if (std::string_view("tTyY").find(text.front()) != std::string_view::npos) return true;
    if (text.front() == '+' || text.front() == '-') text.remove_prefix(1);
    const std::size_t first = text.find_first_not_of('0');
    return first != std::string_view::npos && text[first] >= '1' && text[first] <= '9';
}

}  // namespace

std::int64_t coercedInteger(const std::optional<PropertyList>& value) {
    if (!value) return 0;
    if (const bool* boolean = value->boolean()) return *boolean ? 1 : 0;
    if (const std::int64_t* integer = value->integer()) return *integer;
    if (const double* real = value->real()) return wholePart(*real);
    if (const std::string* text = value->text()) return leadingInteger(*text);
    return 0;
}

bool coercedBool(const std::optional<PropertyList>& value) {
    if (!value) return false;
    if (const bool* boolean = value->boolean()) return *boolean;
    if (const std::int64_t* integer = value->integer()) return *integer != 0;
    if (const double* real = value->real()) return *real != 0.0;
    if (const std::string* text = value->text()) return meansTrue(*text);
    return false;
}

std::optional<std::vector<PropertyList::Dictionary>> arrayOfDictionaries(
    const std::optional<PropertyList>& value) {
    if (!value || value->array() == nullptr) return std::nullopt;
    std::vector<PropertyList::Dictionary> dictionaries;
    dictionaries.reserve(value->array()->size());
    for (const PropertyList& element : *value->array()) {
        if (element.dictionary() == nullptr) return std::nullopt;
        dictionaries.push_back(*element.dictionary());
    }
    return dictionaries;
}

}  // namespace platform
