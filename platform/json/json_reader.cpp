#include "platform/json/json_reader.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>
#include "platform/base/ascii.h"
#include "platform/settings/utf8.h"

namespace platform {
namespace {

constexpr int deepestLevel = 512;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// How many bytes the next character of a text takes as it is written; 0 when it may not be in one.
std::size_t characterLength(std::string_view rest) {
    if (rest[0] != '\\') return static_cast<unsigned char>(rest[0]) < 0x20 ? 0 : 1;
    if (rest.size() < 2) return 0;
    if (rest[1] != 'u') return std::string_view("\"\\/bfnrt").find(rest[1]) == std::string_view::npos ? 0 : 2;
    const std::string_view digits = rest.substr(2, 4);
    return digits.size() == 4 && std::ranges::all_of(digits, [](char c) { return hexDigit(c) >= 0; }) ? 6 : 0;
}

/// Nothing when an escape is half a surrogate pair.
std::optional<std::string> unescaped(std::string_view raw) {
    if (raw.find('\\') == std::string_view::npos) return std::string(raw);
    const auto text = nlohmann::json::parse('"' + std::string(raw) + '"', nullptr, false);
    return text.is_string() ? std::optional(text.get<std::string>()) : std::nullopt;
}

}  // namespace

JSONReader::JSONReader(std::string_view document) : document_(document), rest_(document) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (rest_.starts_with(byteOrderMark)) rest_.remove_prefix(byteOrderMark.size());
    if (!isUtf8(document)) fail("the document is not UTF-8");
}

void JSONReader::object(const std::function<void(std::string_view)>& member) {
    items('{', '}', "an object", [&] {
        next();
        const std::string_view raw = rawText();
        // A key that is not a text matches no name that anybody asks for.
        const std::string key = unescaped(raw).value_or(std::string(raw));
        if (!take(':')) return breakOff();
        name_ = "\"" + key + "\"";
        member(key);
    });
}

void JSONReader::array(const std::function<void()>& element) {
    const std::string name = "an element of " + name_;
    items('[', ']', "an array", [&] {
        name_ = name;
        element();
    });
}

bool JSONReader::null() {
    if (next() != 'n') return false;
    literal("null");
    return true;
}

std::string JSONReader::text() {
    if (next() != '"') return wrongType("a text"), std::string();
    std::optional<std::string> text = unescaped(rawText());
    if (!text) breakOff();
    return std::move(text).value_or("");
}

bool JSONReader::boolean() {
    const char first = next();
    if (first != 't' && first != 'f') return wrongType("a boolean"), false;
    literal(first == 't' ? "true" : "false");
    return first == 't';
}

std::int64_t JSONReader::integer() {
    constexpr const char* type = "a 64-bit integer";
    if (next() != '-' && !isDigit(next())) return wrongType(type), 0;
    const std::string digits(rawNumber());
    if (const auto whole = parsedNumber<std::int64_t>(digits)) return *whole;
    const double number = std::strtod(digits.c_str(), nullptr);
    // 2^63 is one too many; -2^63 is also what smaller numbers are rounded to.
    constexpr double limit = 9223372036854775808.0;
    if (std::trunc(number) != number || number <= -limit || number >= limit) fail(name_ + " is not " + type);
    return fault_ ? static_cast<std::int64_t>(number) : 0;
}

void JSONReader::skip() {
    switch (next()) {
        case '{': return object([this](std::string_view) { skip(); });
        case '[': return array([this] { skip(); });
        case '"': return static_cast<void>(rawText());
        case 't': return literal("true");
        case 'f': return literal("false");
        case 'n': return literal("null");
        default: rawNumber();
    }
}

void JSONReader::fail(std::string message) {
    if (fault_) fault_ = failure("JSONError", 1, std::move(message));
    rest_ = {};
}

Result<void> JSONReader::finish() {
    next();
    if (!rest_.empty()) breakOff();
    return fault_;
}

void JSONReader::items(char open, char close, const char* type, const std::function<void()>& item) {
    if (!take(open)) return wrongType(type);
    if (++depth_ > deepestLevel) return fail("more than 512 levels deep");
    if (!take(close)) {
        do item();
        while (take(','));
        if (!take(close)) breakOff();
    }
    --depth_;
}

/// The text as it is written between its quotes.
std::string_view JSONReader::rawText() {
    if (!rest_.starts_with('"')) return breakOff(), std::string_view();
    rest_.remove_prefix(1);
    std::size_t end = 0;
    while (end < rest_.size() && rest_[end] != '"') {
        const std::size_t length = characterLength(rest_.substr(end));
        if (length == 0) break;
        end += length;
    }
    const std::string_view text = rest_.substr(0, end);
    rest_.remove_prefix(end);
    if (!rest_.starts_with('"')) return breakOff(), std::string_view();
    rest_.remove_prefix(1);
    return text;
}

std::string_view JSONReader::rawNumber() {
    const std::string_view start = rest_;
    const auto takeOne = [this](std::string_view wanted) {
        const bool isThere = !rest_.empty() && wanted.find(rest_[0]) != std::string_view::npos;
        if (isThere) rest_.remove_prefix(1);
        return isThere;
    };
    const auto takeDigits = [this] {
        const auto end = std::ranges::find_if_not(rest_, isDigit);
        if (end == rest_.begin()) return breakOff();
        rest_.remove_prefix(static_cast<std::size_t>(end - rest_.begin()));
    };
    takeOne("-");
    if (!takeOne("0")) takeDigits();
    if (takeOne(".")) takeDigits();
    if (takeOne("eE")) {
        takeOne("+-");
        takeDigits();
    }
    return start.substr(0, start.size() - rest_.size());
}

void JSONReader::literal(std::string_view word) {
    if (!rest_.starts_with(word)) return breakOff();
    rest_.remove_prefix(word.size());
}

/// The first character after blanks; NUL at the end.
char JSONReader::next() {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size()));
    return rest_.empty() ? '\0' : rest_[0];
}

bool JSONReader::take(char wanted) {
    if (next() != wanted || rest_.empty()) return false;
    rest_.remove_prefix(1);
    return true;
}

void JSONReader::breakOff() {
    fail("not a JSON document, at byte " + std::to_string(document_.size() - rest_.size() + 1));
}

void JSONReader::wrongType(const char* expected) {
    const bool isValue = std::string_view("{[\"-0123456789tfn").find(next()) != std::string_view::npos;
    if (!isValue) return breakOff();
    fail(name_ + " is not " + expected);
}

}  // namespace platform
