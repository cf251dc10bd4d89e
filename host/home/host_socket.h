#pragma once

// The host's end of the socket by which other processes reach it.

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include "platform/base/file_descriptor.h"
#include "platform/base/result.h"

namespace host {

/// Answers one question a connection, one connection at a time, on a thread of its own.
class HostSocket {
public:
    /// Makes the whole answer: "ok\n…" or "error\n…".
    using Answer = std::function<std::string(std::string_view question)>;

    /// Listens at `path` (mode 0600, in a folder of mode 0700 that is ours). Fails (domain
    /// "WidgetCenterError") when another host has this socket: it holds a locked file beside it until its
    /// end.
    static platform::Result<std::unique_ptr<HostSocket>> open(const std::filesystem::path& path,
                                                              Answer answer);
    ~HostSocket();
    HostSocket(const HostSocket&) = delete;
    HostSocket& operator=(const HostSocket&) = delete;

private:
    HostSocket(std::filesystem::path path, platform::FileDescriptor lock, int listener, int wakeReader,
               int wakeWriter, Answer answer);
    void serve();

    std::filesystem::path path_;
    platform::FileDescriptor lock_;
    int listener_;
    int wakeReader_;
    int wakeWriter_;
    Answer answer_;
    std::thread thread_;
};

}  // namespace host
