#pragma once

// One child process from start to end, and the questions that it has not answered yet.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>
#include "host/process/extension_process.h"
#include "platform/base/file_descriptor.h"
#include "platform/base/result.h"
#include "platform/wire/extension.pb.h"
#include "platform/wire/framing.h"

namespace host {

/// The constructor starts the process. One thread reads its messages and log, watches it and reaps it; the
/// process dies with that thread. Any thread may ask.
class ExtensionChild {
public:
    using SteadyTime = std::chrono::steady_clock::time_point;

    /// `first` is sent before any question.
    ExtensionChild(const ExtensionOptions& options, std::vector<brightledger::wire::Request> first);
    /// Ends the child and waits for it.
    ~ExtensionChild();

    using Completion = std::function<void(platform::Result<brightledger::wire::Reply>)>;

    /// Sends a question. `completion` is called exactly once, on the child's thread or before this returns,
    /// without any lock held; it must not destroy the child. False when the child is on its way out: then
    /// the question was not asked and `completion` is never called.
    bool ask(brightledger::wire::Request request, std::chrono::milliseconds limit, Completion completion);
    /// Sends a message that has no reply.
    platform::Result<void> tell(brightledger::wire::Request request);

    /// Whether it can be expected to answer another question.
    bool isOpen() const;
    /// Whether the process was reaped and everything is closed.
    bool isGone() const;
    /// How it ended; empty before it is gone.
    std::string ending() const;
    /// 0 before the start and after the end.
    int processId() const;
    ExtensionStatistics statistics() const;
    /// Asks it to go; it is killed when it does not within a second. Does not wait.
    void beginEnd();
    void waitUntilGone();

private:
    struct Question {
        SteadyTime asked;
        std::chrono::milliseconds limit;
        Completion completion;

        SteadyTime deadline() const { return asked + limit; }
    };

    // On the child's thread.
    void live();
    bool start();
    void converse();
    int pollTimeout();
    void watch();
    void giveUpLateQuestions();
    void watchAsked(SteadyTime now);
    void endIfTooLarge(long peakResidentKiB);
    void readReplies();
    void take(brightledger::wire::Reply reply);
    void readLog();
    void takeLogLine(std::string line);
    void kill(std::string reason);
    void finish();
    std::string endingOf(int status) const;

    // With the lock held.
    bool isLeaving() const;
    void closeInput();
    platform::Result<void> send(brightledger::wire::Request& request);
    void wake() const;

    const ExtensionOptions options_;
    const SteadyTime started_;
    platform::FileDescriptor messages_;
    platform::FileDescriptor log_;
    platform::FileDescriptor wakeUp_;
    platform::FileDescriptor process_;
    // The child's ends, open here until it has started.
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

    // Last, so that it starts after everything else is ready.
    std::thread thread_;
};

}  // namespace host
