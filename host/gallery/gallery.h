#pragma once

// Draws every widget in every family, theme and state, and tells what differs from another time.

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include "platform/base/result.h"
#include "platform/runtime/process_options.h"

namespace host {

struct GalleryOptions {
    /// Made where it is not there; pictures of the same names are replaced.
    std::filesystem::path folder;
    /// An earlier gallery, which may be `folder` itself.
    std::optional<std::filesystem::path> comparedWith = {};
    /// What the extension runs in. The settings store and the service are the gallery's own; where
    /// nobody says otherwise it is a Monday noon in India and the device speaks en_IN.
    platform::ProcessOptions process = {};
    /// Where the extension and the demo service are.
    std::filesystem::path programs = platform::programDirectory();
    std::filesystem::path resources = platform::resourcesDirectory();
    /// Pixels a point.
    int scale = 2;
    /// Takes the extension's log, on a thread of its own.
    std::function<void(std::string line)> log = {};
};

struct GalleryOutcome {
    std::size_t pictures = 0;
    /// Against the earlier gallery.
    std::size_t changed = 0;
    std::size_t added = 0;
    std::size_t missing = 0;

    bool isLikeBefore() const { return changed + added + missing == 0; }
};

/// Writes "<kind>-<family>-<theme>-<state>.png" for all that the extension offers, and "index.html",
/// which shows them side by side and needs no script. A comparison puts the earlier pictures of what changed
/// or is missing into "before/".
///
/// Errors are those of the demo service, the extension, the settings store and the painter, or of the
/// domain "GalleryError" when a file cannot be written or the earlier gallery is none.
platform::Result<GalleryOutcome> drawGallery(const GalleryOptions& options);

}  // namespace host
