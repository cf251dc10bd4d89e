#pragma once

// The rule by which every timeline entry picks its colours.

#include "platform/base/color.h"
#include "platform/runtime/runtime.h"

namespace extension {

struct EntryColors {
    bool isDark = true;
    platform::Color background;
    platform::Color text;
    platform::Color dateTime;
};

/// For an entry that is made now: by the stored choice, and by the clock in India when the choice is
/// automatic. A store that is empty or cannot be read gives the dark colours. Any thread.
EntryColors entryColors(const platform::Runtime& runtime);

}  // namespace extension
