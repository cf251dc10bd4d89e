#pragma once

// Which network addresses are this machine's, a private network's or otherwise not the public's.

#include <string_view>

struct sockaddr;

namespace platform {

/// A numeric address, IPv4 in any of the spellings that resolvers take ("127.1", "0x7f000001") or IPv6
/// with or without a zone. What is no numeric address is not private.
bool isPrivateNumericAddress(std::string_view text);

/// Anything but IPv4 and IPv6 is private.
bool isPrivateAddress(const sockaddr& address);

}  // namespace platform
