#pragma once

// The host's side of the conversation with one child: what it owes, and when it is too silent, too late or
// too large. Has no process, no thread and no clock: it is given bytes and times, so that a simulation can
// drive it.

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include "host/process/extension_process.h"
#include "platform/wire/extension.pb.h"
#include "platform/wire/framing.h"

namespace host {

/// What a process takes, in KiB; zeros when there is no such process.
struct ProcessMemory {
    long peakResident = 0;
    /// The part of the resident memory that belongs to no file.
    long anonymous = 0;
};

/// Not for several threads at once.
class ChildWatch {
public:
    using SteadyTime = std::chrono::steady_clock::time_point;
    using Completion = std::function<void(platform::Result<brightledger::wire::Reply>)>;

    /// `memory` says what the child takes at the moment.
    ChildWatch(const ExtensionOptions& options, std::function<ProcessMemory()> memory, SteadyTime now);

    /// Registers a question and gives it its number. Must not be called when the child is leaving.
    /// `completion` comes back once in the steps of `advance`, or from `withdraw`.
    void ask(brightledger::wire::Request& request, std::chrono::milliseconds limit, Completion completion,
             SteadyTime now);
    /// Takes back a question that could not be sent.
    Completion withdraw(std::uint64_t id);
    /// The host no longer needs it; the caller closes its input.
    void beginEnd(SteadyTime now);

    // What happens to the child.
    void received(std::string_view bytes, SteadyTime now);
    void closedOutput(SteadyTime now);
    /// One line of its log. The last one, or the first fatal one, explains its end.
    void logged(const std::string& line);
    /// Its process has ended, with this status of `waitpid`. Every question fails.
    void ended(int status);
    /// It could not be started, or must be killed for a reason that only the caller knows.
    void kill(std::string reason);

    struct Steps {
        /// To be called without any lock held.
        std::vector<std::function<void()>> completions;
        /// To be sent.
        std::optional<brightledger::wire::Request> ping;
        bool closeInput = false;
        /// To be killed at once; says it again each time.
        bool kill = false;
    };
    /// What is to be done now. To be called after everything that happened, and at `nextLook`.
    Steps advance(SteadyTime now);
    SteadyTime nextLook(SteadyTime now) const;

    /// Whether it answers no further question.
    bool isLeaving() const { return endBegun_ || !ending_.empty(); }
    /// How it ended; empty before.
    const std::string& ending() const { return ending_; }
    const ExtensionStatistics& statistics() const { return statistics_; }

private:
    struct Question {
        SteadyTime asked;
        std::chrono::milliseconds limit;
        Completion completion;

        SteadyTime deadline() const { return asked + limit; }
    };

    void take(brightledger::wire::Reply reply, SteadyTime now);
    void note(const brightledger::wire::Reply& reply, const ProcessMemory& memory, double wallMs);
    void watchAsked(SteadyTime now);
    void killIfTooLarge(long peakResidentKiB);
    std::string endingOf(int status) const;
    void complete(Completion completion, platform::Result<brightledger::wire::Reply> reply);

    const std::chrono::milliseconds idleLimit_;
    const long residentLimitKiB_;
    const std::function<ProcessMemory()> memory_;
    const SteadyTime started_;

    platform::FrameReader frames_;
    std::map<std::uint64_t, Question> questions_;
    std::uint64_t lastId_ = 0;
    Steps steps_;

    bool isGreeted_ = false;
    bool hasAnswered_ = false;
    SteadyTime heard_;
    SteadyTime lastUse_;
    std::optional<SteadyTime> pinged_;
    std::optional<SteadyTime> silent_;
    std::optional<SteadyTime> endBegun_;

    std::string lastLogLine_;
    bool hasFatalLine_ = false;
    std::string killReason_;
    std::string ending_;
    ExtensionStatistics statistics_;
};

}  // namespace host
