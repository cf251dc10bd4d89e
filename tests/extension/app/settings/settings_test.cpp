#include <gtest/gtest.h>
#include <string>
#include <vector>
#include "extension/app/settings/build_flags.h"
#include "extension/app/settings/store_keys.h"
#include "extension/app/settings/widget_helper.h"
#include "extension/app/settings/widget_names.h"
#include "tests/extension/shared_settings.h"
#include "tests/support/test_runtime.h"

namespace extension {
namespace {

using platform::PropertyList;
using tests::TestRuntime;

TEST(BuildFlags, OnlyTheExactWordsChangeThem) {
    const struct {
        std::optional<PropertyList> environment;
        std::optional<PropertyList> adTestMode;
        BuildFlags flags;
    } cases[] = {
        {std::nullopt, std::nullopt, {true, false}},
        {PropertyList("prod"), PropertyList("FALSE"), {true, false}},
        {PropertyList("staging"), PropertyList("TRUE"), {false, true}},
        {PropertyList("Staging"), PropertyList("True"), {true, false}},
        {PropertyList("staging "), PropertyList("YES"), {true, false}},
        {PropertyList(""), PropertyList(""), {true, false}},
        {PropertyList(1), PropertyList(true), {true, false}},
    };
    for (const auto& [environment, adTestMode, flags] : cases) {
        platform::BundleInformation bundle;
        if (environment) bundle.entries.emplace("ENVIRONMENT", *environment);
        if (adTestMode) bundle.entries.emplace("AD_TEST_MODE", *adTestMode);
        EXPECT_EQ(buildFlags(bundle), flags);
    }
}

TEST(BuildFlags, TheEnvironmentChoosesTheHostsButNotTheOneOfTheNewsPage) {
    const PropertyList::Dictionary staging{{"ENVIRONMENT", "staging"},
                                           {"StagingAPIHost", "https://api.staging.invalid"},
                                           {"StagingWebHost", "https://staging.invalid"}};
    const TestRuntime tested{
        {.apiHost = "https://api.invalid", .webHost = "https://web.invalid", .information = staging}};
    EXPECT_EQ(apiHost(tested), "https://api.staging.invalid");
    EXPECT_EQ(webHost(tested), "https://staging.invalid");
    EXPECT_EQ(moreNewsLink(tested),
              "brightledgerwidget://news/?isArticle=0&url=https://web.invalid/sports/All-News/news/");

    const TestRuntime sold{{.apiHost = "https://api.invalid", .webHost = "https://web.invalid"}};
    EXPECT_EQ(apiHost(sold), "https://api.invalid");
    EXPECT_EQ(webHost(sold), "https://web.invalid");

    const TestRuntime bare;
    EXPECT_EQ(apiHost(bare), "");
    EXPECT_EQ(webHost(bare), "");
}

PropertyList future(const char* title, const PropertyList& expiryDate) {
    return PropertyList::Dictionary{{"title", title}, {"expiryDate", expiryDate}};
}

TEST(ExpiredFutures, WhatExpiresTodayIsGoneTodayAndTheRestKeepsItsOrder) {
    // 23:59:59 of the 22nd in India.
    const TestRuntime runtime{{.now = "2026-11-22T18:29:59Z"}};
    store(runtime, keys::futureWidget,
          PropertyList::Array{
              future("far", "9999-12-31"),
              future("today", "2026-11-22"),
              future("tomorrow", "2026-11-23"),
              future("past", "2026-11-21"),
              future("short", "2026-12-1"),
              future("no day", "2026-11-31"),
              future("with time", "2026-12-31T00:00"),
              future("blank", " 2026-12-31"),
              future("number", 20261231),
              PropertyList::Dictionary{{"title", "without"}},
              future("leap", "2028-02-29"),
          });
    pruneExpiredFutures(runtime);
    EXPECT_EQ(stored(runtime, keys::futureWidget),
              PropertyList(PropertyList::Array{future("far", "9999-12-31"), future("tomorrow", "2026-11-23"),
                                               future("short", "2026-12-1"), future("leap", "2028-02-29")}));

    // Midnight of the 23rd: not later than now.
    runtime.clock().set(*platform::parseInstant("2026-11-22T18:30:00Z"), 0.0);
    pruneExpiredFutures(runtime);
    EXPECT_EQ(stored(runtime, keys::futureWidget)->array()->size(), 3U);
}

TEST(ExpiredFutures, TheDeviceDecidesWhenADayBegins) {
    const TestRuntime runtime{{.now = "2026-11-22T20:00:00Z", .timeZone = {"America/New_York"}}};
    store(runtime, keys::futureWidget, PropertyList::Array{future("tomorrow there", "2026-11-23")});
    pruneExpiredFutures(runtime);
    EXPECT_EQ(stored(runtime, keys::futureWidget)->array()->size(), 1U);
}

TEST(ExpiredFutures, NothingIsWrittenWhenNothingGoes) {
    const PropertyList expired = future("past", "2020-01-01");
    const struct {
        const char* name;
        PropertyList value;
    } cases[] = {
        {"all to come", PropertyList::Array{future("far", "2030-01-01")}},
        {"empty", PropertyList::Array{}},
        {"a text", "2020-01-01"},
        {"a dictionary", *expired.dictionary()},
        {"not only dictionaries", PropertyList::Array{expired, "text"}},
    };
    for (const auto& [name, value] : cases) {
        const TestRuntime runtime;
        store(runtime, keys::futureWidget, value);
        const TestRuntime other{{.dataDirectory = runtime.dataDirectory()}};
        // While another process writes, a write of ours would fail.
        ASSERT_TRUE(sharedDefaults(other).value()->transaction([&](auto&) -> platform::Result<void> {
            pruneExpiredFutures(runtime);
            return {};
        }));
        EXPECT_FALSE(runtime.logged("could not be removed")) << name;
        EXPECT_EQ(stored(runtime, keys::futureWidget), value) << name;
    }
    const TestRuntime runtime;
    pruneExpiredFutures(runtime);
    EXPECT_EQ(stored(runtime, keys::futureWidget), std::nullopt);
}

TEST(ExpiredFutures, AZoneThatNobodyKnowsCostsNoFuture) {
    const TestRuntime runtime{{.timeZone = {"No/Zone"}}};
    store(runtime, keys::futureWidget,
          PropertyList::Array{future("past", "2020-01-01"), future("far", "2030-01-01")});
    pruneExpiredFutures(runtime);
    EXPECT_EQ(stored(runtime, keys::futureWidget)->array()->size(), 2U);
}

}  // namespace
}  // namespace extension
