#pragma once

// Upper and lower case by the rules of no particular language.

#include <string>
#include <string_view>

namespace platform {

/// UTF-8 text. Any thread.
std::string lowerCased(std::string_view text);
std::string upperCased(std::string_view text);

}  // namespace platform
