#pragma once

// The sheet of states: every widget in every family, theme and state, and what changed since an earlier
// sheet.

#include <cstddef>
#include <filesystem>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include "host/gallery/sheet_picture.h"
#include "host/layout/display_list.h"
#include "host/process/extension_process.h"
#include "platform/base/result.h"
#include "platform/runtime/process_options.h"
#include "platform/view/screen.h"

namespace host {

/// Puts `data` into `page`, which is resources/gallery/index.html and describes in its script what it reads.
/// The sizes and outlines of the families are added. No text in `data` can end the element that holds it.
std::string sheetPage(std::string page, nlohmann::ordered_json data, const platform::Screen& screen);

struct SheetOptions {
    /// Made when it does not exist. Pictures of the same names are replaced.
    std::filesystem::path folder;
    /// An earlier gallery, which may be `folder` itself.
    std::optional<std::filesystem::path> comparedWith = {};
    /// What the extension runs in. The sheet brings its own settings store and service; by default it is
    /// Monday noon in India and the locale is en_IN.
    platform::ProcessOptions process = {};
    /// Where the extension and the demo service are.
    std::filesystem::path programs = platform::programDirectory();
    std::filesystem::path resources = platform::resourcesDirectory();
    /// Pixels per point.
    int scale = 2;
    /// Receives the extension's log, on a separate thread.
    std::function<void(std::string line)> log = {};
    /// Receives what every picture was drawn from, on the calling thread. The answer then has its entries
    /// too.
    std::function<void(const SheetPicture& picture, const EntryAnswer& answer, const DisplayList& list)>
        drawn = {};
};

struct SheetOutcome {
    std::size_t pictures = 0;
    /// Compared with the earlier gallery.
    std::size_t changed = 0;
    std::size_t added = 0;
    std::size_t missing = 0;

    bool isLikeBefore() const { return changed + added + missing == 0; }
    /// "1 changed, 0 new, 2 no longer drawn".
    std::string differences() const;
};

/// Writes "<kind>-<family>-<theme>-<state>.png" for everything that the extension offers, and "index.html",
/// which shows them side by side and opens from the file system. A comparison puts the earlier pictures of
/// what changed or is missing into "before/".
///
/// Errors come from the demo service, the extension, the settings store and the painter, or have the domain
/// "GalleryError" when a file cannot be written or there is no earlier gallery to compare with.
platform::Result<SheetOutcome> drawStateSheet(const SheetOptions& options);

}  // namespace host
