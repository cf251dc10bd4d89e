#include "platform/settings/property_list.h"

#include "platform/settings/property_list_formats.h"

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
    if (bytes.size() > property_list::maximumSize)
        return property_list::refused("the property list is longer than 64 MiB");
    return property_list::parse(bytes, property_list::Budget());
}

Result<PropertyList> property_list::parse(std::string_view bytes, Budget budget) {
    if (bytes.starts_with(binaryHeader)) return readBinary(bytes, budget);
    const std::string_view text = withoutByteOrderMark(bytes);
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first != std::string_view::npos && text[first] == '<') return readXml(text.substr(first), budget);
    return refused("neither an XML nor a binary property list");
}

}  // namespace platform
