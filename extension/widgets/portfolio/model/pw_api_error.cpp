#include "extension/widgets/portfolio/model/pw_api_error.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <string>

namespace extension {
namespace {

struct Case {
    const char* name;
    const char* message;
};

/// In the order of the enumeration.
constexpr std::array<Case, 4> cases{{{"success", "the portfolio is there"},
                                     {"failed", "the service gave no usable answer"},
                                     {"nonLogin", "nobody is signed in"},
                                     {"noPortfolio", "nothing is invested"}}};

tl::unexpected<platform::Error> decodingFailure(std::string message) {
    return platform::failure("DecodingError", 1, std::move(message));
}

}  // namespace

std::string_view caseName(PWAPIError state) { return cases[static_cast<std::size_t>(state)].name; }

platform::Error errorOf(PWAPIError state) {
    return {"PWAPIError", static_cast<int>(state), cases[static_cast<std::size_t>(state)].message};
}

nlohmann::ordered_json encodedState(PWAPIError state) {
    return {{std::string(caseName(state)), nlohmann::ordered_json::object()}};
}

platform::Result<PWAPIError> decodeState(const nlohmann::json& json) {
    if (!json.is_object()) return decodingFailure("the state is not an object");
    // Word for word what others look for, full stop included.
    if (json.size() != 1) return decodingFailure("Invalid number of keys found, expected one.");
    const auto* const found = std::ranges::find(cases, json.begin().key(), &Case::name);
    if (found == cases.end()) return decodingFailure("the state is unknown");
    if (!json.begin().value().is_object()) return decodingFailure("the value of the state is not an object");
    return static_cast<PWAPIError>(found - cases.begin());
}

}  // namespace extension
