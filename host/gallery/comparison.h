#pragma once

// Compares the pictures of two galleries.

#include <string_view>

namespace host {

/// Whether two PNGs look the same: they have one size, and no channel of any pixel differs by more than one
/// step. Bytes that cannot be decoded look only like the same bytes.
bool looksLike(std::string_view picture, std::string_view other);

}  // namespace host
