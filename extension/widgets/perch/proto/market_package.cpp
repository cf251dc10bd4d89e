#include "extension/widgets/perch/proto/market_package.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/unknown_field_set.h>
#include <google/protobuf/wire_format_lite.h>
#include <algorithm>
#include <array>
#include <limits>
#include <span>

namespace extension {
namespace {

using google::protobuf::Message;

// The library reads a known field in the wrong wire type as an unknown one; for us it is an error.
bool hasMistypedField(const Message& message) {
    const auto& unknown = message.GetReflection()->GetUnknownFields(message);
    for (int index = 0; index < unknown.field_count(); ++index) {
        if (message.GetDescriptor()->FindFieldByNumber(unknown.field(index).number()) != nullptr) return true;
    }
    return false;
}

bool hasMistypedFieldAnywhere(const MarketPackage_MultiAssetInfo& info) {
    return hasMistypedField(info) || hasMistypedField(info.data()) ||
           std::ranges::any_of(info.data().datalist(), hasMistypedField);
}

/// A few hundred assets take some thousand fields; decoded ones are much larger than their bytes.
constexpr std::size_t mostFields = 100'000;

/// How many fields decoding would make, where a message counts as ten. `messages` are the numbers of the
/// fields that hold a message: of this level, of the level below it and so on.
std::size_t fieldsIn(std::string_view bytes, std::span<const int> messages) {
    using google::protobuf::internal::WireFormatLite;
    google::protobuf::io::CodedInputStream input(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                                 static_cast<int>(bytes.size()));
    std::size_t fields = 0;
    while (const std::uint32_t tag = input.ReadTag()) {
        ++fields;
        const auto type = WireFormatLite::GetTagWireType(tag);
        // What is inside of a group counts like what is outside of it.
        if (type == WireFormatLite::WIRETYPE_START_GROUP || type == WireFormatLite::WIRETYPE_END_GROUP)
            continue;
        const auto start = static_cast<std::size_t>(input.CurrentPosition());
        if (!WireFormatLite::SkipField(&input, tag)) break;
        if (type != WireFormatLite::WIRETYPE_LENGTH_DELIMITED || messages.empty() ||
            WireFormatLite::GetTagFieldNumber(tag) != messages.front())
            continue;
        const std::string_view field =
            bytes.substr(start, static_cast<std::size_t>(input.CurrentPosition()) - start);
        // The length comes first, in bytes of which the last has no high bit.
        const auto* const lengthEnd = std::ranges::find_if(field, [](char byte) { return byte >= 0; });
        fields += 9 + fieldsIn({lengthEnd + 1, field.end()}, messages.subspan(1));
    }
    return fields;
}

tl::unexpected<platform::Error> decodingFailure(std::string message) {
    return platform::failure("DecodingError", 0, std::move(message));
}

}  // namespace

platform::Result<MarketPackage_MultiAssetInfo> decodeMultiAssetInfo(std::string_view bytes) {
    if (bytes.size() > std::numeric_limits<int>::max()) return decodingFailure("the quotes are too long");

    constexpr std::array<int, 2> messages{MarketPackage_MultiAssetInfo::kDataFieldNumber,
                                          MarketPackage_MultiAssetData::kDatalistFieldNumber};
    if (fieldsIn(bytes, messages) > mostFields) return decodingFailure("the quotes hold too many fields");
    // Without it the library reports text that is not UTF-8 on standard error.
    const google::protobuf::LogSilencer silencer;
    MarketPackage_MultiAssetInfo info;
    if (!info.ParseFromArray(bytes.data(), static_cast<int>(bytes.size())))
        return decodingFailure("the quotes are not a whole message");
    if (hasMistypedFieldAnywhere(info))
        return decodingFailure("a field of the quotes has the wrong wire type");
    return info;
}

std::string deterministicBytes(const Message& message) {
    std::string bytes;
    google::protobuf::io::StringOutputStream output(&bytes);
    google::protobuf::io::CodedOutputStream coded(&output);
    coded.SetSerializationDeterministic(true);
    message.SerializePartialToCodedStream(&coded);
    coded.Trim();
    return bytes;
}

}  // namespace extension
