#pragma once

// Makes the names in an SVG independent of what was drawn before.

#include <string>
#include <string_view>

namespace host {

/// Renumbers the identifiers of an SVG in the order in which they appear. Cairo keeps counting through all
/// drawings of a process, but the same drawing must give the same text.
std::string withRenumberedIds(std::string_view svg);

}  // namespace host
