#pragma once

// Serves the home screen's page to the person who was given its address, and to nobody else.

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

/// On 127.0.0.1 alone. Only who opens the printed address, which holds a token, gets the cookie that every
/// other request needs; the Host header must be ours to the letter, so that no other name leads here;
/// what changes something must be a POST from our own page.
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
    std::string authority() const;
    /// Sends the state to all readers.
    void tell();

    HomeScreen& home_;
    PageState state_;
    std::filesystem::path pages_;
    std::string token_;
    std::string cookie_;
    std::mutex mutex_;
    std::vector<std::shared_ptr<serving::EventStream>> readers_;
    std::uint16_t port_ = 0;
    /// Shared with the home screen's listener, which may still be running when this ends.
    std::shared_ptr<Signal> signal_;
    // Last: the server's handlers and the teller use everything above until they end.
    std::unique_ptr<serving::HttpServer> server_;
    std::jthread teller_;
};

}  // namespace host
