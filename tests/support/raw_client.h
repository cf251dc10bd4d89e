#pragma once

// One connection to a server on loopback, in the raw: what is sent goes out as it stands.

#include <boost/asio.hpp>
#include <chrono>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>

namespace tests {

/// Gives up after 5 seconds. `error()` says why the last read ended early.
class RawClient : public boost::asio::ip::tcp::iostream {
public:
    explicit RawClient(int port)
        : basic_socket_iostream(boost::asio::ip::tcp::endpoint(boost::asio::ip::address_v4::loopback(),
                                                               static_cast<std::uint16_t>(port))),
          port_(port) {
        expires_after(std::chrono::seconds(5));
    }

    /// The line of a request that our servers insist on.
    std::string host() const { return "Host: 127.0.0.1:" + std::to_string(port_) + "\r\n"; }

    void send(std::string_view text) { *this << text << std::flush; }

    /// Reads until `ending` has come, or to the end of the connection.
    std::string read(std::string_view ending = {}) {
        if (ending.empty()) return (std::ostringstream() << rdbuf()).str();
        std::string text;
        for (char byte = 0; !text.ends_with(ending) && get(byte);) text += byte;
        return text;
    }

private:
    int port_;
};

}  // namespace tests
