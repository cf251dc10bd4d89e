#include "companion/arguments.h"

#include <nlohmann/json.hpp>
#include <vector>
#include "extension/theme/theme.h"
#include "platform/base/ascii.h"
#include "platform/json/json_document.h"
#include "platform/settings/utf8.h"
#include "platform/text/number_formatter.h"
#include "platform/view/view_json.h"

namespace companion {
namespace {

using nlohmann::ordered_json;
using platform::Color;
using platform::Result;

tl::unexpected<platform::Error> noSuch(const std::string& text, std::string_view kind) {
    return platform::failure("UsageError", 0, "'" + text + "' is not a " + std::string(kind));
}

std::optional<Color> colorOf(const ordered_json& components) {
    std::vector<double> values;
    for (const ordered_json& component : components) {
        if (!component.is_number()) return std::nullopt;
        values.push_back(component.get<double>());
        if (!(values.back() >= 0.0 && values.back() <= 1.0)) return std::nullopt;
    }
    return extension::colorOfComponents(values);
}

}  // namespace

template <>
Result<std::string_view> readArgument(const std::string& text) {
    if (!platform::isUtf8(text)) return platform::failure("UsageError", 0, "a text is not UTF-8");
    return text;
}

template <>
Result<std::optional<std::string_view>> readArgument(const std::string& text) {
    if (text == "null") return std::nullopt;
    return readArgument<std::string_view>(text).map(
        [](std::string_view same) { return std::optional(same); });
}

template <>
Result<std::int64_t> readArgument(const std::string& text) {
    const auto number = platform::parsedNumber<std::int64_t>(text);
    return number ? *number : Result<std::int64_t>(noSuch(text, "whole number"));
}

template <>
Result<double> readArgument(const std::string& text) {
    double number = 0.0;
    if (!platform::parseDecimal(text, number)) return noSuch(text, "decimal number");
    return number;
}

template <>
Result<bool> readArgument(const std::string& text) {
    if (text != "true" && text != "false") return noSuch(text, "truth value (true or false)");
    return text == "true";
}

template <>
Result<Color> readArgument(const std::string& text) {
    const ordered_json json = platform::parsedJson(text).value_or(nullptr);
    if (json.is_object() && json.contains("components")) {
        const auto color = json["components"].is_array() ? colorOf(json["components"]) : std::nullopt;
        return color ? Result<Color>(*color)
                     : noSuch(text, "colour of zero, two or four components from 0 to 1");
    }
    const Result<Color> color = platform::colorFromJson(json);
    return color ? color : noSuch(text, R"(colour such as {"hex":"#1A1A22","alpha":1})");
}

}  // namespace companion
