#include "platform/settings/property_list.h"

#include "platform/settings/binary_property_list.h"
#include "platform/settings/property_list_limits.h"
#include "platform/settings/xml_property_list.h"

namespace platform {
namespace {

std::string_view withoutByteOrderMark(std::string_view bytes) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return bytes.starts_with(mark) ? bytes.substr(mark.size()) : bytes;
}

}  // namespace

PropertyList::PropertyList(const PropertyList&) = default;
PropertyList::PropertyList(PropertyList&&) noexcept = default;
PropertyList& PropertyList::operator=(const PropertyList&) = default;
PropertyList& PropertyList::operator=(PropertyList&&) noexcept = default;
PropertyList::~PropertyList() = default;

Result<PropertyList> parsePropertyList(std::string_view bytes) {
    if (bytes.size() > property_list::maximumSize) {
        return property_list::refused("the property list is longer than 64 MiB");
    }
    if (bytes.starts_with(property_list::binaryHeader)) return property_list::readBinary(bytes);
    const std::string_view text = withoutByteOrderMark(bytes);
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first != std::string_view::npos && text[first] == '<') {
        return property_list::readXml(text.substr(first));
    }
    return property_list::refused("neither an XML nor a binary property list");
}

}  // namespace platform
