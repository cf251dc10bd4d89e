#pragma once

// The quote message under its published names, and how it is read and compared.

#include <cstddef>
#include <functional>
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

/// Takes any message; equal messages have equal values.
std::size_t hashValue(const google::protobuf::Message& message);

}  // namespace extension

// In the namespace of the messages, where the compiler looks for them.
namespace MarketPackage {

/// Equal when all fields are, in their order, and the unknown fields byte for byte.
bool operator==(const MultiAssetInfo& a, const MultiAssetInfo& b);
bool operator==(const MultiAssetData& a, const MultiAssetData& b);
bool operator==(const MultiAssetDataListItem& a, const MultiAssetDataListItem& b);

}  // namespace MarketPackage

template <>
struct std::hash<MarketPackage::MultiAssetInfo> {
    std::size_t operator()(const MarketPackage::MultiAssetInfo& message) const {
        return extension::hashValue(message);
    }
};
template <>
struct std::hash<MarketPackage::MultiAssetData> {
    std::size_t operator()(const MarketPackage::MultiAssetData& message) const {
        return extension::hashValue(message);
    }
};
template <>
struct std::hash<MarketPackage::MultiAssetDataListItem> {
    std::size_t operator()(const MarketPackage::MultiAssetDataListItem& message) const {
        return extension::hashValue(message);
    }
};
