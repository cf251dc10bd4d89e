#pragma once

// Holds pictures of one gallery against those of another.

#include <string_view>

namespace host {

/// Whether two PNGs show the same to the eye: of one size, and no channel of any pixel more than one
/// step apart. A picture that cannot be decoded is like none but itself.
bool looksLike(std::string_view picture, std::string_view other);

}  // namespace host
