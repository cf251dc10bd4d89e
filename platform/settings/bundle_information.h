#pragma once

// The information dictionary that comes with a program.

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include "platform/base/result.h"
#include "platform/settings/property_list.h"

namespace platform {

/// The entries of an Info.plist; empty without one.
struct BundleInformation {
    PropertyList::Dictionary entries;

    /// The entry, when it exists and is a text.
    std::optional<std::string> text(std::string_view key) const;

    /// Reads an XML or binary property list whose root is a dictionary.
    static Result<BundleInformation> read(const std::filesystem::path& file);
};

}  // namespace platform
