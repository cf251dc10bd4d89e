#pragma once

// Serves the home screen's page to the person who was given its address, and to nobody else.

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>
#include "host/home/home_screen.h"
#include "host/home/page_state.h"
#include "platform/base/result.h"
#include "serving/http_server.h"

namespace host {

/// On 127.0.0.1 alone. Who opens the printed address first, which holds a token, gets the cookie that every
/// other request needs; the token works once. What changes something must be a POST from our own page.
/// Connections without the cookie get few places and little time (see `serving::ServerLimits`).
class PageServer {
public:
    /// `home` must outlive it. `pages` holds the page's files.
    static platform::Result<std::unique_ptr<PageServer>> start(HomeScreen& home, std::uint16_t port,
                                                               const std::filesystem::path& pages);
    ~PageServer();

    /// With the token.
    std::string address() const;

private:
    struct Signal;

    explicit PageServer(HomeScreen& home);

    serving::Response answer(const serving::Request& request);
    serving::Response get(const serving::Request& request);
    serving::Response post(const serving::Request& request);
    serving::Response events();
    bool hasCookie(const serving::Request& request) const;
    /// Sends the state to all readers.
    void tell();

    HomeScreen& home_;
    PageState state_;
    std::filesystem::path pages_;
    std::string token_;
    std::string cookie_;
    std::mutex mutex_;
    std::vector<std::shared_ptr<serving::EventStream>> readers_;
    std::atomic<bool> isTokenUsed_ = false;
    /// Shared with the home screen's listener, which may still be running when this ends.
    std::shared_ptr<Signal> signal_;
    // Last: the server's handlers and the teller use everything above until they end.
    std::unique_ptr<serving::HttpServer> server_;
    std::jthread teller_;
};

}  // namespace host
