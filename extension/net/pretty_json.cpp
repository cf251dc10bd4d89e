#include "extension/net/pretty_json.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace extension {
namespace {

using nlohmann::json;

void append(std::string& text, const json& value, int level);

/// Throws for what JSON cannot express.
void appendLeaf(std::string& text, const json& value) {
    const bool isEndless = value.is_number_float() && !std::isfinite(value.get<double>());
    if (isEndless || value.is_binary() || value.is_discarded()) throw std::domain_error("not a JSON value");
    for (const char c : value.dump()) {
        if (c == '/') text += '\\';
        text += c;
    }
}

void appendMembers(std::string& text, const json& value, int level) {
    const auto newLine = [&](int indent) {
        text.append("\n").append(static_cast<std::size_t>(indent) * 2, ' ');
    };
    if (value.empty()) {
        text += '\n';
        newLine(level);
        return;
    }
    bool isFirst = true;
    for (const auto& [key, member] : value.items()) {
        if (!isFirst) text += ',';
        isFirst = false;
        newLine(level + 1);
        if (value.is_object()) {
            appendLeaf(text, key);
            text += " : ";
        }
        append(text, member, level + 1);
    }
    newLine(level);
}

void append(std::string& text, const json& value, int level) {
    if (!value.is_structured()) return appendLeaf(text, value);
    text += value.is_object() ? '{' : '[';
    appendMembers(text, value, level);
    text += value.is_object() ? '}' : ']';
}

}  // namespace

std::optional<std::string> prettyPrintedJson(const nlohmann::json& value) {
    if (!value.is_structured()) return std::nullopt;
    try {
        std::string text;
        append(text, value, 0);
        return text;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

}  // namespace extension
