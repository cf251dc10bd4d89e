#include "platform/wire/host_channel.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <utility>
#include "platform/base/file_descriptor.h"
#include "platform/wire/framing.h"

namespace platform {
namespace {

using SteadyTime = std::chrono::steady_clock::time_point;

constexpr std::string_view accepted = "ok\n";
constexpr std::string_view refused = "error\n";

tl::unexpected<Error> centerError(std::string message) {
    return failure("WidgetCenterError", 1, std::move(message));
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

/// False when nothing can be read or written before the deadline.
bool waitFor(const FileDescriptor& socket, short events, SteadyTime deadline) {
    for (;;) {
        const auto rest =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (rest.count() <= 0) return false;
        pollfd ready{socket.number(), events, 0};
        if (poll(&ready, 1, static_cast<int>(rest.count())) > 0) return true;
    }
}

bool send(const FileDescriptor& socket, std::string_view bytes, SteadyTime deadline) {
    while (!bytes.empty()) {
        if (!waitFor(socket, POLLOUT, deadline)) return false;
        const ssize_t count = ::send(socket.number(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
        if (count < 0 && errno != EAGAIN && errno != EINTR) return false;
    }
    return true;
}

std::optional<std::string> receive(const FileDescriptor& socket, SteadyTime deadline) {
    FrameReader frames;
    std::array<char, 65536> buffer{};
    while (waitFor(socket, POLLIN, deadline)) {
        const ssize_t count = recv(socket.number(), buffer.data(), buffer.size(), 0);
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) continue;
        if (count <= 0) break;
        frames.append({buffer.data(), static_cast<std::size_t>(count)});
        const Result<std::optional<std::string>> frame = frames.next();
        if (!frame) break;
        if (*frame) return *frame;
    }
    return std::nullopt;
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
    const SteadyTime deadline = std::chrono::steady_clock::now() + limit;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (socket.native().size() >= sizeof address.sun_path)
        return centerError("the path of the host's socket is too long: " + socket.string());
    std::memcpy(address.sun_path, socket.c_str(), socket.native().size());
    const std::string length = TRY(frameLength(question.size()));

    // A socket that belongs to another user is not our host.
    struct stat status = {};
    if (lstat(socket.c_str(), &status) != 0 || status.st_uid != getuid())
        return centerError("no widget host is running");
    const FileDescriptor connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!connection.isOpen()) return centerError("cannot make a socket: too many open files");
    while (connect(connection.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        if (errno != EAGAIN) return centerError("no widget host is running");
        // Too many others are waiting in line, and there is nothing to poll for.
        if (std::chrono::steady_clock::now() >= deadline)
            return centerError("the widget host did not answer");
        usleep(10'000);
    }
    if (!send(connection, length, deadline) || !send(connection, question, deadline))
        return centerError("the widget host did not take the question");
    const std::optional<std::string> answer = receive(connection, deadline);
    if (!answer) return centerError("the widget host did not answer");
    if (answer->starts_with(accepted)) return answer->substr(accepted.size());
    if (answer->starts_with(refused)) return centerError(answer->substr(refused.size()));
    return centerError("the widget host's answer cannot be read");
}

std::string hostAnswer(const Result<std::string>& answer) {
    return answer ? std::string(accepted) + *answer : std::string(refused) + answer.error().message;
}

// One widget a line: its kind, a tab, and its family, which may be missing.

std::string placedText(const std::vector<PlacedWidget>& placed) {
    std::string text;
    for (const PlacedWidget& widget : placed)
        text += widget.kind + '\t' + (widget.family ? std::string(description(*widget.family)) : "") + '\n';
    return text;
}

std::vector<PlacedWidget> placedFromText(std::string_view text) {
    std::vector<PlacedWidget> placed;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        const std::size_t tab = std::min(line.find('\t'), line.size());
        if (tab > 0)
            placed.push_back({std::string(line.substr(0, tab)),
                              widgetFamily(line.substr(std::min(tab + 1, line.size())))});
    }
    return placed;
}

HostWidgetCenter::HostWidgetCenter(const std::filesystem::path& dataDirectory)
    : socket_(hostSocketPath(dataDirectory)) {}

HostWidgetCenter::~HostWidgetCenter() { queue_.finish(); }

void HostWidgetCenter::reloadTimelines(std::string_view ofKind) {
    reload(std::string(reloadQuestion) + std::string(ofKind));
}

void HostWidgetCenter::reloadAllTimelines() { reload(std::string(reloadAllQuestion)); }

void HostWidgetCenter::reload(std::string question) {
    queue_.add([this, question = std::move(question)] {
        // Without a running host there is nothing to reload.
        static_cast<void>(askHost(socket_, question, hostExchangeLimit));
    });
}

void HostWidgetCenter::getCurrentConfigurations(
    std::function<void(Result<std::vector<PlacedWidget>>)> completion) {
    queue_.add([this, completion = std::move(completion)] {
        completion(askHost(socket_, placedQuestion, hostExchangeLimit).map([](const std::string& text) {
            return placedFromText(text);
        }));
    });
}

}  // namespace platform
