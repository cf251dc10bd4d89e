#pragma once

// Which network addresses belong to this machine or a private network, or are otherwise not public.

#include <string_view>

struct sockaddr;

namespace platform {

/// For IPv4 and IPv6 addresses as the system prints them ("127.0.0.1", "::1"). Any other text is not private.
bool isPrivateNumericAddress(std::string_view text);

/// Addresses that are neither IPv4 nor IPv6 count as private.
bool isPrivateAddress(const sockaddr& address);

}  // namespace platform
