#include "host/cli/commands.h"

#include <nlohmann/json.hpp>
#include <utility>
#include "companion/extension_facts.h"
#include "host/cli/output.h"
#include "host/process/program_options.h"
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

Result<std::shared_ptr<UserDefaults>> openStore(const ProcessOptions& process) {
    return resolvedOptions(process).and_then([](const platform::RuntimeOptions& resolved) {
        return UserDefaults::open(resolved.dataDirectory, companion::sharedSuite);
    });
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

template <typename T>
Result<PropertyList> valueOr(std::optional<T> value, const std::string& text, const std::string& trouble) {
    if (value) return PropertyList(std::move(*value));
    return platform::failure("UsageError", 2, "\"" + text + "\" is " + trouble);
}

Result<PropertyList> parseValue(const std::string& type, const std::string& text) {
    if (type == "string") {
        if (!platform::isUtf8(text)) return platform::failure("UsageError", 2, "the text is not UTF-8");
        return PropertyList(text);
    }
    if (type == "integer") {
        return valueOr(platform::parsedNumber<std::int64_t>(text), text, "not a whole number of 64 bits");
    }
    if (type == "real") {
        double real = 0.0;
        const bool isReal = platform::parseDecimal(text, real);
        return valueOr(isReal ? std::optional(real) : std::nullopt, text, "not a decimal number");
    }
    if (type == "boolean") {
        const bool isBoolean = text == "true" || text == "false";
        return valueOr(isBoolean ? std::optional(text == "true") : std::nullopt, text,
                       "neither true nor false");
    }
    if (type == "data") {
        const auto bytes = platform::base64Decoded(text);
        return valueOr(bytes ? std::optional<platform::Bytes>(*bytes) : std::nullopt, text, "not base64");
    }
    if (type == "date") {
        return valueOr(platform::parseInstant(text), text, "not an ISO 8601 instant with an offset or Z");
    }
    if (type == "plist") {
        return platform::parsePropertyList(text).map_error([](const Error& error) {
            return Error{"UsageError", 2, error.message};
        });
    }
    return platform::failure(
        "UsageError", 2,
        "unknown type \"" + type + "\"; choose string, integer, real, boolean, data, date or plist");
}

}  // namespace

Result<void> exportStore(const ProcessOptions& process, const std::optional<std::string>& file) {
    return openStore(process)
        .and_then([](const auto& store) { return store->dictionaryRepresentation(); })
        .and_then([](const PropertyList::Dictionary& all) { return platform::xmlPropertyList(all); })
        // The user's session is in it.
        .and_then([&](const std::string& xml) {
            return file ? writeFile(*file, xml, /*isPrivate=*/true) : printText(xml);
        });
}

Result<void> importStore(const ProcessOptions& process, const std::string& file) {
    const std::string bytes = TRY(readFile(file));
    const Result<PropertyList> list = platform::parsePropertyList(bytes);
    if (!list) {
        return platform::failure("PropertyListError", list.error().code, file + ": " + list.error().message);
    }
    const PropertyList::Dictionary* values = list->dictionary();
    if (values == nullptr) {
        return platform::failure("PropertyListError", 1, file + " does not hold a dictionary of keys");
    }
    return openStore(process).and_then([values](const auto& store) {
        return store->transaction([values](UserDefaults::Transaction& transaction) -> Result<void> {
            for (const auto& [key, value] : *values) {
                TRY(transaction.set(key, value));
            }
            return {};
        });
    });
}

Result<void> getKey(const ProcessOptions& process, const std::string& key) {
    const auto value = openStore(process).and_then([&](const auto& store) { return store->object(key); });
    if (!value) return tl::unexpected(value.error());
    if (!*value) return platform::failure("SettingsError", 3, "the key \"" + key + "\" is not in the store");
    return print(valueJson(**value));
}

Result<void> setKey(const ProcessOptions& process, const std::string& key, const std::string& type,
                    const std::string& value) {
    if (!platform::isUtf8(key)) return platform::failure("UsageError", 2, "the key is not UTF-8");
    return parseValue(type, value).and_then([&](const PropertyList& parsed) {
        return openStore(process).and_then([&](const auto& store) { return store->set(key, parsed); });
    });
}

Result<void> removeKey(const ProcessOptions& process, const std::string& key) {
    return openStore(process).and_then([&](const auto& store) { return store->remove(key); });
}

Result<void> repair(const ProcessOptions& process) {
    const auto aside = resolvedOptions(process).and_then([](const platform::RuntimeOptions& resolved) {
        return platform::repairStore(resolved.dataDirectory, companion::sharedSuite);
    });
    if (!aside) return tl::unexpected(aside.error());
    if (!*aside) return printText("The settings store is in order.\n");
    return printText("The damaged settings store is now in " + (*aside)->string() + "\n");
}

}  // namespace host
