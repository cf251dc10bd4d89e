#include "companion/chosen_assets.h"
#include <string_view>

namespace companion {

namespace {

/// Empty when there is no such field.
std::string fieldOf(const platform::PropertyList& asset, std::string_view name) {
    const auto* fields = asset.dictionary();
    if (fields == nullptr) return "";
    const auto found = fields->find(name);
    return found != fields->end() && found->second.text() != nullptr ? *found->second.text() : "";
}

}  // namespace

std::string keyOf(const platform::PropertyList& asset) {
    const std::string identifier = fieldOf(asset, "priceIdentifier");
    return identifier.empty() ? fieldOf(asset, "title") : identifier;
}

std::string titleOf(const platform::PropertyList& asset) {
    const std::string title = fieldOf(asset, "title");
    return title.empty() ? keyOf(asset) : title;
}

}  // namespace companion
