#pragma once

// Property lists that another maker wrote, made anew for each test.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include "platform/base/files.h"
#include "tests/support/files.h"
#include "tests/support/temporary_directory.h"

namespace platform {

using tests::contentOf;

/// Runs a command of property_lists.py; true when it is content.
inline bool otherMaker(const std::string& command, const std::filesystem::path& place) {
    const std::string line = "python3 " BRIGHTLEDGER_SOURCE_DIR
                             "/tests/platform/settings/property_lists.py " +
                             command + " '" + place.string() + "'";
    return std::system(line.c_str()) == 0;
}

}  // namespace platform
