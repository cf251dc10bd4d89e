#include "host/cli/gallery_command.h"

#include <filesystem>
#include "host/cli/output.h"
#include "host/gallery/state_sheet.h"

namespace host {

platform::Result<void> drawGalleryFolder(const platform::ProcessOptions& process, const std::string& folder,
                                         const std::optional<std::string>& comparedWith) {
    SheetOptions options{.folder = folder, .process = process};
    if (comparedWith) options.comparedWith = *comparedWith;
    if (process.isVerbose) options.log = [](const std::string& line) { printLine(line); };
    const platform::Result<SheetOutcome> outcome = drawStateSheet(options);
    if (!outcome) return tl::unexpected(outcome.error());
    auto printed = printText(std::to_string(outcome->pictures) + " pictures, see " +
                             (options.folder / "index.html").string() + "\n");
    if (!printed || outcome->isLikeBefore()) return printed;
    return platform::failure("GalleryError", 2,
                             "pictures: " + std::to_string(outcome->changed) + " changed, " +
                                 std::to_string(outcome->added) + " new, " +
                                 std::to_string(outcome->missing) + " no longer drawn");
}

}  // namespace host
