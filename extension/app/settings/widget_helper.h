#pragma once

// Housekeeping of the chosen assets.

#include "extension/app/settings/process_state.h"
#include "platform/runtime/runtime.h"

namespace extension {

/// Removes the expired contracts from the chosen futures. Writes only when there is one; leaves a
/// value that is not an array of dictionaries, and a store that cannot be read, as it is. Any thread.
void pruneExpiredFutures(const platform::Runtime& runtime);

class WidgetHelper {
public:
    /// Selector `checkAndRemoveExpiredFutureWidgets`.
    static void checkAndRemoveExpiredFutureWidgets(ProcessState& state = ProcessState::shared()) {
        pruneExpiredFutures(state.runtime);
    }
};

}  // namespace extension
