#pragma once

// Ownership of objects from C libraries.

#include <memory>

namespace host {

template <auto release>
struct Release {
    template <typename T>
    void operator()(T* object) const {
        release(object);
    }
};

/// A pointer that is released with `release`.
template <typename T, auto release>
using Owned = std::unique_ptr<T, Release<release>>;

}  // namespace host
