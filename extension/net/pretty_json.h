#pragma once

// JSON text as the phone's serializer prints it for people.

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace extension {

/// Two blanks a level, " : " between key and value, "/" as "\/". Nothing when `value` is neither an object
/// nor an array, or holds what JSON cannot express: a number that is not finite, text that is not UTF-8,
/// bytes.
std::optional<std::string> prettyPrintedJson(const nlohmann::json& value);

}  // namespace extension
