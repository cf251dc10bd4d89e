#pragma once

// How the arguments of an operation are read from texts.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include "platform/base/color.h"
#include "platform/base/result.h"

namespace companion {

/// What an argument of a type is called in the list of operations.
template <typename T>
constexpr std::string_view argumentName;
template <>
constexpr std::string_view argumentName<std::string_view> = "TEXT";
template <>
constexpr std::string_view argumentName<std::optional<std::string_view>> = "TEXT|null";
template <>
constexpr std::string_view argumentName<std::int64_t> = "INTEGER";
template <>
constexpr std::string_view argumentName<double> = "NUMBER";
template <>
constexpr std::string_view argumentName<bool> = "true|false";
template <>
constexpr std::string_view argumentName<platform::Color> = "COLOR";

/// Reads an argument. A text's value is a view of `text`.
template <typename T>
platform::Result<T> readArgument(const std::string& text);
template <>
platform::Result<std::string_view> readArgument(const std::string& text);
template <>
platform::Result<std::optional<std::string_view>> readArgument(const std::string& text);
template <>
platform::Result<std::int64_t> readArgument(const std::string& text);
template <>
platform::Result<double> readArgument(const std::string& text);
template <>
platform::Result<bool> readArgument(const std::string& text);
template <>
platform::Result<platform::Color> readArgument(const std::string& text);

}  // namespace companion
