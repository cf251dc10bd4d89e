#include "platform/settings/bundle_information.h"

#include <fstream>
#include <utility>
#include <vector>
#include "platform/settings/property_list_limits.h"

namespace platform {

std::optional<std::string> BundleInformation::text(std::string_view key) const {
    const auto entry = entries.find(key);
    if (entry == entries.end() || entry->second.text() == nullptr) return std::nullopt;
    return *entry->second.text();
}

Result<BundleInformation> BundleInformation::read(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::vector<char> block(1 << 16);
    std::string bytes;
    while (stream && bytes.size() <= property_list::maximumSize) {
        stream.read(block.data(), static_cast<std::streamsize>(block.size()));
        bytes.append(block.data(), static_cast<std::size_t>(stream.gcount()));
    }
    const bool isTooLong = bytes.size() > property_list::maximumSize;
    if (!stream.eof() && !isTooLong) return property_list::refused("cannot read " + file.string());
    Result<PropertyList> root = parsePropertyList(bytes);
    if (!root) return property_list::refused(file.string() + ": " + root.error().message);
    if (root->dictionary() == nullptr) return property_list::refused(file.string() + ": no dictionary");
    return BundleInformation{*root->dictionary()};
}

}  // namespace platform
