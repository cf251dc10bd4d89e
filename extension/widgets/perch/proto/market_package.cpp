#include "extension/widgets/perch/proto/market_package.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/unknown_field_set.h>
#include <algorithm>
#include <limits>

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

tl::unexpected<platform::Error> decodingFailure(std::string message) {
    return platform::failure("DecodingError", 0, std::move(message));
}

}  // namespace

platform::Result<MarketPackage_MultiAssetInfo> decodeMultiAssetInfo(std::string_view bytes) {
    if (bytes.size() > std::numeric_limits<int>::max()) return decodingFailure("the quotes are too long");

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
