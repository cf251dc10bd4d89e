#pragma once

// The host's end of the socket by which other processes reach it.

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>
#include "platform/base/file_descriptor.h"
#include "platform/base/result.h"

namespace host {

/// Answers one question per connection on a thread of its own. A connection has two seconds; silent ones hold
/// up nobody else.
class HostSocket {
public:
    /// An error's message goes to the asking process.
    using Answer = std::function<platform::Result<std::string>(std::string_view question)>;

    /// Listens at `path` (mode 0600) in a folder of mode 0700 that only its owner can enter. Fails (domain
    /// "WidgetCenterError") when another host has this socket: it holds a locked file beside it until its
    /// end.
    static platform::Result<std::unique_ptr<HostSocket>> open(const std::filesystem::path& path,
                                                              Answer answer);
    ~HostSocket();

private:
    struct Connection;

    HostSocket(std::filesystem::path path, Answer answer)
        : path_(std::move(path)), answer_(std::move(answer)) {}
    void serve();
    void acceptAll(std::vector<Connection>& connections) const;
    /// False when the connection has come to its end.
    bool advance(Connection& connection) const;

    std::filesystem::path path_;
    Answer answer_;
    platform::FileDescriptor lock_;
    platform::FileDescriptor listener_;
    platform::FileDescriptor wakeReader_;
    platform::FileDescriptor wakeWriter_;
    std::thread thread_;
};

}  // namespace host
