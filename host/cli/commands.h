#pragma once

// The commands that play the phone app, and those that ask a running home screen.

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>
#include "host/process/extension_process.h"
#include "platform/base/result.h"
#include "platform/runtime/process_options.h"

namespace host {

/// Calls a published operation: `words` are its class, its selector and its arguments. Without words it lists
/// all operations; a single "-" reads one call per line from standard input until one fails.
platform::Result<void> callOperation(const platform::ProcessOptions& process,
                                     const std::vector<std::string>& words);

/// Signs a user of the demo service in, as the phone app would; "none" signs out. A running home screen asks
/// its own service; otherwise the information dictionary's web host is asked for its users.
platform::Result<void> signInUser(const platform::ProcessOptions& process, const std::string& name);

/// Prints what the running home screen recorded about a widget's last reload.
platform::Result<void> explainReloads(const platform::ProcessOptions& process, const std::string& kind);

/// Replaces this process by the demo service; returns only when that fails.
platform::Result<void> becomeDemo(int port);

// An error of the domain "UsageError" is wrong usage.

/// Writes to standard output when no file is named.
platform::Result<void> exportStore(const platform::ProcessOptions& process,
                                   const std::optional<std::string>& file);
/// Sets all keys of the file, or none of them.
platform::Result<void> importStore(const platform::ProcessOptions& process, const std::string& file);
platform::Result<void> getKey(const platform::ProcessOptions& process, const std::string& key);
/// `type` is string, integer, real, boolean, data, date or plist.
platform::Result<void> setKey(const platform::ProcessOptions& process, const std::string& key,
                              const std::string& type, const std::string& value);
platform::Result<void> removeKey(const platform::ProcessOptions& process, const std::string& key);
platform::Result<void> repair(const platform::ProcessOptions& process);

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
