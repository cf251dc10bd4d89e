#pragma once

// The quote message under its published names, and how it is read and compared.

#include <concepts>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include "extension/widgets/perch/proto/market_package.pb.h"
#include "platform/base/result.h"

namespace extension {

using MarketPackage_MultiAssetInfo = MarketPackage::MultiAssetInfo;
using MarketPackage_MultiAssetData = MarketPackage::MultiAssetData;
using MarketPackage_MultiAssetDataListItem = MarketPackage::MultiAssetDataListItem;

/// Reads one whole message. A cut message, a known field in the wrong wire type, text that is not
/// UTF-8 and more than 100 levels are errors (domain "DecodingError") of the whole message; unknown fields
/// are kept. Any thread.
platform::Result<MarketPackage_MultiAssetInfo> decodeMultiAssetInfo(std::string_view bytes);

/// The same bytes for equal messages, which plain serialisation does not promise.
std::string deterministicBytes(const google::protobuf::Message& message);

}  // namespace extension

// In the namespace of the messages, where the compiler looks for it.
namespace MarketPackage {

/// Equal when all fields are, in their order, and the unknown fields byte for byte.
template <std::derived_from<google::protobuf::Message> Message>
bool operator==(const Message& a, const Message& b) {
    return extension::deterministicBytes(a) == extension::deterministicBytes(b);
}

}  // namespace MarketPackage

template <std::derived_from<google::protobuf::Message> Message>
struct std::hash<Message> {
    std::size_t operator()(const Message& message) const {
        return std::hash<std::string>()(extension::deterministicBytes(message));
    }
};
