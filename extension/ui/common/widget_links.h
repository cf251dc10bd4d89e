#pragma once

// Where a tap leads: texts that should be addresses, and what happens to text that is not an address.

#include <string>
#include <string_view>
#include "platform/view/view.h"

namespace extension {

/// Whether a tap can lead there.
bool isAddress(std::string_view text);

/// `label` as a link to `address`; fatal when that is not an address.
platform::View requiredLink(std::string_view address, const platform::View& label);

/// `label` with the whole widget's link to `address`; fatal when that is not an address.
platform::View requiredWidgetURL(std::string_view address, const platform::View& label);

}  // namespace extension
