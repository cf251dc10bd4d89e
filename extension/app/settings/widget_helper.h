#pragma once

// Housekeeping of the chosen assets.

#include "platform/runtime/runtime.h"
#include "platform/settings/property_list.h"

namespace extension {

/// Whether the contract expires after today: its "expiryDate" is a text of the form "yyyy-MM-dd" and the
/// midnight at the start of that day, in the device's zone, is still to come.
bool isUnexpiredFuture(const platform::PropertyList::Dictionary& future, const platform::Runtime& runtime);

/// Removes the expired contracts from the chosen futures. Writes only when there is one; leaves a
/// value that is not an array of dictionaries, and a store that cannot be read, as it is. Any thread.
void pruneExpiredFutures(const platform::Runtime& runtime);

class WidgetHelper {
public:
    /// Selector `checkAndRemoveExpiredFutureWidgets`.
    static void checkAndRemoveExpiredFutureWidgets();
};

}  // namespace extension
