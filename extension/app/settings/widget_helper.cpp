#include "extension/app/settings/widget_helper.h"

#include "extension/app/settings/store_keys.h"

namespace extension {

using platform::PropertyList;
using platform::Result;
using platform::UserDefaults;

namespace {

/// Whether the contract expires after today: its "expiryDate" is a text of the form "yyyy-MM-dd" and the
/// midnight at the start of that day, in the device's zone, is still to come.
bool isUnexpiredFuture(const PropertyList::Dictionary& future, const platform::Runtime& runtime) {
    const auto entry = future.find("expiryDate");
    const std::string* text = entry == future.end() ? nullptr : entry->second.text();
    const auto day = text ? platform::parseDay(*text) : std::nullopt;
    const auto midnight = day ? runtime.calendar().midnight(*day) : std::nullopt;
    // Midnight at the start of the expiry day: a contract that expires today is gone today.
    return midnight && *midnight > runtime.now();
}

/// The contracts to keep, in their order; nothing when there is nothing to remove.
std::optional<PropertyList::Array> prunedFutures(const std::optional<PropertyList>& stored,
                                                 const platform::Runtime& runtime) {
    const auto futures = platform::arrayOfDictionaries(stored);
    if (!futures || futures->empty()) return std::nullopt;
    // Without zone data no date has a midnight, and every contract would look expired.
    if (!runtime.calendar().startOfDay(runtime.now())) return std::nullopt;
    PropertyList::Array kept;
    for (const PropertyList::Dictionary& future : *futures) {
        if (isUnexpiredFuture(future, runtime)) kept.emplace_back(future);
    }
    if (kept.size() == futures->size()) return std::nullopt;
    return kept;
}

}  // namespace

void pruneExpiredFutures(const platform::Runtime& runtime) {
    const auto defaults = sharedDefaults(runtime);
    if (!defaults) return;
    // Looks without the write lock first, since mostly there is nothing to do.
    const auto stored = (*defaults)->object(keys::futureWidget);
    if (!stored || !prunedFutures(*stored, runtime)) return;

    // The phone app may have written since, so the list is read again under the lock.
    const auto done = (*defaults)->transaction([&](UserDefaults::Transaction& store) -> Result<void> {
        const auto current = TRY(store.object(keys::futureWidget));
        const auto kept = prunedFutures(current, runtime);
        return kept ? store.set(keys::futureWidget, *kept) : Result<void>();
    });
    if (!done) runtime.log().write("Expired futures could not be removed: " + done.error().message);
}

}  // namespace extension
