#include "platform/wire/host_widget_center.h"
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <sstream>

namespace platform {

namespace {

constexpr std::size_t longestFrame = 16U << 20;
constexpr std::chrono::milliseconds usualLimit{2000};

tl::unexpected<Error> centerError(std::string message) {
    return failure("WidgetCenterError", 1, std::move(message));
}

class Socket {
public:
    explicit Socket(int descriptor) : descriptor_(descriptor) {}
    ~Socket() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    int get() const { return descriptor_; }

private:
    int descriptor_;
};

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool readAll(int descriptor, char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t got = ::recv(descriptor, bytes, count, 0);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        bytes += got;
        count -= static_cast<std::size_t>(got);
    }
    return true;
}

// A frame is its length as a varint, then that many bytes.
bool writeFrame(int descriptor, std::string_view content) {
    std::string length;
    std::size_t rest = content.size();
    do {
        length += static_cast<char>((rest & 0x7F) | (rest > 0x7F ? 0x80 : 0));
        rest >>= 7;
    } while (rest > 0);
    return content.size() <= longestFrame && writeAll(descriptor, length) && writeAll(descriptor, content);
}

std::optional<std::string> readFrame(int descriptor) {
    std::size_t length = 0;
    for (int shift = 0;; shift += 7) {
        char byte = 0;
        if (shift > 28 || !readAll(descriptor, &byte, 1)) return std::nullopt;
        length |= static_cast<std::size_t>(static_cast<unsigned char>(byte) & 0x7F) << shift;
        if ((static_cast<unsigned char>(byte) & 0x80) == 0) break;
    }
    if (length > longestFrame) return std::nullopt;
    std::string content(length, '\0');
    if (!readAll(descriptor, content.data(), length)) return std::nullopt;
    return content;
}

void limitWaiting(int descriptor, std::chrono::milliseconds limit) {
    const timeval time{limit.count() / 1000, (limit.count() % 1000) * 1000};
    ::setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time);
    ::setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &time, sizeof time);
}

std::filesystem::path runtimeDirectory() {
    const char* named = std::getenv("XDG_RUNTIME_DIR");
    if (named != nullptr && named[0] == '/') return std::filesystem::path(named) / "brightledger";
    return std::filesystem::path("/tmp") / ("brightledger-" + std::to_string(::getuid()));
}

// FNV-1a: the same in every process and build, unlike std::hash.
std::string fingerprint(std::string_view text) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    std::array<char, 17> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(hash));
    return digits.data();
}

std::optional<PlacedWidget> placedWidget(std::string_view line) {
    const std::size_t blank = line.rfind(' ');
    if (blank == std::string_view::npos) return std::nullopt;
    return PlacedWidget{std::string(line.substr(0, blank)), widgetFamily(line.substr(blank + 1))};
}

}  // namespace

std::filesystem::path hostSocketPath(const std::filesystem::path& dataDirectory) {
    std::error_code error;
    const std::filesystem::path place = std::filesystem::weakly_canonical(dataDirectory, error);
    return runtimeDirectory() /
           ("host-" + fingerprint(error ? dataDirectory.string() : place.string()) + ".socket");
}

Result<std::string> askHost(const std::filesystem::path& socket, std::string_view question,
                            std::chrono::milliseconds limit) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (socket.native().size() >= sizeof address.sun_path)
        return centerError("the socket's path is too long");
    std::memcpy(address.sun_path, socket.c_str(), socket.native().size());

    // A host of somebody else's is none of ours.
    struct stat status = {};
    if (::lstat(socket.c_str(), &status) != 0 || status.st_uid != ::getuid())
        return centerError("no widget host is running");
    const Socket connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (connection.get() < 0) return centerError("cannot make a socket");
    limitWaiting(connection.get(), limit);
    if (::connect(connection.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return centerError("no widget host is running");
    if (!writeFrame(connection.get(), question)) return centerError("the widget host has gone");
    const std::optional<std::string> answer = readFrame(connection.get());
    if (!answer) return centerError("the widget host did not answer");
    if (answer->starts_with("ok\n")) return answer->substr(3);
    return centerError(answer->starts_with("error\n") ? answer->substr(6) : "the answer makes no sense");
}

bool answerOneQuestion(int connection, const std::function<std::string(std::string_view)>& answer) {
    limitWaiting(connection, usualLimit);
    const std::optional<std::string> question = readFrame(connection);
    return question && writeFrame(connection, answer(*question));
}

HostWidgetCenter::HostWidgetCenter(const std::filesystem::path& dataDirectory)
    : socket_(hostSocketPath(dataDirectory)) {}

// Without a running host there is nothing to reload: an answer that fails changes nothing.
void HostWidgetCenter::reloadTimelines(std::string_view ofKind) {
    static_cast<void>(askHost(socket_, "reload " + std::string(ofKind), usualLimit));
}

void HostWidgetCenter::reloadAllTimelines() { static_cast<void>(askHost(socket_, "reload", usualLimit)); }

void HostWidgetCenter::getCurrentConfigurations(
    std::function<void(Result<std::vector<PlacedWidget>>)> completion) {
    const Result<std::string> answer = askHost(socket_, "placed", usualLimit);
    if (!answer) return completion(tl::unexpected(answer.error()));
    std::vector<PlacedWidget> placed;
    std::istringstream lines(*answer);
    for (std::string line; std::getline(lines, line);) {
        if (const std::optional<PlacedWidget> widget = placedWidget(line)) placed.push_back(*widget);
    }
    completion(std::move(placed));
}

}  // namespace platform
