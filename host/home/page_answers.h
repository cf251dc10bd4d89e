#pragma once

// How the page is answered: with JSON text, or with a refusal for people to read.

#include <nlohmann/json.hpp>
#include <string>
#include "platform/base/result.h"

namespace host {

inline tl::unexpected<platform::Error> refusal(std::string message) {
    return platform::failure("HomeScreenError", 1, std::move(message));
}

/// Bytes that are no UTF-8 are replaced.
inline std::string dumped(const nlohmann::ordered_json& value) {
    return value.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace host
