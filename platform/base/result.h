#pragma once

// Failures as values: what every operation returns that can go wrong.

#include <string>
#include <tl/expected.hpp>
#include <utility>

namespace platform {

/// What went wrong. `domain` names the part that reports it ("URLError", "SettingsError", ...), `code` is one
/// of that domain's numbers, and `message` is one line for a log, without a full stop.
struct Error {
    std::string domain;
    int code = 0;
    std::string message;

    bool operator==(const Error&) const = default;
};

/// A value, or the error that explains why there is none.
template <typename T>
using Result = tl::expected<T, Error>;

inline tl::unexpected<Error> failure(std::string domain, int code, std::string message) {
    return tl::unexpected<Error>(Error{std::move(domain), code, std::move(message)});
}

inline void unwrapped(Result<void>&& /*tried*/) {}

template <typename T>
T unwrapped(Result<T>&& tried) {
    return *std::move(tried);
}

}  // namespace platform

/// The value of an expression of type `Result`. On failure the function around it returns the error.
#define TRY(...)                                                     \
    __extension__({                                                  \
        auto tried = __VA_ARGS__;                                    \
        if (!tried) return tl::unexpected(std::move(tried).error()); \
        platform::unwrapped(std::move(tried));                       \
    })
