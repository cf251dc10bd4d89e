#pragma once

// Names in SVG that do not depend on what was drawn before.

#include <string>
#include <string_view>

namespace host {

/// Numbers the identifiers of an SVG anew, in the order in which they appear: the library counts on
/// through all drawings of a process, and the same drawing is to give the same text.
std::string withRenumberedIds(std::string_view svg);

}  // namespace host
