#pragma once

// A home screen with its extension, its store and its service, living through days in virtual time while
// everything around it fails, and the rules that it must keep all the while.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace simulation {

struct Findings {
    std::uint64_t steps = 0;
    /// Differs when anything that happened differs.
    std::uint64_t fingerprint = 14695981039346656037U;
    /// The first rule that was broken; empty when all were kept.
    std::string broken = {};
    /// In use by the process after the second and after the last day.
    std::size_t bytesOnDayTwo = 0;
    std::size_t bytesOnLastDay = 0;
    /// What happened last before it was.
    std::vector<std::string> lastEvents = {};
};

/// Lives through `days` with what `seed` brings. `folder` must be empty.
Findings live(std::uint64_t seed, int days, const std::filesystem::path& folder);

}  // namespace simulation
