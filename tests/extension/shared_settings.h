#pragma once

// What a test keeps for the extension, or finds kept by it, in the settings that it shares with the app.

#include <gtest/gtest.h>

#include <optional>
#include <string_view>
#include "extension/app/settings/store_keys.h"
#include "platform/settings/property_list.h"

namespace extension {

inline void store(const platform::Runtime& runtime, std::string_view key,
                  const platform::PropertyList& value) {
    ASSERT_TRUE(sharedDefaults(runtime).value()->set(key, value));
}

inline std::optional<platform::PropertyList> stored(const platform::Runtime& runtime, std::string_view key) {
    return sharedDefaults(runtime).value()->object(key).value();
}

}  // namespace extension
