#pragma once

// A service on this machine that answers as the real one would: quotes that move, stories with
// pictures, and the portfolios of three users. It can be made to fail.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>
#include "platform/base/clock.h"
#include "platform/base/result.h"
#include "serving/http_server.h"

namespace demo {

/// Somebody who can sign in.
struct DemoUser {
    std::string name;
    std::string userId;
    std::string token;
    /// What the user's portfolio is like, to be shown.
    std::string description;
};

/// What the service answers to the extension at that moment. `origin` is the service's own address,
/// `pictures` the folder of the stories' pictures (0.jpg and on).
serving::Response serviceAnswer(const serving::Request& request, platform::Instant now,
                                const std::string& origin, const std::filesystem::path& pictures);

/// Listens as long as it lives. Prices depend only on the clock, so that two services give the same prices at
/// the same moment.
///
/// Under "/scene/NAME" its answers never change, see demo/scenes.h.
///
/// It also answers GET /demo/users and GET /demo/catalogue (JSON, for a program that plays the phone app) and
/// POST /demo/fault with the name of a fault as its body, which is in force from the next request on.
class DemoService {
public:
    /// `pictures` as above. `port` 0 takes any free one. `clock`
    /// must outlive the service; null: the system's clock.
    static platform::Result<std::unique_ptr<DemoService>> start(std::filesystem::path pictures,
                                                                std::uint16_t port = 0,
                                                                const platform::Clock* clock = nullptr);
    ~DemoService();

    /// "http://127.0.0.1:PORT": API host and web host at once.
    std::string origin() const;
    static const std::vector<DemoUser>& users();
    /// What the phone app stores under "userPortfolio".
    std::string portfolioAddress() const;

private:
    struct Implementation;
    explicit DemoService(std::unique_ptr<Implementation> implementation);
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace demo
