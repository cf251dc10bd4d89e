#pragma once

// The extension's process in virtual time: real questions, frames, providers and watch, but no process.

#include <functional>
#include <memory>
#include <vector>
#include "host/process/extension_process.h"
#include "platform/runtime/runtime.h"
#include "tests/simulation/executor.h"

namespace simulation {

/// What can befall the process or what it sends. Probabilities are per frame.
struct ProcessWeather {
    double damaged = 0.0;
    double doubled = 0.0;
    double lost = 0.0;
    double late = 0.0;
    /// A new process takes too long to start.
    double slowStart = 0.0;
};

/// What ExtensionProcess is to a home screen.
class SimulatedProcess {
public:
    /// `options` makes those of a new process.
    SimulatedProcess(Executor& executor, Random& random, const ProcessWeather& weather,
                     std::function<platform::RuntimeOptions()> options);
    ~SimulatedProcess();

    void ask(const host::EntryQuestion& question, std::chrono::milliseconds limit,
             const host::ExtensionProcess::Completion& completion);
    /// Of every process that runs now; a new one takes it from its options.
    void setClock(platform::Instant instant);

    // What can happen to the running process, if there is one.
    void kill(int signal);
    void hang();
    void grow();
    /// Lets it go, as for a new environment.
    void end();

    /// Questions that nobody has answered yet.
    std::size_t unanswered() const { return unanswered_; }

private:
    class Life;
    Life* open();

    Executor& executor_;
    Random& random_;
    const ProcessWeather& weather_;
    const std::function<platform::RuntimeOptions()> options_;
    std::vector<std::shared_ptr<Life>> lives_;
    std::size_t unanswered_ = 0;
};

}  // namespace simulation
