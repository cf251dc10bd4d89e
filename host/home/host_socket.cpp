#include "host/home/host_socket.h"
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <array>
#include <cstring>
#include "platform/wire/host_widget_center.h"

namespace host {

namespace {

tl::unexpected<platform::Error> socketError(const std::string& message) {
    return platform::failure("WidgetCenterError", 1, message);
}

/// The folder may stand where everybody can write: it must be ours and nobody else's.
bool prepareFolder(const std::filesystem::path& folder) {
    ::mkdir(folder.c_str(), 0700);
    struct stat status = {};
    return ::lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::getuid() &&
           (status.st_mode & 0077) == 0;
}

/// The file stays behind: whoever removed it might let two others each lock a file of that name.
platform::Result<platform::FileDescriptor> lockBeside(std::filesystem::path path) {
    path.replace_extension(".lock");
    platform::FileDescriptor lock(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!lock.isOpen()) return socketError("cannot open " + path.string());
    if (::flock(lock.number(), LOCK_EX | LOCK_NB) == 0) return lock;
    return socketError(errno == EWOULDBLOCK ? "a home screen of this data directory is running already"
                                            : "cannot lock " + path.string());
}

bool isOurs(int connection) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::getuid();
}

}  // namespace

platform::Result<std::unique_ptr<HostSocket>> HostSocket::open(const std::filesystem::path& path,
                                                               Answer answer) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.native().size() >= sizeof address.sun_path)
        return socketError("the path of the socket is too long");
    std::memcpy(address.sun_path, path.c_str(), path.native().size());
    if (!prepareFolder(path.parent_path()))
        return socketError(path.parent_path().string() + " is not ours alone");
    auto lock = lockBeside(path);
    if (!lock) return tl::unexpected(lock.error());
    ::unlink(path.c_str());

    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool isListening =
        listener >= 0 && ::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        ::chmod(path.c_str(), 0600) == 0 && ::listen(listener, 16) == 0;
    std::array<int, 2> wake{};
    if (!isListening || ::pipe2(wake.data(), O_CLOEXEC) != 0) {
        if (listener >= 0) ::close(listener);
        return socketError("cannot listen at " + path.string());
    }
    return std::unique_ptr<HostSocket>(
        new HostSocket(path, std::move(*lock), listener, wake[0], wake[1], std::move(answer)));
}

HostSocket::HostSocket(std::filesystem::path path, platform::FileDescriptor lock, int listener,
                       int wakeReader, int wakeWriter, Answer answer)
    : path_(std::move(path)),
      lock_(std::move(lock)),
      listener_(listener),
      wakeReader_(wakeReader),
      wakeWriter_(wakeWriter),
      answer_(std::move(answer)),
      thread_([this] { serve(); }) {}

HostSocket::~HostSocket() {
    ::close(wakeWriter_);
    thread_.join();
    ::close(wakeReader_);
    ::close(listener_);
    ::unlink(path_.c_str());
}

void HostSocket::serve() {
    std::array<pollfd, 2> watched{{{listener_, POLLIN, 0}, {wakeReader_, POLLIN, 0}}};
    for (;;) {
        if (::poll(watched.data(), watched.size(), -1) < 0) continue;
        if (watched[1].revents != 0) return;
        const int connection = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) continue;
        if (isOurs(connection)) platform::answerOneQuestion(connection, answer_);
        ::close(connection);
    }
}

}  // namespace host
