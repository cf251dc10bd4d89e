#include "companion/arguments.h"

#include <nlohmann/json.hpp>
#include <vector>
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

/// None, white and alpha, or red, green, blue and alpha.
std::optional<Color> colorOf(const ordered_json& components) {
    std::vector<double> values;
    for (const ordered_json& component : components) {
        if (!component.is_number()) return std::nullopt;
        values.push_back(component.get<double>());
        if (!(values.back() >= 0.0 && values.back() <= 1.0)) return std::nullopt;
    }
    switch (values.size()) {
        case 0: return Color();
        case 2: return Color::white(values[0], values[1]);
        case 4: return Color::rgb(values[0], values[1], values[2], values[3]);
        default: return std::nullopt;
    }
}

}  // namespace

Result<std::string_view> Argument<std::string_view>::read(const std::string& text) {
    if (!platform::isUtf8(text)) return platform::failure("UsageError", 0, "a text is not UTF-8");
    return text;
}

Result<std::optional<std::string_view>> Argument<std::optional<std::string_view>>::read(
    const std::string& text) {
    if (text == "null") return std::nullopt;
    return Argument<std::string_view>::read(text).map(
        [](std::string_view same) { return std::optional(same); });
}

Result<std::int64_t> Argument<std::int64_t>::read(const std::string& text) {
    const auto number = platform::parsedNumber<std::int64_t>(text);
    return number ? *number : Result<std::int64_t>(noSuch(text, "whole number"));
}

Result<double> Argument<double>::read(const std::string& text) {
    double number = 0.0;
    if (!platform::parseDecimal(text, number)) return noSuch(text, "decimal number");
    return number;
}

Result<bool> Argument<bool>::read(const std::string& text) {
    if (text != "true" && text != "false") return noSuch(text, "truth value (true or false)");
    return text == "true";
}

Result<Color> Argument<Color>::read(const std::string& text) {
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
