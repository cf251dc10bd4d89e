#pragma once

// Names to choose from, as a sentence lists them.

#include <span>
#include <string>

namespace platform {

/// "A", "A or B", "A, B or C".
inline std::string alternatives(std::span<const std::string> names) {
    std::string list;
    for (std::size_t index = 0; index < names.size(); ++index) {
        if (index > 0) list += index + 1 == names.size() ? " or " : ", ";
        list += names[index];
    }
    return list;
}

}  // namespace platform
