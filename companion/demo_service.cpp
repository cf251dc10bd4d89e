#include "companion/demo_service.h"
#include <chrono>
#include <nlohmann/json.hpp>
#include <utility>
#include "platform/json/json_document.h"

namespace companion {
namespace {

using json = nlohmann::ordered_json;
using platform::PropertyList;
using platform::Result;

tl::unexpected<platform::Error> demoError(std::string message) {
    return platform::failure("DemoError", 1, std::move(message));
}

DemoUser userOf(const json& user) {
    return {user.at("name"),
            user.at("description"),
            {user.at("token"), user.at("userId"), user.at("userPortfolio")}};
}

DemoAsset assetOf(const json& asset) {
    PropertyList::Dictionary record;
    for (const auto& [key, value] : asset.items()) record.emplace(key, value.get<std::string>());
    return {asset.at("type"), asset.at("priceIdentifier"), asset.at("title"), std::move(record)};
}

/// A list of objects, each read by `itemOf`, which throws for one that does not fit.
template <typename Item>
Result<std::vector<Item>> listOf(const Result<std::string>& text, Item (*itemOf)(const json&)) {
    if (!text) return tl::unexpected(text.error());
    std::vector<Item> items;
    try {
        const json list = platform::parsedJson(*text).value_or(nullptr);
        if (!list.is_array()) return demoError("the demo service's answer is not a list");
        for (const json& item : list) items.push_back(itemOf(item));
    } catch (const json::exception&) {
        return demoError("the demo service's list cannot be read");
    }
    return items;
}

}  // namespace

Result<std::string> DemoService::ask(const std::string& path, std::optional<std::string> content) const {
    const auto url = platform::URL::parse(origin_ + path);
    if (!url) return demoError("\"" + origin_ + "\" is not the address of a demo service");
    platform::URLRequest request{.url = *url};
    if (content) {
        request.method = "POST";
        request.body = platform::Bytes(*std::move(content));
    }
    const auto answer =
        runtime_.urls().load(std::move(request), std::chrono::steady_clock::now() + std::chrono::seconds(5));
    if (!answer) return demoError("the demo service does not answer: " + answer.error().message);
    if (answer->statusCode != 200)
        return demoError("the demo service answers with status " + std::to_string(answer->statusCode));
    return std::string(answer->body.value_or(platform::Bytes()).view());
}

Result<std::vector<DemoUser>> DemoService::users() const { return listOf(ask("/demo/users"), userOf); }

Result<std::vector<DemoAsset>> DemoService::assets() const { return listOf(ask("/demo/catalogue"), assetOf); }

Result<void> DemoService::setFault(const std::string& name) const {
    return ask("/demo/fault", name).map([](const std::string&) {});
}

}  // namespace companion
