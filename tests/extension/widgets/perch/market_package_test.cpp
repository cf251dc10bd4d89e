#include "extension/widgets/perch/proto/market_package.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace extension {
namespace {

using namespace std::string_literals;

std::string message(int field, std::string_view content) {
    std::string bytes{static_cast<char>(field << 3 | 2)};
    std::size_t size = content.size();
    for (; size > 0x7F; size >>= 7) bytes += static_cast<char>(size | 0x80);
    return bytes.append(1, static_cast<char>(size)).append(content);
}

std::string infoOf(std::string_view item) { return message(2, message(1, item)); }

TEST(QuoteMessage, AnEmptyBodyIsAMessageWithoutData) {
    const auto info = decodeMultiAssetInfo("");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->success(), 0);
    EXPECT_FALSE(info->has_data());
    EXPECT_EQ(info->data().datalist_size(), 0);
    EXPECT_EQ(info->GetTypeName(), "MarketPackage.MultiAssetInfo");
    EXPECT_EQ(info->data().GetTypeName(), "MarketPackage.MultiAssetData");
}

TEST(QuoteMessage, EveryTextHasItsOwnNumber) {
    std::string bytes;
    for (int field = 1; field <= 15; ++field) bytes += message(field, std::to_string(field));
    const auto info = decodeMultiAssetInfo(infoOf(bytes));
    ASSERT_TRUE(info);
    const auto& item = info->data().datalist(0);
    const std::string inOrder[] = {
        item.assetid(),   item.symbol(),     item.shortname(),   item.currentprice(), item.change(),
        item.perchange(), item.volume(),     item.direction(),   item.ex(),           item.exid(),
        item.disptime(),  item.dateformat(), item.lastupdated(), item.assettype(),    item.priceidentifier()};
    for (int field = 1; field <= 15; ++field) EXPECT_EQ(inOrder[field - 1], std::to_string(field));
    EXPECT_EQ(item.GetTypeName(), "MarketPackage.MultiAssetDataListItem");
    EXPECT_EQ(item.GetDescriptor()->FindFieldByNumber(10)->json_name(), "exId");
}

TEST(QuoteMessage, AnyFaultFailsTheWholeMessage) {
    const std::string good = infoOf(message(1, "7"));
    ASSERT_TRUE(decodeMultiAssetInfo(good));
    const struct {
        const char* what;
        std::string bytes;
    } faults[] = {
        {"cut in a text", good.substr(0, good.size() - 1)},
        {"cut after a tag", good + "\x08"},
        {"a number that never ends", good + "\x08\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff\x01"},
        {"a length beyond the end", good + "\x12\x7f"},
        {"field number 0", good + "\x02\x00"s},
        {"the end of a group that never began", good + "\x4c"},
        {"text that is not UTF-8", infoOf(message(4, "\xff\xfe"))},
        {"half a surrogate pair", infoOf(message(2, "\xed\xa0\x80"))},
        {"success as text", good + message(1, "1")},
        {"data as a number", "\x10\x01"},
        {"the list as a number", message(2, "\x08\x01")},
        {"a price as a number", infoOf(message(1, "7") + "\x20\x05")},
        {"a price as eight bytes", infoOf("\x21"
                                          "12345678")},
        {"the last text as a group", infoOf("\x7b\x7c")},
        {"noise", "<html>not found</html>"},
    };
    for (const auto& fault : faults) {
        const auto info = decodeMultiAssetInfo(fault.bytes);
        ASSERT_FALSE(info) << fault.what;
        EXPECT_EQ(info.error().domain, "DecodingError") << fault.what;
    }
}

TEST(QuoteMessage, ABadTextIsNotWrittenToStandardError) {
    testing::internal::CaptureStderr();
    EXPECT_FALSE(decodeMultiAssetInfo(infoOf(message(4, "\xff"))));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(QuoteMessage, UnknownFieldsAreKeptWhateverStandsInThem) {
    // Number 16 as text, 17 as a group that holds a number which would be a text outside of it.
    const std::string unknown = "\x82\x01\x03new\x8b\x01\x08\x01\x8c\x01";
    const auto info = decodeMultiAssetInfo(infoOf(message(1, "7") + unknown));
    ASSERT_TRUE(info);
    const auto& item = info->data().datalist(0);
    EXPECT_EQ(item.SerializeAsString(), message(1, "7") + unknown);

    const auto again = decodeMultiAssetInfo(info->SerializeAsString());
    ASSERT_TRUE(again);
    EXPECT_EQ(*again, *info);
    const auto without = decodeMultiAssetInfo(infoOf(message(1, "7")));
    EXPECT_FALSE(*without == *info);
}

TEST(QuoteMessage, GroupsNestAHundredLevelsAtTheMost) {
    // Field 9 as a group in a group in a group.
    const auto nested = [](int levels) {
        return std::string(static_cast<std::size_t>(levels), '\x4b') +
               std::string(static_cast<std::size_t>(levels), '\x4c');
    };
    EXPECT_TRUE(decodeMultiAssetInfo(nested(100)));
    EXPECT_FALSE(decodeMultiAssetInfo(nested(101)));
}

TEST(QuoteMessage, IsRefusedWhenSmallBytesWouldTakeMuchMemory) {
    const auto quotes = [](int count, const std::string& quote) {
        std::string list;
        for (int i = 0; i < count; ++i) list += message(1, quote);
        return message(2, list);
    };
    const std::string blanks(1U << 20, ' ');
    const std::string groups = "\x4b" + std::string(200'000, ' ') + "\x4c";
    EXPECT_TRUE(decodeMultiAssetInfo(quotes(3000, message(1, "7") + message(4, "1.5"))));
    for (const std::string& bytes : {quotes(100'000, ""), blanks, groups, message(2, message(1, blanks))}) {
        const auto info = decodeMultiAssetInfo(bytes);
        ASSERT_FALSE(info);
        EXPECT_EQ(info.error().message, "the quotes hold too many fields");
    }
}

TEST(QuoteMessage, EqualMessagesHaveEqualHashesAndDifferencesShow) {
    MarketPackage_MultiAssetInfo plain;
    MarketPackage_MultiAssetInfo withEmptyData = plain;
    withEmptyData.mutable_data();
    MarketPackage_MultiAssetInfo withQuote = withEmptyData;
    withQuote.mutable_data()->add_datalist()->set_assetid("7");
    MarketPackage_MultiAssetInfo withOtherQuote = withEmptyData;
    withOtherQuote.mutable_data()->add_datalist()->set_symbol("7");
    MarketPackage_MultiAssetInfo successful = plain;
    successful.set_success(1);

    const MarketPackage_MultiAssetInfo* const all[] = {&plain, &withEmptyData, &withQuote, &withOtherQuote,
                                                       &successful};
    const std::hash<MarketPackage_MultiAssetInfo> hash;
    for (const auto* a : all) {
        for (const auto* b : all) EXPECT_EQ(*a == *b, a == b);
        const MarketPackage_MultiAssetInfo copy = *a;
        EXPECT_EQ(copy, *a);
        EXPECT_EQ(hash(copy), hash(*a));
    }
}

}  // namespace
}  // namespace extension
