#pragma once

// One child process, from its start to its end, and the questions that are under way in it.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>
#include "host/process/extension_process.h"
#include "host/process/process_status.h"
#include "platform/base/file_descriptor.h"
#include "platform/base/result.h"
#include "platform/wire/extension.pb.h"
#include "platform/wire/framing.h"

namespace host {

/// Starts with its construction. A thread of its own reads what the child says, watches it and reaps
/// it; the child dies with that thread. Any other thread may ask.
class ExtensionChild {
public:
    using SteadyTime = std::chrono::steady_clock::time_point;

    /// `first` is sent before any question.
    ExtensionChild(const ExtensionOptions& options, std::vector<brightledger::wire::Request> first);
    /// Ends the child and waits for it.
    ~ExtensionChild();
    ExtensionChild(const ExtensionChild&) = delete;
    ExtensionChild& operator=(const ExtensionChild&) = delete;

    /// Sends a question and waits for its reply, however that turns out. Nothing when the child was
    /// already ending: then the question was not asked.
    std::optional<platform::Result<brightledger::wire::Reply>> ask(brightledger::wire::Request request,
                                                                   std::chrono::milliseconds limit);
    /// Sends what has no reply.
    platform::Result<void> tell(brightledger::wire::Request request);

    /// Whether it takes questions.
    bool isOpen() const;
    /// Whether it is reaped and all is closed.
    bool isGone() const;
    /// How it ended; empty while it is there.
    std::string ending() const;
    /// 0 when it is gone.
    int processId() const;
    ExtensionStatistics statistics() const;
    /// Asks it to go; it is killed when it does not within a second. Does not wait.
    void beginEnd();
    void waitUntilGone();

private:
    struct Question {
        SteadyTime asked;
        std::optional<platform::Result<brightledger::wire::Reply>> reply;
    };

    // On the child's thread.
    void live();
    bool start();
    void converse();
    int pollTimeout();
    void watch();
    void watchAsked(SteadyTime now);
    void endIfTooLarge(long peakResidentKiB);
    void readReplies();
    void take(brightledger::wire::Reply reply);
    void note(const brightledger::wire::Reply& reply, const ProcessMemory& memory, double wallMs);
    void readLog();
    void takeLogLine(std::string line);
    void kill(std::string reason);
    void finish();
    std::string endingBySignal(int signal) const;

    // With the lock held.
    bool takesQuestions() const;
    void closeInput();
    platform::Result<void> send(brightledger::wire::Request& request);
    void wake() const;

    const ExtensionOptions options_;
    const SteadyTime started_;
    platform::FileDescriptor messages_;
    platform::FileDescriptor log_;
    platform::FileDescriptor wakeUp_;
    platform::FileDescriptor process_;
    // The child's ends, until it has them.
    platform::FileDescriptor childMessages_;
    platform::FileDescriptor childLog_;

    // Used on the child's thread only.
    platform::FrameReader frames_;
    std::string partOfLogLine_;
    std::string lastLogLine_;
    std::string killReason_;
    bool isGreeted_ = false;
    bool hasFatalLine_ = false;
    SteadyTime heard_;
    std::optional<SteadyTime> pinged_;
    std::optional<SteadyTime> silent_;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::uint64_t, Question> questions_;
    std::uint64_t lastId_ = 0;
    bool hasAnswered_ = false;
    std::optional<SteadyTime> endBegun_;
    bool isGone_ = false;
    std::string ending_;
    int processId_ = 0;
    SteadyTime lastUse_;
    ExtensionStatistics statistics_;

    // Last, so that it starts when all else is there.
    std::thread thread_;
};

}  // namespace host
