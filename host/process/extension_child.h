#pragma once

// One child process from start to end, and the questions that it has not answered yet.

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>
#include "host/process/child_watch.h"
#include "host/process/extension_process.h"
#include "platform/base/file_descriptor.h"
#include "platform/base/result.h"
#include "platform/wire/extension.pb.h"

namespace host {

/// The constructor starts the process. One thread reads its messages and log, watches it and reaps it; the
/// process dies with that thread. Any thread may ask.
class ExtensionChild {
public:
    /// `first` is sent before any question.
    ExtensionChild(const ExtensionOptions& options, const std::vector<brightledger::wire::Request>& first);
    /// Ends the child and waits for it.
    ~ExtensionChild();

    using Completion = ChildWatch::Completion;

    /// Sends a question. `completion` is called exactly once, on the child's thread or before this returns,
    /// without any lock held; it must not destroy the child. False when the child is on its way out: then
    /// the question was not asked and `completion` is never called.
    bool ask(brightledger::wire::Request request, std::chrono::milliseconds limit, Completion completion);
    /// Sends a message that has no reply.
    platform::Result<void> tell(const brightledger::wire::Request& request);

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
    // On the child's thread.
    void live();
    bool start();
    void converse();
    int pollTimeout() const;
    void advance();
    void readReplies();
    void readLog();
    void takeLogLine(std::string line);
    void finish();

    // With the lock held.
    platform::Result<void> send(const brightledger::wire::Request& request);
    void wake() const;

    const ExtensionOptions options_;
    platform::FileDescriptor messages_;
    platform::FileDescriptor log_;
    platform::FileDescriptor wakeUp_;
    platform::FileDescriptor process_;
    // The child's ends, open here until it has started.
    platform::FileDescriptor childMessages_;
    platform::FileDescriptor childLog_;

    /// Used on the child's thread only.
    std::string partOfLogLine_;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    ChildWatch watch_;
    int processId_ = 0;
    bool isGone_ = false;

    // Last, so that it starts after everything else is ready.
    std::thread thread_;
};

}  // namespace host
