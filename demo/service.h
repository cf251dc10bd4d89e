#pragma once

// A service on this machine that answers as the real one would: quotes that move, stories with
// pictures, and the portfolios of three users. It can be made to fail.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>
#include "platform/base/clock.h"
#include "platform/base/result.h"

namespace demo {

/// How the service answers the extension's requests: quotes, news, thumbnails and portfolios.
enum class Fault {
    none,
    down,              // connections are reset before a byte is sent
    slow,              // right, but after 12 seconds
    reset,             // the connection breaks halfway through the body
    notModified,       // status 304
    serverError,       // status 500
    empty,             // status 200 without a body
    noise,             // status 200 with bytes that are nothing
    cut,               // a document that stops halfway but says that it is whole
    unknownStoryType,  // news with one story of a new type
    huge,              // a body of 80 MB
};

/// "none", "down", "slow", "reset", "304", "500", "empty", "noise", "cut", "unknown-story-type", "huge".
std::string_view faultName(Fault fault);

/// Somebody who can sign in.
struct DemoUser {
    std::string name;
    std::string userId;
    std::string token;
    /// What the user's portfolio is like, to be shown.
    std::string description;
};

/// Listens as long as it lives. Prices depend only on the clock, so that two services give the same prices at
/// the same moment.
///
/// Under "/scene/NAME" its answers never change, see demo/scenes.h.
///
/// It also answers GET /demo/users and GET /demo/catalogue (JSON, for a program that plays the phone app) and
/// POST /demo/fault with the name of a fault as its body.
class DemoService {
public:
    /// `port` 0 takes any free one. `clock` must outlive the service; null: the system's clock.
    static platform::Result<std::unique_ptr<DemoService>> start(std::uint16_t port = 0,
                                                                const platform::Clock* clock = nullptr);
    ~DemoService();

    /// "http://127.0.0.1:PORT": API host and web host at once.
    std::string origin() const;
    static const std::vector<DemoUser>& users();
    /// What the phone app stores under "userPortfolio".
    std::string portfolioAddress() const;

    /// From the next request on. Any thread.
    void setFault(Fault fault);
    Fault fault() const;

private:
    struct Implementation;
    explicit DemoService(std::unique_ptr<Implementation> implementation);
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace demo
