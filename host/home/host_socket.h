#pragma once

// The socket by which other processes reach a running home screen, and what they ask, from both ends.

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>
#include "host/home/home_screen.h"
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

/// Answers a question of another process: those below and those of a WidgetCenter.
platform::Result<std::string> answerQuestion(HomeScreen& home, std::string_view question);

// Asking. `socket` is the host's (platform::hostSocketPath); errors are those of platform::askHost.

bool isHostRunning(const std::filesystem::path& socket);
/// The latest lines of the ledger about the widgets of that kind.
platform::Result<std::string> askWhy(const std::filesystem::path& socket, const std::string& kind);
/// Signs in as a user of the host's demo service, or out when the name is empty.
platform::Result<void> askToSignIn(const std::filesystem::path& socket, const std::string& name);

}  // namespace host
