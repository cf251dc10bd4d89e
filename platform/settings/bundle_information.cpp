#include "platform/settings/bundle_information.h"

#include "platform/base/files.h"
#include "platform/settings/property_list_formats.h"

namespace platform {

std::optional<std::string> BundleInformation::text(std::string_view key) const {
    const auto entry = entries.find(key);
    if (entry == entries.end() || entry->second.text() == nullptr) return std::nullopt;
    return *entry->second.text();
}

Result<BundleInformation> BundleInformation::read(const std::filesystem::path& file) {
    const Result<std::string> bytes = readFile(file, property_list::maximumSize);
    if (!bytes) return property_list::refused(bytes.error().message);
    Result<PropertyList> root = parsePropertyList(*bytes);
    if (!root) return property_list::refused(file.string() + ": " + root.error().message);
    if (root->dictionary() == nullptr)
        return property_list::refused(file.string() + ": the property list is not a dictionary");
    return BundleInformation{*root->dictionary()};
}

}  // namespace platform
