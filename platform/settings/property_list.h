#pragma once

// Property-list values, the only thing that a settings store holds, and their two file formats.

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>
#include "platform/base/bytes.h"
#include "platform/base/clock.h"
#include "platform/base/result.h"

namespace platform {

/// One property-list value. A boolean and an integer are different types here, as they are in a
/// store; texts are UTF-8.
class PropertyList {
public:
    using Array = std::vector<PropertyList>;
    using Dictionary = std::map<std::string, PropertyList, std::less<>>;

    PropertyList() : value_(std::string()) {}
    // Not inline: in every list of entries they would cost code, and GCC 12 would give a false warning.
    PropertyList(const PropertyList&);
    PropertyList(PropertyList&&) noexcept;
    PropertyList& operator=(const PropertyList&);
    PropertyList& operator=(PropertyList&&) noexcept;
    ~PropertyList();

    PropertyList(std::string text) : value_(std::move(text)) {}             // NOLINT(*-explicit-*)
    PropertyList(const char* text) : value_(std::string(text)) {}           // NOLINT(*-explicit-*)
    PropertyList(std::int64_t integer) : value_(integer) {}                 // NOLINT(*-explicit-*)
    PropertyList(int integer) : value_(std::int64_t{integer}) {}            // NOLINT(*-explicit-*)
    PropertyList(double real) : value_(real) {}                             // NOLINT(*-explicit-*)
    PropertyList(bool boolean) : value_(boolean) {}                         // NOLINT(*-explicit-*)
    PropertyList(Bytes data) : value_(std::move(data)) {}                   // NOLINT(*-explicit-*)
    PropertyList(Instant date) : value_(date) {}                            // NOLINT(*-explicit-*)
    PropertyList(Array array) : value_(std::move(array)) {}                 // NOLINT(*-explicit-*)
    PropertyList(Dictionary dictionary) : value_(std::move(dictionary)) {}  // NOLINT(*-explicit-*)

    /// The value when it is of exactly this type, else null: no conversion of any kind.
    const std::string* text() const { return std::get_if<std::string>(&value_); }
    const std::int64_t* integer() const { return std::get_if<std::int64_t>(&value_); }
    const double* real() const { return std::get_if<double>(&value_); }
    const bool* boolean() const { return std::get_if<bool>(&value_); }
    const Bytes* data() const { return std::get_if<Bytes>(&value_); }
    const Instant* date() const { return std::get_if<Instant>(&value_); }
    const Array* array() const { return std::get_if<Array>(&value_); }
    const Dictionary* dictionary() const { return std::get_if<Dictionary>(&value_); }

    bool operator==(const PropertyList&) const = default;

private:
    std::variant<std::string, std::int64_t, double, bool, Bytes, Instant, Array, Dictionary> value_;
};

/// Reads an XML or a binary property list, told apart by its first bytes. Bounded for bytes of
/// unknown origin: 64 MiB, 1,000,000 objects, 32 levels; shared objects of a binary list count each time
/// that they are reached. Error domain "PropertyListError".
Result<PropertyList> parsePropertyList(std::string_view bytes);

/// As an XML property list with a trailing line break. Fails for a key or text that XML cannot hold
/// (control characters); the message names the path of keys to it.
Result<std::string> xmlPropertyList(const PropertyList& value);

}  // namespace platform
