#pragma once

// Values that are read from JSON and written as JSON by one description of their members.

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include "platform/base/uuid.h"
#include "platform/json/json_reader.h"

namespace platform {

struct AnyMember {
    void operator()(std::string_view, const auto&) const {}
};

/// A struct that shows its members by their keys: `static void members(auto& self, auto&& member)` calls
/// `member("headline", self.headline)` for each. An optional member may be absent or null and is left out
/// where it is empty; every other member is required.
template <typename T>
concept HasMembers = requires(T& value) {
    T::members(value, AnyMember{});
};

// Other types have a `decode` and the library's `to_json` beside them.

inline void decode(JSONReader& reader, std::string& value) { value = reader.text(); }
inline void decode(JSONReader& reader, bool& value) { value = reader.boolean(); }
inline void decode(JSONReader& reader, std::int64_t& value) { value = reader.integer(); }

inline void decode(JSONReader& reader, UUID& value) {
    const std::optional<UUID> id = UUID::parse(reader.text());
    if (!id) return reader.fail("a text is not an identifier");
    value = *id;
}

inline void to_json(nlohmann::ordered_json& json, const UUID& value) { json = value.text(); }

template <typename T>
void decode(JSONReader& reader, std::optional<T>& value) {
    value.reset();
    if (!reader.null()) decode(reader, value.emplace());
}

template <typename T>
void decode(JSONReader& reader, std::vector<T>& values) {
    // An element can be much larger than its text: "{}," is three bytes.
    constexpr std::size_t mostElements = 10'000;
    values.clear();
    reader.array([&] {
        if (values.size() == mostElements) return reader.fail("more than 10,000 values");
        decode(reader, values.emplace_back());
    });
}

template <HasMembers T>
void decode(JSONReader& reader, T& value) {
    value = T{};
    std::vector<std::string_view> present;
    reader.object([&](std::string_view key) {
        bool isMember = false;
        T::members(value, [&](std::string_view name, auto& member) {
            if (name != key) return;
            isMember = true;
            decode(reader, member);
            if constexpr (!requires { member.reset(); }) present.push_back(name);
        });
        if (!isMember) reader.skip();
    });
    T::members(value, [&](std::string_view name, auto& member) {
        if constexpr (!requires { member.reset(); })
            if (std::ranges::find(present, name) == present.end())
                reader.fail("\"" + std::string(name) + "\" is missing");
    });
}

/// Reads a whole document. Never throws.
template <typename T>
Result<T> decodedJSON(std::string_view document) {
    JSONReader reader(document);
    T value{};
    decode(reader, value);
    TRY(reader.finish());
    return value;
}

template <typename T>
nlohmann::ordered_json encodedJSON(const T& value) {
    return value;
}

template <HasMembers T>
nlohmann::ordered_json encodedJSON(const T& value);

template <typename T>
nlohmann::ordered_json encodedJSON(const std::vector<T>& values) {
    auto array = nlohmann::ordered_json::array();
    for (const T& value : values) array.push_back(encodedJSON(value));
    return array;
}

template <HasMembers T>
nlohmann::ordered_json encodedJSON(const T& value) {
    auto object = nlohmann::ordered_json::object();
    T::members(value, [&object](const char* name, const auto& member) {
        if constexpr (requires { member.has_value(); }) {
            if (member) object[name] = encodedJSON(*member);
        } else {
            object[name] = encodedJSON(member);
        }
    });
    return object;
}

}  // namespace platform
