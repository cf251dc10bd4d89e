#include "host/cli/store_commands.h"

#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>
#include "host/cli/output.h"
#include "host/cli/surroundings.h"
#include "platform/base/ascii.h"
#include "platform/settings/property_list.h"
#include "platform/settings/user_defaults.h"
#include "platform/settings/utf8.h"
#include "platform/text/number_formatter.h"

namespace host {
namespace {

using nlohmann::ordered_json;
using platform::Error;
using platform::ProcessOptions;
using platform::PropertyList;
using platform::Result;
using platform::UserDefaults;

/// The phone app and its widgets both use this name.
constexpr std::string_view sharedSuite = "group.shareWithTodayExtension";

Result<std::shared_ptr<UserDefaults>> openStore(const ProcessOptions& process) {
    const auto resolved = surroundings(process);
    if (!resolved) return tl::unexpected(resolved.error());
    return UserDefaults::open(resolved->dataDirectory, sharedSuite);
}

ordered_json valueJson(const PropertyList& value) {
    if (const auto* text = value.text()) return *text;
    if (const auto* integer = value.integer()) return *integer;
    if (const auto* real = value.real()) return *real;
    if (const auto* boolean = value.boolean()) return *boolean;
    if (const auto* data = value.data()) return {{"data", platform::base64Encoded(data->view())}};
    if (const auto* date = value.date()) return {{"date", platform::formatInstant(*date)}};
    if (const auto* array = value.array()) {
        ordered_json list = ordered_json::array();
        for (const PropertyList& element : *array) list.push_back(valueJson(element));
        return list;
    }
    ordered_json object = ordered_json::object();
    for (const auto& [key, element] : *value.dictionary()) object[key] = valueJson(element);
    return object;
}

tl::unexpected<Error> wrongValue(const std::string& value, std::string_view expected) {
    return platform::failure("UsageError", 2, "\"" + value + "\" is " + std::string(expected));
}

Result<PropertyList> parseText(const std::string& text) {
    if (!platform::isUtf8(text)) return platform::failure("UsageError", 2, "the text is not UTF-8");
    return PropertyList(text);
}

Result<PropertyList> parseInteger(const std::string& text) {
    const auto integer = platform::parsedNumber<std::int64_t>(text);
    if (!integer) return wrongValue(text, "not a whole number of 64 bits");
    return PropertyList(*integer);
}

Result<PropertyList> parseReal(const std::string& text) {
    double real = 0.0;
    if (!platform::parseDecimal(text, real)) return wrongValue(text, "not a decimal number");
    return PropertyList(real);
}

Result<PropertyList> parseBoolean(const std::string& text) {
    if (text != "true" && text != "false") return wrongValue(text, "neither true nor false");
    return PropertyList(text == "true");
}

Result<PropertyList> parseData(const std::string& text) {
    std::optional<std::string> bytes = platform::base64Decoded(text);
    if (!bytes) return wrongValue(text, "not base64");
    return PropertyList(platform::Bytes(std::move(*bytes)));
}

Result<PropertyList> parseDate(const std::string& text) {
    const auto instant = platform::parseInstant(text);
    if (!instant) return wrongValue(text, "not an ISO 8601 instant with an offset or Z");
    return PropertyList(*instant);
}

Result<PropertyList> parsePlist(const std::string& text) {
    Result<PropertyList> value = platform::parsePropertyList(text);
    if (!value) return platform::failure("UsageError", 2, value.error().message);
    return value;
}

Result<PropertyList> parseValue(const std::string& type, const std::string& text) {
    if (type == "string") return parseText(text);
    if (type == "integer") return parseInteger(text);
    if (type == "real") return parseReal(text);
    if (type == "boolean") return parseBoolean(text);
    if (type == "data") return parseData(text);
    if (type == "date") return parseDate(text);
    if (type == "plist") return parsePlist(text);
    return platform::failure(
        "UsageError", 2,
        "unknown type \"" + type + "\"; choose string, integer, real, boolean, data, date or plist");
}

}  // namespace

Result<void> exportStore(const ProcessOptions& process, const std::optional<std::string>& file) {
    const auto store = openStore(process);
    if (!store) return tl::unexpected(store.error());
    Result<PropertyList::Dictionary> everything = (*store)->dictionaryRepresentation();
    if (!everything) return tl::unexpected(everything.error());
    const Result<std::string> xml = platform::xmlPropertyList(std::move(*everything));
    if (!xml) return tl::unexpected(xml.error());
    // The user's session is in it.
    return file ? writeFile(*file, *xml, /*isPrivate=*/true) : printText(*xml);
}

Result<void> importStore(const ProcessOptions& process, const std::string& file) {
    const Result<std::string> bytes = readFile(file);
    if (!bytes) return tl::unexpected(bytes.error());
    const Result<PropertyList> list = platform::parsePropertyList(*bytes);
    if (!list) {
        return platform::failure("PropertyListError", list.error().code, file + ": " + list.error().message);
    }
    const PropertyList::Dictionary* values = list->dictionary();
    if (values == nullptr) {
        return platform::failure("PropertyListError", 1, file + " does not hold a dictionary of keys");
    }
    const auto store = openStore(process);
    if (!store) return tl::unexpected(store.error());
    return (*store)->transaction([values](UserDefaults::Transaction& transaction) -> Result<void> {
        for (const auto& [key, value] : *values) {
            if (Result<void> kept = transaction.set(key, value); !kept) return kept;
        }
        return {};
    });
}

Result<void> getKey(const ProcessOptions& process, const std::string& key) {
    const auto store = openStore(process);
    if (!store) return tl::unexpected(store.error());
    const Result<std::optional<PropertyList>> value = (*store)->object(key);
    if (!value) return tl::unexpected(value.error());
    if (!*value) return platform::failure("SettingsError", 3, "the key \"" + key + "\" is not in the store");
    return print(valueJson(**value));
}

Result<void> setKey(const ProcessOptions& process, const std::string& key, const std::string& type,
                    const std::string& value) {
    if (!platform::isUtf8(key)) return platform::failure("UsageError", 2, "the key is not UTF-8");
    const Result<PropertyList> parsed = parseValue(type, value);
    if (!parsed) return tl::unexpected(parsed.error());
    const auto store = openStore(process);
    if (!store) return tl::unexpected(store.error());
    return (*store)->set(key, *parsed);
}

Result<void> removeKey(const ProcessOptions& process, const std::string& key) {
    const auto store = openStore(process);
    if (!store) return tl::unexpected(store.error());
    return (*store)->remove(key);
}

Result<void> repair(const ProcessOptions& process) {
    const auto resolved = surroundings(process);
    if (!resolved) return tl::unexpected(resolved.error());
    const auto aside = platform::repairStore(resolved->dataDirectory, sharedSuite);
    if (!aside) return tl::unexpected(aside.error());
    if (!*aside) return printText("The settings store is in order.\n");
    return printText("The damaged settings store is now in " + (*aside)->string() + "\n");
}

}  // namespace host
