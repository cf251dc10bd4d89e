#include "platform/wire/conversion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include "platform/view/view_json.h"

namespace {

using brightledger::wire::Answer;
using platform::Instant;
using platform::TimelineReloadPolicy;
using platform::View;
using namespace std::chrono_literals;

TEST(Conversion, ATreeCrossesWithItsPicturesBesideIt) {
    const platform::Bytes picture(std::string("\x89PNG\0\xFF", 6));
    const View view = platform::VStack({.spacing = 2.0}, platform::Text("₹ 1,234.50"),
                                       platform::Image(picture, "Placeholder", {.isResizable = true}),
                                       platform::Image(picture, "Placeholder"))
                          .padding(3.0);

    Answer::Entry message;
    platform::archive(view, message);
    ASSERT_EQ(message.attachments_size(), 2);
    EXPECT_EQ(message.attachments(0), picture.view());

    Answer::Entry received;
    ASSERT_TRUE(received.ParseFromString(message.SerializeAsString()));
    const auto crossed = platform::archivedView(received);
    ASSERT_TRUE(crossed && *crossed);
    EXPECT_EQ(platform::viewJson(**crossed), platform::viewJson(view));
}

TEST(Conversion, ATextThatIsNoUtf8CrossesWithAReplacementCharacter) {
    Answer::Entry message;
    platform::archive(platform::Text("a\xFFz").body(), message);
    const auto crossed = platform::archivedView(message);
    ASSERT_TRUE(crossed && *crossed);
    EXPECT_EQ(std::get<platform::node::Text>((*crossed)->kind()).runs.front().text, "a\uFFFDz");
}

TEST(Conversion, NoTreeIsNothingAndABrokenOneIsAnError) {
    Answer::Entry message;
    EXPECT_EQ(platform::archivedView(message)->has_value(), false);
    for (const char* broken : {"{", "[]", R"({"type":"hologram"})", R"({"type":"image","attachment":7})"}) {
        message.set_view(broken);
        EXPECT_FALSE(platform::archivedView(message)) << broken;
    }
}

TEST(Conversion, MomentsAndPoliciesKeepEveryTickOnBothSidesOf1970) {
    for (const Instant instant :
         {Instant{}, Instant{1ns}, Instant{-1ns}, Instant{1'795'000'000'123'456'789ns}}) {
        EXPECT_EQ(platform::instantFromNanoseconds(platform::nanoseconds(instant)), instant);
        Answer message;
        platform::setPolicy(TimelineReloadPolicy::after(instant), message);
        EXPECT_EQ(platform::policyOf(message), TimelineReloadPolicy::after(instant));
    }
    EXPECT_EQ(platform::policyOf(Answer{}), TimelineReloadPolicy::atEnd());
}

}  // namespace
