#include "extension/widgets/portfolio/model/pw_api_error.h"

#include <array>
#include <nlohmann/json.hpp>
#include <string>

namespace extension {
namespace {

constexpr std::array allStates{PWAPIError::success, PWAPIError::failed, PWAPIError::nonLogin,
                               PWAPIError::noPortfolio};

tl::unexpected<platform::Error> decodingFailure(std::string message) {
    return platform::failure("DecodingError", 1, std::move(message));
}

}  // namespace

std::string_view caseName(PWAPIError state) {
    switch (state) {
        case PWAPIError::success: return "success";
        case PWAPIError::failed: return "failed";
        case PWAPIError::nonLogin: return "nonLogin";
        case PWAPIError::noPortfolio: return "noPortfolio";
    }
    return "";
}

nlohmann::ordered_json encodedState(PWAPIError state) {
    return {{std::string(caseName(state)), nlohmann::ordered_json::object()}};
}

platform::Result<PWAPIError> decodeState(const nlohmann::json& json) {
    if (!json.is_object()) return decodingFailure("A state is an object.");
    if (json.size() != 1) return decodingFailure("Invalid number of keys found, expected one.");
    const std::string& name = json.begin().key();
    for (const PWAPIError state : allStates) {
        if (caseName(state) != name) continue;
        if (!json.begin().value().is_object()) return decodingFailure("A case's value is an object.");
        return state;
    }
    return decodingFailure("Unknown case \"" + name + "\".");
}

}  // namespace extension
