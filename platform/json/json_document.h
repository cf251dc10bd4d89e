#pragma once

// Whole JSON documents of unknown origin, as values.

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <string_view>
#include "platform/base/result.h"

namespace platform {

/// How much of a document is read before it is refused.
struct JSONLimits {
    /// Brackets inside brackets.
    std::size_t depth = 200;
    std::size_t values = 1'000'000;
    /// Of one object.
    std::size_t members = 1000;
};

/// Never throws. Errors (domain "JSONError") say what is wrong and where, and nothing that the document holds.
Result<nlohmann::ordered_json> parsedJson(std::string_view text, const JSONLimits& limits = {});

}  // namespace platform
