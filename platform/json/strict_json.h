#pragma once

// Reading JSON documents of unknown origin by the rules of typed decoders: a member that is absent
// or null is absent, one of another type fails the whole document.

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include "platform/base/result.h"

namespace platform {

/// Parses a whole UTF-8 document of at most 50,000 values, at most 512 levels deep. Fails (domain
/// "JSONError") on anything behind it, on a NUL, on text that is no UTF-8 and on a number beyond a double.
/// Never throws; the message tells a place in the document and nothing of its content.
Result<nlohmann::json> parseStrictJson(std::string_view text);

/// The value when it is an object; an error that names `what` otherwise.
Result<void> requireObject(const nlohmann::json& value, std::string_view what);

/// The member of an object, null when it is absent or null.
const nlohmann::json* presentMember(const nlohmann::json& object, const char* key);

/// A member that must be a text when present.
Result<std::optional<std::string>> optionalText(const nlohmann::json& object, const char* key);

/// A member that must be a whole number within 64 bits when present: 12, 12.0 and 1.2e1 are 12.
Result<std::optional<std::int64_t>> optionalInteger(const nlohmann::json& object, const char* key);

}  // namespace platform
