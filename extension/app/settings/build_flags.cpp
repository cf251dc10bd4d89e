#include "extension/app/settings/build_flags.h"

namespace extension {
namespace {

std::string host(const platform::Runtime& runtime, std::string_view production, std::string_view staging) {
    const bool isProduction = buildFlags(runtime.bundle()).isProduction;
    return runtime.bundle().text(isProduction ? production : staging).value_or("");
}

}  // namespace

BuildFlags buildFlags(const platform::BundleInformation& bundle) {
    return {.isProduction = bundle.text("ENVIRONMENT") != "staging",
            .isAdTestMode = bundle.text("AD_TEST_MODE") == "TRUE"};
}

const BuildFlags& buildFlags() {
    static const BuildFlags flags = buildFlags(platform::Runtime::process().bundle());
    return flags;
}

std::string apiHost(const platform::Runtime& runtime) {
    return host(runtime, "ProductionAPIHost", "StagingAPIHost");
}

std::string webHost(const platform::Runtime& runtime) {
    return host(runtime, "ProductionWebHost", "StagingWebHost");
}

std::string productionWebHost(const platform::Runtime& runtime) {
    return runtime.bundle().text("ProductionWebHost").value_or("");
}

}  // namespace extension
