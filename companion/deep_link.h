#pragma once

// What the phone app would make of a link: its destination and parameters, for people to read.

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace companion {

struct DeepLink {
    /// Such as "stock" or "openPortfolio".
    std::string destination;
    /// In the order of the link.
    std::vector<std::pair<std::string, std::string>> parameters;

    bool operator==(const DeepLink&) const = default;
};

/// Takes a link apart. Values stand in our links as they came, so that a story's own address may hold
/// "&" and "?": what follows a name that is none of ours belongs to the value before it.
DeepLink parseDeepLink(std::string_view link);

}  // namespace companion
