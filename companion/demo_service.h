#pragma once

// What a demo service offers to the phone app: users to sign in as, assets to choose, faults to play.

#include <optional>
#include <string>
#include <vector>
#include "companion/user_choices.h"
#include "platform/base/result.h"
#include "platform/runtime/runtime.h"
#include "platform/settings/property_list.h"

namespace companion {

struct DemoUser {
    std::string name;
    std::string description;
    Session session;
};

/// An asset of the catalogue with the record that the settings store would hold.
struct DemoAsset {
    /// As in `assetKinds`.
    std::string type;
    /// Its price identifier.
    std::string key;
    std::string title;
    platform::PropertyList record;
};

/// The demo service at one origin, such as "http://127.0.0.1:4000". Every call waits for the answer, at most
/// five seconds; any thread. Errors (domain "DemoError") are one line for people.
class DemoService {
public:
    /// `runtime` must outlive it.
    DemoService(const platform::Runtime& runtime, std::string origin)
        : runtime_(runtime), origin_(std::move(origin)) {}

    platform::Result<std::vector<DemoUser>> users() const;
    platform::Result<std::vector<DemoAsset>> assets() const;
    platform::Result<void> setFault(const std::string& name) const;

private:
    platform::Result<std::string> ask(const std::string& path, std::optional<std::string> content = {}) const;

    const platform::Runtime& runtime_;
    const std::string origin_;
};

}  // namespace companion
