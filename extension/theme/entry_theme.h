#pragma once

// The rule by which every timeline entry picks its colours.

#include "platform/runtime/runtime.h"

namespace extension {

/// Whether an entry that is made now is dark: by the stored choice, and by the clock in India when the
/// choice is automatic. An unreadable or empty store gives dark. Any thread.
bool isDarkTheme(const platform::Runtime& runtime);

}  // namespace extension
