#pragma once

// The service, and the network to it, in virtual time.

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include "platform/base/clock.h"
#include "platform/url/url_session.h"
#include "tests/simulation/executor.h"

namespace simulation {

/// How likely it is that something goes wrong with a request or an answer.
struct NetworkWeather {
    double refused = 0.0;
    double lost = 0.0;
    double late = 0.0;
    double wrongStatus = 0.0;
    double damaged = 0.0;
};

/// The address of the simulated service.
inline constexpr const char* serviceOrigin = "http://service.invalid";

/// The amount that only this user's portfolio shows.
std::string markOf(const std::string& userId);

/// The network as one extension sees it; its requests end with it.
class SimulatedNetwork : public platform::URLCarrier {
public:
    /// `now` is the moment that the service's answers show. Everything must outlive the network.
    SimulatedNetwork(Executor& executor, Random& random, const NetworkWeather& weather,
                     std::function<platform::Instant()> now);

    /// Calls every completion through `run`, as work of the process that asked.
    void runWith(std::function<void(const std::function<void()>&)> run) { run_ = std::move(run); }

    void start(platform::URLRequest request, platform::DataTaskCompletion completion) override;
    platform::Result<platform::HTTPResponse> load(platform::URLRequest request) override;

private:
    platform::Result<platform::HTTPResponse> answer(const platform::URLRequest& request);

    Executor& executor_;
    Random& random_;
    const NetworkWeather& weather_;
    const std::function<platform::Instant()> now_;
    std::function<void(const std::function<void()>&)> run_;
    /// Expires with the network.
    const std::shared_ptr<int> life_ = std::make_shared<int>();
};

}  // namespace simulation
