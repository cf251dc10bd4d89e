#include "host/home/host_socket.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>
#include "host/home/page_actions.h"
#include "platform/wire/framing.h"
#include "platform/wire/host_channel.h"

namespace host {
namespace {

using SteadyTime = std::chrono::steady_clock::time_point;
using platform::Result;

constexpr std::size_t mostConnections = 32;
constexpr auto exchangeLimit = platform::hostExchangeLimit;

tl::unexpected<platform::Error> socketError(const std::string& message) {
    return platform::failure("WidgetCenterError", 1, message);
}

/// The folder may be where everybody can write, so it must belong to this user and be closed to all others.
bool prepareFolder(const std::filesystem::path& folder) {
    ::mkdir(folder.c_str(), 0700);
    struct stat status = {};
    return ::lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::getuid() &&
           (status.st_mode & 0077) == 0;
}

/// The file is never removed: otherwise two hosts could each lock a file of that name.
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

constexpr std::string_view whyQuestion = "why ";
constexpr std::string_view userQuestion = "user ";
/// Reading the store and its transactions take longer than an answer from memory.
constexpr std::chrono::seconds patience{5};

Result<std::string> latestDecisions(const HomeScreen& home, std::string_view kind) {
    constexpr std::size_t mostLines = 20;
    TRY(checkKind(home.gallery(), kind));
    const std::vector<LedgerEntry> entries = home.ledger().entries(0, kind);
    std::string lines;
    const std::size_t first = entries.size() > mostLines ? entries.size() - mostLines : 0;
    for (std::size_t i = first; i < entries.size(); ++i) lines += ledgerLine(entries[i]) + "\n";
    return lines;
}

}  // namespace

/// One question, and then what is left to send of its answer.
struct HostSocket::Connection {
    platform::FileDescriptor socket;
    SteadyTime deadline;
    platform::FrameReader frames;
    std::string output;

    bool isAnswered() const { return !output.empty(); }
};

platform::Result<std::unique_ptr<HostSocket>> HostSocket::open(const std::filesystem::path& path,
                                                               Answer answer) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.native().size() >= sizeof address.sun_path)
        return socketError("the path of the host's socket is too long: " + path.string());
    std::memcpy(address.sun_path, path.c_str(), path.native().size());
    if (!prepareFolder(path.parent_path()))
        return socketError("other users can enter " + path.parent_path().string() +
                           "; remove it or set its mode to 0700");
    auto lock = TRY(lockBeside(path));
    ::unlink(path.c_str());

    std::unique_ptr<HostSocket> host(new HostSocket(path, std::move(answer)));
    host->lock_ = std::move(lock);
    host->listener_ =
        platform::FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const int listener = host->listener_.number();
    std::array<int, 2> wake{-1, -1};
    const bool isListening =
        ::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        ::chmod(path.c_str(), 0600) == 0 && ::listen(listener, 64) == 0 &&
        ::pipe2(wake.data(), O_CLOEXEC) == 0;
    host->wakeReader_ = platform::FileDescriptor(wake[0]);
    host->wakeWriter_ = platform::FileDescriptor(wake[1]);
    if (!isListening) return socketError("cannot listen at " + path.string());
    host->thread_ = std::thread([&self = *host] { self.serve(); });
    return host;
}

HostSocket::~HostSocket() {
    wakeWriter_.reset();
    if (thread_.joinable()) thread_.join();
    ::unlink(path_.c_str());
}

void HostSocket::serve() {
    std::vector<Connection> connections;
    for (;;) {
        const auto now = std::chrono::steady_clock::now();
        std::erase_if(connections, [&](const Connection& each) { return each.deadline <= now; });
        std::vector<pollfd> watched{{wakeReader_.number(), POLLIN, 0}};
        for (const Connection& each : connections)
            watched.push_back(
                {each.socket.number(), static_cast<short>(each.isAnswered() ? POLLOUT : POLLIN), 0});
        // The others wait in line.
        const bool hasRoom = connections.size() < mostConnections;
        if (hasRoom) watched.push_back({listener_.number(), POLLIN, 0});
        const auto left = connections.empty() ? exchangeLimit : connections.front().deadline - now;
        ::poll(watched.data(), watched.size(),
               connections.empty()
                   ? -1
                   : static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(left).count()));
        if (watched.front().revents != 0) return;
        for (std::size_t i = connections.size(); i-- > 0;) {
            if (watched[i + 1].revents != 0 && !advance(connections[i]))
                connections.erase(connections.begin() + static_cast<std::ptrdiff_t>(i));
        }
        if (hasRoom && watched.back().revents != 0) acceptAll(connections);
    }
}

void HostSocket::acceptAll(std::vector<Connection>& connections) const {
    while (connections.size() < mostConnections) {
        platform::FileDescriptor socket(
            ::accept4(listener_.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!socket.isOpen()) {
            // Out of descriptors: without a pause the waiting connection would wake us at once again.
            if (errno == EMFILE || errno == ENFILE) ::usleep(50'000);
            return;
        }
        if (isOurs(socket.number()))
            connections.push_back(
                {std::move(socket), std::chrono::steady_clock::now() + exchangeLimit, {}, {}});
    }
}

bool HostSocket::advance(Connection& connection) const {
    if (!connection.isAnswered()) {
        std::array<char, 65536> buffer{};
        const ssize_t count = ::recv(connection.socket.number(), buffer.data(), buffer.size(), 0);
        if (count <= 0) return count < 0 && (errno == EAGAIN || errno == EINTR);
        connection.frames.append({buffer.data(), static_cast<std::size_t>(count)});
        const auto question = connection.frames.next();
        if (!question) return false;
        if (!*question) return true;
        const std::string answer = platform::hostAnswer(answer_(**question));
        const auto length = platform::frameLength(answer.size());
        if (!length) return false;
        connection.output = *length + answer;
    }
    const ssize_t count =
        ::send(connection.socket.number(), connection.output.data(), connection.output.size(), MSG_NOSIGNAL);
    if (count < 0) return errno == EAGAIN || errno == EINTR;
    connection.output.erase(0, static_cast<std::size_t>(count));
    return !connection.output.empty();
}

Result<std::string> answerQuestion(HomeScreen& home, std::string_view question) {
    if (question == platform::placedQuestion) {
        std::vector<platform::PlacedWidget> placed;
        for (const Placement& each : home.placements()) placed.push_back({each.kind, each.family});
        return platform::placedText(placed);
    }
    if (question == platform::reloadAllQuestion) {
        home.reloadForApp(std::nullopt);
        return "";
    }
    if (question.starts_with(platform::reloadQuestion)) {
        home.reloadForApp(question.substr(platform::reloadQuestion.size()));
        return "";
    }
    if (question.starts_with(whyQuestion)) return latestDecisions(home, question.substr(whyQuestion.size()));
    if (question.starts_with(userQuestion)) {
        const auto done = signIn(home, std::string(question.substr(userQuestion.size())));
        home.changed();
        return done.map([] { return std::string(); });
    }
    return platform::failure("WidgetCenterError", 1, "the home screen does not know this question");
}

bool isHostRunning(const std::filesystem::path& socket) {
    return platform::askHost(socket, platform::placedQuestion, platform::hostExchangeLimit).has_value();
}

Result<std::string> askWhy(const std::filesystem::path& socket, const std::string& kind) {
    return platform::askHost(socket, std::string(whyQuestion) + kind, patience);
}

Result<void> askToSignIn(const std::filesystem::path& socket, const std::string& name) {
    return platform::askHost(socket, std::string(userQuestion) + name, patience).map([](const std::string&) {
    });
}

}  // namespace host
