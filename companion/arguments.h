#pragma once

// How the arguments of an operation are read from texts.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include "platform/base/color.h"
#include "platform/base/result.h"

namespace companion {

/// A type that an operation takes: what it is called in the list of operations, and how it is read.
template <typename T>
struct Argument;

// Of these two the value is a view of `text`.
template <>
struct Argument<std::string_view> {
    static constexpr std::string_view name = "TEXT";
    static platform::Result<std::string_view> read(const std::string& text);
};

template <>
struct Argument<std::optional<std::string_view>> {
    static constexpr std::string_view name = "TEXT|null";
    static platform::Result<std::optional<std::string_view>> read(const std::string& text);
};

template <>
struct Argument<std::int64_t> {
    static constexpr std::string_view name = "INTEGER";
    static platform::Result<std::int64_t> read(const std::string& text);
};

template <>
struct Argument<double> {
    static constexpr std::string_view name = "NUMBER";
    static platform::Result<double> read(const std::string& text);
};

template <>
struct Argument<bool> {
    static constexpr std::string_view name = "true|false";
    static platform::Result<bool> read(const std::string& text);
};

template <>
struct Argument<platform::Color> {
    static constexpr std::string_view name = "COLOR";
    static platform::Result<platform::Color> read(const std::string& text);
};

}  // namespace companion
