#include "platform/json/strict_json.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace platform {
namespace {

using nlohmann::json;

constexpr int deepestLevel = 512;
/// A parsed value costs many times what it takes in the text: "[]," alone makes 16 bytes and more of 3.
constexpr int mostValues = 50'000;

tl::unexpected<Error> jsonFailure(std::string message) { return failure("JSONError", 1, std::move(message)); }

tl::unexpected<Error> wrongType(const char* key, const char* expected) {
    return jsonFailure("\"" + std::string(key) + "\" is no " + expected);
}

/// Thrown out of the parser's callback, which has no other way to stop it.
struct TooDeep {};
struct TooMany {};

}  // namespace

Result<json> parseStrictJson(std::string_view text) {
    // The parser takes a NUL for the end of the document and would not see what stands behind it.
    if (text.find('\0') != std::string_view::npos) return jsonFailure("a NUL is no part of a document");
    int values = 0;
    const json::parser_callback_t stopInTime = [&values](int depth, json::parse_event_t event, json&) {
        using Event = json::parse_event_t;
        const bool opens = event == Event::object_start || event == Event::array_start;
        if (opens && depth >= deepestLevel) throw TooDeep();
        if ((opens || event == Event::value) && ++values > mostValues) throw TooMany();
        return true;
    };
    try {
        return json::parse(text, stopInTime);
    } catch (const json::parse_error& error) {
        return jsonFailure("not a JSON document, at byte " + std::to_string(error.byte));
    } catch (const json::exception&) {
        return jsonFailure("a number is out of range");
    } catch (const TooDeep&) {
        return jsonFailure("more than 512 levels deep");
    } catch (const TooMany&) {
        return jsonFailure("more than 50,000 values");
    }
}

Result<void> requireObject(const json& value, std::string_view what) {
    if (!value.is_object()) return jsonFailure(std::string(what) + " is no object");
    return {};
}

const json* presentMember(const json& object, const char* key) {
    const auto member = object.find(key);
    return member == object.end() || member->is_null() ? nullptr : &*member;
}

Result<std::optional<std::string>> optionalText(const json& object, const char* key) {
    const json* member = presentMember(object, key);
    if (member == nullptr) return std::nullopt;
    if (!member->is_string()) return wrongType(key, "text");
    return member->get<std::string>();
}

Result<std::optional<std::int64_t>> optionalInteger(const json& object, const char* key) {
    const json* member = presentMember(object, key);
    if (member == nullptr) return std::nullopt;
    if (member->is_number_unsigned()) {
        const auto number = member->get<std::uint64_t>();
        if (number > static_cast<std::uint64_t>(INT64_MAX)) return wrongType(key, "64-bit integer");
        return static_cast<std::int64_t>(number);
    }
    if (member->is_number_integer()) return member->get<std::int64_t>();
    if (!member->is_number_float()) return wrongType(key, "integer");
    const auto number = member->get<double>();
    // 2^63 is no signed integer any more; -2^63 is what numbers below it round to.
    constexpr double limit = 9223372036854775808.0;
    if (std::trunc(number) != number || number <= -limit || number >= limit) return wrongType(key, "integer");
    return static_cast<std::int64_t>(number);
}

}  // namespace platform
