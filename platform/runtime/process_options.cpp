#include "platform/runtime/process_options.h"

#include <pwd.h>
#include <unistd.h>
#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <utility>
#include "platform/base/alternatives.h"
#include "platform/base/ascii.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

/// A variable's value; an empty one counts as unset.
std::optional<std::string> environmentValue(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0') return std::nullopt;
    return value;
}

struct Setting {
    std::string name;
    std::optional<std::string> value;
};

/// An option overrides its variable; `name` is the one that was used, for messages.
Setting choose(const ProcessOptions& options, std::optional<std::string> ProcessOptions::*value) {
    const CommonOption& option = *std::ranges::find(commonOptions, value, &CommonOption::value);
    if (options.*value) return {option.name, options.*value};
    return {option.variable, environmentValue(option.variable)};
}

tl::unexpected<Error> wrongUsage(const Setting& setting, std::string_view expected) {
    return failure("UsageError", 2, setting.name + " \"" + *setting.value + "\" " + std::string(expected));
}

fs::path homeDirectory() {
    if (const auto home = environmentValue("HOME")) return *home;
    const passwd* user = getpwuid(getuid());
    return user == nullptr || user->pw_dir == nullptr ? fs::path() : fs::path(user->pw_dir);
}

fs::path defaultDataDirectory() {
    // The XDG rules ignore a base directory that is not absolute.
    const fs::path base = environmentValue("XDG_DATA_HOME").value_or("");
    return (base.is_absolute() ? base : homeDirectory() / ".local" / "share") / "brightledger";
}

fs::path absolutePath(const fs::path& path) {
    std::error_code error;
    fs::path absolute = fs::absolute(path, error);
    return error ? path : absolute;
}

Result<BundleInformation> readBundle(const std::optional<std::string>& named, const fs::path& installed) {
    if (named) return BundleInformation::read(*named);
    std::error_code error;
    if (!fs::exists(installed, error)) return BundleInformation{};
    return BundleInformation::read(installed);
}

}  // namespace

std::optional<std::string> chosenOption(const ProcessOptions& options,
                                        std::optional<std::string> ProcessOptions::*value) {
    return choose(options, value).value;
}

Result<RuntimeOptions> runtimeOptions(const ProcessOptions& options, const fs::path& installedInfoPlist) {
    RuntimeOptions result;

    const Setting directory = choose(options, &ProcessOptions::dataDirectory);
    if (directory.value && directory.value->empty())
        return wrongUsage(directory, "is not the name of a folder");
    result.dataDirectory = directory.value ? absolutePath(*directory.value) : defaultDataDirectory();

    const Setting now = choose(options, &ProcessOptions::now);
    if (now.value) {
        result.now = parseInstant(*now.value);
        if (!result.now) return wrongUsage(now, "is not an ISO 8601 instant with an offset or Z");
    }

    const Setting version = choose(options, &ProcessOptions::osVersion);
    if (version.value) {
        result.osVersion = parsedNumber<int>(*version.value).value_or(0);
        if (result.osVersion < 1) return wrongUsage(version, "is not a version number");
    }

    const Setting screen = choose(options, &ProcessOptions::screen);
    if (screen.value) {
        const auto known = screenNamed(*screen.value);
        if (!known) {
            std::vector<std::string> names;
            for (const Screen& each : screens) names.emplace_back(each.name);
            return wrongUsage(screen, "is not a known screen; choose " + alternatives(names));
        }
        result.screen = *known;
    }

    const Setting locale = choose(options, &ProcessOptions::locale);
    if (locale.value && locale.value->empty()) return wrongUsage(locale, "is not the name of a locale");
    result.locale = locale.value ? Locale{*locale.value} : systemLocale();

    const Setting zone = choose(options, &ProcessOptions::timeZone);
    result.timeZone = zone.value ? TimeZone{*zone.value} : systemTimeZone();
    if (zone.value && !isTimeZone(*zone.value)) return wrongUsage(zone, "is not a known time zone");

    const Setting infoPlist = choose(options, &ProcessOptions::infoPlist);
    BundleInformation bundle = TRY(readBundle(infoPlist.value, installedInfoPlist));
    result.bundle = std::move(bundle);

    if (options.isVerbose) result.log = DebugLog::standardError();
    return result;
}

std::vector<std::string> arguments(const ProcessOptions& options) {
    std::vector<std::string> result;
    for (const CommonOption& option : commonOptions) {
        if (const auto& value = options.*option.value)
            result.insert(result.end(),
                          {option.name, option.isPath ? absolutePath(*value).string() : *value});
    }
    if (options.isVerbose) result.emplace_back("--verbose");
    return result;
}

fs::path programDirectory() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).parent_path();
}

fs::path resourcesDirectory() {
    const fs::path beside = programDirectory() / "resources";
    std::error_code error;
    if (fs::is_directory(beside, error)) return beside;
    return programDirectory().parent_path() / "share" / "brightledger";
}

Result<ProcessOptions> takeProcessOptions(std::vector<std::string>& arguments) {
    ProcessOptions options;
    std::vector<std::string> rest;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string& argument = arguments[i];
        if (argument == "--") {
            rest.insert(rest.end(), arguments.begin() + static_cast<std::ptrdiff_t>(i), arguments.end());
            break;
        }
        const std::size_t equals = argument.find('=');
        const auto option = std::ranges::find(commonOptions, std::string_view(argument).substr(0, equals),
                                              &CommonOption::name);
        if (argument == "--verbose") {
            options.isVerbose = true;
        } else if (option == commonOptions.end()) {
            rest.push_back(std::move(argument));
        } else if (equals != std::string::npos) {
            options.*(option->value) = argument.substr(equals + 1);
        } else if (i + 1 < arguments.size()) {
            options.*(option->value) = std::move(arguments[++i]);
        } else {
            return failure("UsageError", 2, argument + " needs a value");
        }
    }
    arguments = std::move(rest);
    return options;
}

}  // namespace platform
