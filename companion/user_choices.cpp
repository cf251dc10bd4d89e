#include "companion/user_choices.h"

#include <array>
#include <vector>
#include "extension/app/settings/store_keys.h"
#include "platform/settings/keyed_archive.h"
#include "platform/settings/user_defaults.h"

namespace companion {
namespace {

using platform::PropertyList;
using platform::Result;
using Transaction = platform::UserDefaults::Transaction;
namespace keys = extension::keys;

Result<void> change(const platform::Runtime& runtime, const std::function<Result<void>(Transaction&)>& work) {
    const auto defaults = extension::sharedDefaults(runtime);
    return defaults ? (*defaults)->transaction(work) : tl::unexpected(defaults.error());
}

Result<std::vector<std::optional<PropertyList>>> read(const platform::Runtime& runtime,
                                                      const std::vector<std::string>& names) {
    const auto defaults = TRY(extension::sharedDefaults(runtime));
    const auto stored = TRY(defaults->objects(names));
    std::vector<std::optional<PropertyList>> values;
    for (const auto& value : stored) {
        if (!value) return tl::unexpected(value.error());
        values.push_back(*value);
    }
    return values;
}

const std::string* textOf(const std::optional<PropertyList>& value) {
    return value ? value->text() : nullptr;
}

Result<void> setOrRemove(Transaction& store, std::string_view key, const std::optional<PropertyList>& value) {
    return value ? store.set(key, *value) : store.remove(key);
}

Result<void> writeSession(Transaction& store, const std::optional<Session>& session) {
    const auto text = [&](auto part) {
        return session ? std::optional<PropertyList>(*session.*part) : std::nullopt;
    };
    return setOrRemove(store, keys::token, text(&Session::token))
        .and_then([&] { return setOrRemove(store, keys::userId, text(&Session::userId)); })
        .and_then([&] { return setOrRemove(store, keys::userPortfolio, text(&Session::portfolioAddress)); });
}

/// In the order of `assetKinds`.
constexpr std::array assetKeys{keys::indicesWidget, keys::stockWidget, keys::futureWidget,
                               keys::cryptoWidget};

/// The other links of the phone app, which share an archive with the address of the news.
Result<PropertyList::Dictionary> linksIn(const std::optional<PropertyList>& stored) {
    if (!stored) return PropertyList::Dictionary();
    if (const auto* data = stored->data()) {
        const auto root = platform::unarchivedObject(data->view());
        if (root && root->dictionary()) return *root->dictionary();
    }
    return platform::failure("SettingsError", 1,
                             "the phone app's links (\"" + std::string(keys::extraLinks) +
                                 "\") cannot be read and stay as they are");
}

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

Result<void> setSession(const platform::Runtime& runtime, const std::optional<Session>& session) {
    return change(runtime, [&](Transaction& store) -> Result<void> {
        const auto former = TRY(store.object(keys::userId));
        const std::string* formerUser = textOf(former);
        const bool isSameUser = session && formerUser && *formerUser == session->userId;
        const Result<void> written = writeSession(store, session);
        return written && !isSameUser ? store.remove(keys::portfolioArray) : written;
    });
}

Result<std::optional<Session>> session(const platform::Runtime& runtime) {
    const auto stored = TRY(read(
        runtime, {std::string(keys::token), std::string(keys::userId), std::string(keys::userPortfolio)}));
    const std::string* token = textOf((stored)[0]);
    const std::string* userId = textOf((stored)[1]);
    const std::string* address = textOf((stored)[2]);
    if (!token || !userId || !address) return std::nullopt;
    return Session{*token, *userId, *address};
}

Result<void> setChosenAssets(const platform::Runtime& runtime, const ChosenAssets& assets) {
    return change(runtime, [&](Transaction& store) -> Result<void> {
        for (std::size_t i = 0; i < assetKeys.size(); ++i) {
            TRY(store.set(assetKeys[i], assets.*assetKinds[i].list));
        }
        return {};
    });
}

Result<ChosenAssets> chosenAssets(const platform::Runtime& runtime) {
    const auto stored = TRY(read(runtime, {assetKeys.begin(), assetKeys.end()}));
    ChosenAssets assets;
    for (std::size_t i = 0; i < assetKeys.size(); ++i) {
        const auto* list = (stored)[i] ? (stored)[i]->array() : nullptr;
        if (list) assets.*assetKinds[i].list = *list;
    }
    return assets;
}

Result<void> setNewsFeedAddress(const platform::Runtime& runtime, const std::optional<std::string>& address) {
    return change(runtime, [&](Transaction& store) -> Result<void> {
        const auto stored = TRY(store.object(keys::extraLinks));
        PropertyList::Dictionary links = TRY(linksIn(stored));
        const std::string key(keys::newsWidgetApiUrl);
        links.erase(key);
        if (address) links.emplace(key, *address);
        if (links.empty()) return store.remove(keys::extraLinks);
        return store.set(keys::extraLinks, platform::Bytes(platform::archivedObject(links)));
    });
}

Result<std::optional<std::string>> newsFeedAddress(const platform::Runtime& runtime) {
    const auto stored = TRY(read(runtime, {std::string(keys::extraLinks)}));
    // As the widget does: links that cannot be read name no feed.
    const PropertyList::Dictionary links = linksIn(stored.front()).value_or(PropertyList::Dictionary());
    const auto address = links.find(keys::newsWidgetApiUrl);
    const std::string* text = address == links.end() ? nullptr : address->second.text();
    return text && !text->empty() ? std::optional(*text) : std::nullopt;
}

}  // namespace companion
