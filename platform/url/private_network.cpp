#include "platform/url/private_network.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>

namespace platform {
namespace {

struct Network {
    std::uint32_t address;
    int prefix;
};

constexpr std::uint32_t ipv4(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    return a << 24 | b << 16 | c << 8 | d;
}

constexpr std::array notPublicNetworks{
    Network{ipv4(0, 0, 0, 0), 8},        // this host
    Network{ipv4(10, 0, 0, 0), 8},       // private
    Network{ipv4(100, 64, 0, 0), 10},    // within a provider's network
    Network{ipv4(127, 0, 0, 0), 8},      // this machine
    Network{ipv4(169, 254, 0, 0), 16},   // this link
    Network{ipv4(172, 16, 0, 0), 12},    // private
    Network{ipv4(192, 0, 0, 0), 24},     // protocols
    Network{ipv4(192, 0, 2, 0), 24},     // documentation
    Network{ipv4(192, 168, 0, 0), 16},   // private
    Network{ipv4(198, 18, 0, 0), 15},    // measurements
    Network{ipv4(198, 51, 100, 0), 24},  // documentation
    Network{ipv4(203, 0, 113, 0), 24},   // documentation
    Network{ipv4(224, 0, 0, 0), 3},      // multicast, reserved, broadcast
};

bool isPrivate(std::uint32_t address) {
    return std::ranges::any_of(notPublicNetworks, [&](const Network& network) {
        return (address ^ network.address) >> (32 - network.prefix) == 0;
    });
}

std::uint32_t ipv4At(const std::uint8_t* bytes) { return ipv4(bytes[0], bytes[1], bytes[2], bytes[3]); }

bool startsWith(const std::uint8_t* bytes, std::initializer_list<std::uint8_t> prefix) {
    return std::equal(prefix.begin(), prefix.end(), bytes);
}

bool isPrivate(const in6_addr& address) {
    const std::uint8_t* bytes = address.s6_addr;
    // An IPv4 address that is mapped or translated to IPv6 is as private as the IPv4 address itself.
    if (startsWith(bytes, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff}) ||
        startsWith(bytes, {0, 0x64, 0xff, 0x9b, 0, 0, 0, 0, 0, 0, 0, 0})) {
        return isPrivate(ipv4At(bytes + 12));
    }
    if (startsWith(bytes, {0x20, 0x02})) return isPrivate(ipv4At(bytes + 2));
    // All other public addresses are in 2000::/3.
    const bool isGlobalUnicast = (bytes[0] & 0xe0) == 0x20;
    const bool isTunnel = startsWith(bytes, {0x20, 0x01, 0, 0});
    const bool isDocumentation = startsWith(bytes, {0x20, 0x01, 0x0d, 0xb8});
    return !isGlobalUnicast || isTunnel || isDocumentation;
}

}  // namespace

bool isPrivateNumericAddress(std::string_view text) {
    const std::string address(text);
    in6_addr six{};
    if (::inet_pton(AF_INET6, address.c_str(), &six) == 1) return isPrivate(six);
    in_addr four{};
    return ::inet_pton(AF_INET, address.c_str(), &four) == 1 && isPrivate(ntohl(four.s_addr));
}

bool isPrivateAddress(const sockaddr& address) {
    if (address.sa_family == AF_INET) {
        sockaddr_in four;
        std::memcpy(&four, &address, sizeof four);
        return isPrivate(ntohl(four.sin_addr.s_addr));
    }
    if (address.sa_family == AF_INET6) {
        sockaddr_in6 six;
        std::memcpy(&six, &address, sizeof six);
        return isPrivate(six.sin6_addr);
    }
    return true;
}

}  // namespace platform
