#pragma once

// Questions to the extension and its answers, as messages and as values.

#include <vector>
#include "host/process/extension_process.h"
#include "platform/base/result.h"
#include "platform/wire/extension.pb.h"

namespace host {

brightledger::wire::Request askRequest(const EntryQuestion& question);

// Errors are of the domain "ExtensionError", and "UsageError" where the question named an unknown widget.

platform::Result<EntryAnswer> entryAnswer(const brightledger::wire::Reply& reply, EntryRequest request);
platform::Result<std::vector<WidgetListing>> widgetListings(const brightledger::wire::Reply& reply);

}  // namespace host
