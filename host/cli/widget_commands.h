#pragma once

// The commands that ask the extension and show what it answers.

#include <array>
#include <optional>
#include <string>
#include <utility>
#include "host/process/extension_process.h"
#include "platform/runtime/process_options.h"

namespace host {

/// What the extension can be asked for, by the names that the command line uses.
inline constexpr std::array<std::pair<const char*, EntryRequest>, 3> entryRequests{
    {{"placeholder", EntryRequest::placeholder},
     {"snapshot", EntryRequest::snapshot},
     {"timeline", EntryRequest::timeline}}};

struct WidgetQuestion {
    std::string kind;
    std::string family;
    EntryRequest request = EntryRequest::timeline;
    /// Print memory and times in one line on standard error.
    bool isMeasured = false;
};

struct DrawingOptions {
    /// Pixels per point: 1, 2 or 3.
    int scale = 3;
    /// A file that ends in one of `pictureEndings()`; absent: the display list as JSON on standard output.
    std::optional<std::string> output;
};

/// A view tree in a file, and the widget's size as "WxH".
struct TreeFile {
    std::string file;
    std::string size;
};

// All of them print to standard output. An error of the domain "UsageError" is wrong usage.

platform::Result<void> printGallery(const platform::ProcessOptions& process);
/// Draws the gallery into `folder` and prints how many pictures it has. When pictures differ from the earlier
/// gallery, the error says how many.
platform::Result<void> drawGallery(const platform::ProcessOptions& process, const std::string& folder,
                                   const std::optional<std::string>& comparedWith);
platform::Result<void> printEntries(const platform::ProcessOptions& process, const WidgetQuestion& question);
platform::Result<void> printView(const platform::ProcessOptions& process, const WidgetQuestion& question);
platform::Result<void> drawWidget(const platform::ProcessOptions& process, const WidgetQuestion& question,
                                  const DrawingOptions& drawing);
platform::Result<void> drawTree(const platform::ProcessOptions& process, const TreeFile& tree,
                                const DrawingOptions& drawing);
platform::Result<void> layoutTree(const platform::ProcessOptions& process, const TreeFile& tree, int scale);

}  // namespace host
