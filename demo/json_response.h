#pragma once

// How the service and its scenes answer with JSON.

#include <nlohmann/json.hpp>
#include "serving/http_server.h"

namespace demo {

inline serving::Response jsonResponse(const nlohmann::ordered_json& json, int status = 200) {
    return {.status = status, .contentType = "application/json", .body = platform::Bytes(json.dump())};
}

}  // namespace demo
