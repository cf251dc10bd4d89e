#pragma once

// Ownership of what C libraries hand out.

#include <memory>

namespace host {

template <auto release>
struct Release {
    template <typename T>
    void operator()(T* object) const {
        release(object);
    }
};

/// A pointer that is given back with `release`.
template <typename T, auto release>
using Owned = std::unique_ptr<T, Release<release>>;

}  // namespace host
