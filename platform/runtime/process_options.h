#pragma once

// The options that all our programs share, how they are read from the command line, and the runtime that they
// and the environment describe.

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>
#include "platform/base/result.h"
#include "platform/runtime/runtime.h"

namespace platform {

/// The common options as given on the command line; absent ones come from the environment.
struct ProcessOptions {
    std::optional<std::string> dataDirectory = {};
    std::optional<std::string> infoPlist = {};
    std::optional<std::string> now = {};
    std::optional<std::string> osVersion = {};
    std::optional<std::string> screen = {};
    std::optional<std::string> locale = {};
    std::optional<std::string> timeZone = {};
    bool isVerbose = false;
};

/// One common option that has a value, and the environment variable that it overrides.
struct CommonOption {
    const char* name;
    const char* variable;
    std::optional<std::string> ProcessOptions::*value;
    bool isPath = false;
};

inline constexpr std::array commonOptions{
    CommonOption{"--data-dir", "BRIGHTLEDGER_DATA_DIR", &ProcessOptions::dataDirectory, true},
    CommonOption{"--info-plist", "BRIGHTLEDGER_INFO_PLIST", &ProcessOptions::infoPlist, true},
    CommonOption{"--now", "BRIGHTLEDGER_NOW", &ProcessOptions::now},
    CommonOption{"--os-version", "BRIGHTLEDGER_OS_VERSION", &ProcessOptions::osVersion},
    CommonOption{"--screen", "BRIGHTLEDGER_SCREEN", &ProcessOptions::screen},
    CommonOption{"--locale", "BRIGHTLEDGER_LOCALE", &ProcessOptions::locale},
    CommonOption{"--time-zone", "BRIGHTLEDGER_TIME_ZONE", &ProcessOptions::timeZone},
};

/// The option's value, or its variable's; an empty variable counts as unset.
std::optional<std::string> chosenOption(const ProcessOptions& options,
                                        std::optional<std::string> ProcessOptions::*value);

/// Options come before environment variables, and those before the system's settings; an empty variable
/// counts as unset. The bundle comes from `installedInfoPlist` unless another file is named, and is empty
/// when the installed file is not there. The widget center and the seed of identifiers stay unset.
///
/// Errors of the domain "UsageError" are wrong usage: an instant without an offset, a version that is
/// not a number, an unknown screen or zone. A file that cannot be read is a "PropertyListError".
Result<RuntimeOptions> runtimeOptions(const ProcessOptions& options,
                                      const std::filesystem::path& installedInfoPlist);

/// The same options as command-line arguments for a child process. Paths are absolute.
std::vector<std::string> arguments(const ProcessOptions& options);

/// The folder of the running program's file.
std::filesystem::path programDirectory();

/// The folder of the programs' resources: "resources" beside them in a build, or
/// "../share/brightledger" once installed.
std::filesystem::path resourcesDirectory();

/// Takes the common options ("--now INSTANT", "--now=INSTANT", ...) out of `arguments`, wherever they are
/// before a "--", and leaves the rest in order. The last one of several counts. A missing value is a
/// "UsageError".
Result<ProcessOptions> takeProcessOptions(std::vector<std::string>& arguments);

}  // namespace platform
