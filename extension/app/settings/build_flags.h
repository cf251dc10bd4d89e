#pragma once

// Production or staging: which of the service's hosts this build talks to.

#include <string>
#include "platform/runtime/runtime.h"
#include "platform/settings/bundle_information.h"

namespace extension {

struct BuildFlags {
    bool isProduction = true;
    bool isAdTestMode = false;

    bool operator==(const BuildFlags&) const = default;
};

/// From the entries "ENVIRONMENT" (exactly "staging" is staging, everything else is production) and
/// "AD_TEST_MODE" (exactly "TRUE").
BuildFlags buildFlags(const platform::BundleInformation& bundle);
/// Those of this process, read once. Called by the phone app; nothing here does.
const BuildFlags& buildFlags();

// Origins with their scheme and without a trailing slash; empty when the bundle names none, so that
// every request to it fails.

/// The origin of the quotes, in the environment of this build.
std::string apiHost(const platform::Runtime& runtime);
/// The origin of the news, in the environment of this build.
std::string webHost(const platform::Runtime& runtime);
/// The production origin of the news, whatever the environment.
std::string productionWebHost(const platform::Runtime& runtime);

}  // namespace extension
