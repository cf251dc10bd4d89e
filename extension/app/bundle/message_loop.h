#pragma once

// The extension's conversation with its host: reads questions, asks the widgets, writes answers.

#include "extension/app/bundle/perch_widget_bundle.h"
#include "platform/base/result.h"
#include "platform/runtime/runtime.h"

namespace extension {

/// Says hello on `output`, then answers what comes from `input` until its end; what is still under way then
/// is dropped. An error (domain "WireError") when the host speaks another version or sends something that is
/// not a message.
///
/// Pings are answered at once. Everything else is begun in the order in which it came, on the loop's own
/// thread. Answers go out as soon as they are there, from any thread.
platform::Result<void> runMessageLoop(const platform::Runtime& runtime, const PerchWidgetBundle& bundle,
                                      int input, int output);

}  // namespace extension
