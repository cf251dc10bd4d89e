#include "platform/wire/framing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using platform::frameLength;
using platform::FrameReader;
using platform::maximumMessageSize;

std::string framed(const std::string& message) { return *frameLength(message.size()) + message; }

/// All messages of a stream that arrives in pieces of `pieceSize` bytes.
std::vector<std::string> messagesOf(const std::string& stream, std::size_t pieceSize) {
    FrameReader reader;
    std::vector<std::string> messages;
    for (std::size_t at = 0; at < stream.size(); at += pieceSize) {
        reader.append(std::string_view(stream).substr(at, pieceSize));
        for (auto message = reader.next(); message && *message; message = reader.next()) {
            messages.push_back(**message);
        }
    }
    EXPECT_FALSE(reader.isInsideMessage());
    return messages;
}

TEST(Framing, MessagesComeOutWholeHoweverTheirBytesArrive) {
    const std::vector<std::string> sent{
        "", "a", std::string(127, 'b'), std::string(128, 'c'), std::string(70'000, '\0'), ""};
    std::string stream;
    for (const std::string& message : sent) stream += framed(message);

    for (const std::size_t pieceSize : {std::size_t{1}, std::size_t{2}, std::size_t{7}, stream.size()}) {
        EXPECT_EQ(messagesOf(stream, pieceSize), sent) << "in pieces of " << pieceSize;
    }
}

TEST(Framing, AMessageOfTheLimitPassesAndALongerOneIsRefusedOnBothSides) {
    const std::string longest(maximumMessageSize, 'x');
    EXPECT_EQ(messagesOf(framed(longest), 1U << 20), std::vector{longest});

    const auto tooLong = frameLength(longest.size() + 1);
    ASSERT_FALSE(tooLong);
    EXPECT_EQ(tooLong.error().message, "a message of 16777217 bytes is too long");

    FrameReader reader;
    reader.append("\x81\x80\x80\x08");
    ASSERT_FALSE(reader.next());
    EXPECT_EQ(reader.next().error(), tooLong.error());
}

TEST(Framing, ALengthThatNeverEndsIsAnErrorThatStaysAndOneThatIsCutIsNone) {
    FrameReader reader;
    reader.append(std::string(3, '\xFF'));
    ASSERT_TRUE(reader.next());
    EXPECT_FALSE(*reader.next());
    EXPECT_TRUE(reader.isInsideMessage());

    reader.append("\xFF");
    ASSERT_FALSE(reader.next());
    EXPECT_EQ(reader.next().error().domain, "WireError");
    reader.append(framed("good"));
    EXPECT_FALSE(reader.next());
}

}  // namespace
