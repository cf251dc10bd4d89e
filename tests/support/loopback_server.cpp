#include "tests/support/loopback_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace tests {
namespace {

constexpr std::chrono::seconds longWait{20};

std::string lowerCased(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

void resetConnection(int socket) {
    const linger now{.l_onoff = 1, .l_linger = 0};
    ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &now, sizeof now);
}

}  // namespace

std::string gzipCompressed(std::string_view content) {
    z_stream stream{};
    constexpr int windowBitsForGzip = 15 + 16;
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, windowBitsForGzip, 8, Z_DEFAULT_STRATEGY) !=
        Z_OK) {
        throw std::runtime_error("no compressor");
    }
    std::string compressed(deflateBound(&stream, content.size()), '\0');
    std::string input(content);
    stream.next_in = reinterpret_cast<Bytef*>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = reinterpret_cast<Bytef*>(compressed.data());
    stream.avail_out = static_cast<uInt>(compressed.size());
    deflate(&stream, Z_FINISH);
    compressed.resize(stream.total_out);
    deflateEnd(&stream);
    return compressed;
}

std::optional<std::string> ReceivedRequest::header(std::string_view lowerCaseName) const {
    for (const auto& [name, value] : headers) {
        if (name == lowerCaseName) return value;
    }
    return std::nullopt;
}

int ReceivedRequest::headerCount(std::string_view lowerCaseName) const {
    return static_cast<int>(
        std::ranges::count_if(headers, [&](const auto& header) { return header.first == lowerCaseName; }));
}

struct LoopbackServer::State {
    int listener = -1;
    int port = 0;
    std::thread acceptor;

    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    bool isStopping = false;
    Answer everyAnswer{.status = 404};
    std::map<std::string, Answer> answers;
    std::deque<Answer> answersInTurn;
    std::vector<ReceivedRequest> requests;
    std::vector<int> sockets;
    std::vector<std::thread> connections;

    void listenOnOwnPort();
    void acceptConnections();
    void serve(int socket, int connection);
    bool receive(int socket, std::string& buffer, ReceivedRequest& request) const;
    Answer answerTo(const ReceivedRequest& request);
    bool send(int socket, const Answer& answer, bool withoutBody) const;
    bool sendBody(int socket, const Answer& answer, std::string_view body) const;
    bool sendAll(int socket, std::string_view bytes) const;
    /// Waits; false when the server stops meanwhile.
    bool rest(std::chrono::milliseconds duration) const;
};

LoopbackServer::LoopbackServer() : state_(std::make_unique<State>()) {
    state_->listenOnOwnPort();
    state_->acceptor = std::thread([state = state_.get()] { state->acceptConnections(); });
}

LoopbackServer::~LoopbackServer() {
    {
        const std::lock_guard lock(state_->mutex);
        state_->isStopping = true;
        for (const int socket : state_->sockets) ::shutdown(socket, SHUT_RDWR);
    }
    state_->changed.notify_all();
    ::shutdown(state_->listener, SHUT_RDWR);
    state_->acceptor.join();
    for (std::thread& connection : state_->connections) connection.join();
    ::close(state_->listener);
}

std::string LoopbackServer::origin() const { return "http://127.0.0.1:" + std::to_string(state_->port); }

int LoopbackServer::port() const { return state_->port; }

void LoopbackServer::answer(Answer answer) {
    const std::lock_guard lock(state_->mutex);
    state_->everyAnswer = std::move(answer);
}

void LoopbackServer::answer(const std::string& path, Answer answer) {
    const std::lock_guard lock(state_->mutex);
    state_->answers.insert_or_assign(path, std::move(answer));
}

void LoopbackServer::answerInTurn(std::vector<Answer> answers) {
    const std::lock_guard lock(state_->mutex);
    state_->answersInTurn.assign(std::make_move_iterator(answers.begin()),
                                 std::make_move_iterator(answers.end()));
}

std::vector<ReceivedRequest> LoopbackServer::requests() const {
    const std::lock_guard lock(state_->mutex);
    return state_->requests;
}

bool LoopbackServer::waitForRequests(std::size_t count) const {
    std::unique_lock lock(state_->mutex);
    return state_->changed.wait_for(lock, longWait, [&] { return state_->requests.size() >= count; });
}

int LoopbackServer::connectionCount() const {
    const std::lock_guard lock(state_->mutex);
    return static_cast<int>(state_->connections.size());
}

void LoopbackServer::State::listenOnOwnPort() {
    listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (::bind(listener, reinterpret_cast<sockaddr*>(&address), length) != 0 || ::listen(listener, 64) != 0 ||
        ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        throw std::runtime_error("no port to listen on");
    }
    port = ntohs(address.sin_port);
}

void LoopbackServer::State::acceptConnections() {
    while (true) {
        const int socket = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        const std::lock_guard lock(mutex);
        if (isStopping || socket < 0) {
            if (socket >= 0) ::close(socket);
            if (isStopping) return;
            continue;
        }
        const int immediately = 1;
        ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &immediately, sizeof immediately);
        const int connection = static_cast<int>(connections.size());
        sockets.push_back(socket);
        connections.emplace_back([this, socket, connection] { serve(socket, connection); });
    }
}

void LoopbackServer::State::serve(int socket, int connection) {
    std::string buffer;
    while (true) {
        ReceivedRequest request;
        request.connection = connection;
        if (!receive(socket, buffer, request)) break;
        const bool withoutBody = request.method == "HEAD";
        const Answer answer = answerTo(request);
        {
            const std::lock_guard lock(mutex);
            requests.push_back(std::move(request));
        }
        changed.notify_all();
        if (!send(socket, answer, withoutBody)) break;
    }
    // Forgotten and closed as one, so that the server never shuts a stranger's socket down.
    const std::lock_guard lock(mutex);
    std::erase(sockets, socket);
    ::close(socket);
}

bool LoopbackServer::State::receive(int socket, std::string& buffer, ReceivedRequest& request) const {
    const auto readMore = [&] {
        char piece[16384];
        const ssize_t count = ::recv(socket, piece, sizeof piece, 0);
        if (count > 0) buffer.append(piece, static_cast<std::size_t>(count));
        return count > 0;
    };

    std::size_t end = 0;
    while ((end = buffer.find("\r\n\r\n")) == std::string::npos) {
        if (!readMore()) return false;
    }
    const std::string head = buffer.substr(0, end + 2);
    buffer.erase(0, end + 4);

    std::size_t line = head.find("\r\n");
    const std::string first = head.substr(0, line);
    const std::size_t afterMethod = first.find(' ');
    const std::size_t afterTarget = first.rfind(' ');
    if (afterMethod == std::string::npos || afterTarget <= afterMethod) return false;
    request.method = first.substr(0, afterMethod);
    request.target = first.substr(afterMethod + 1, afterTarget - afterMethod - 1);
    for (line += 2; line < head.size();) {
        const std::size_t next = head.find("\r\n", line);
        const std::size_t colon = head.find(':', line);
        std::size_t value = colon + 1;
        while (value < next && head[value] == ' ') ++value;
        request.headers.emplace_back(lowerCased(head.substr(line, colon - line)),
                                     head.substr(value, next - value));
        line = next + 2;
    }

    const std::size_t length = std::stoul(request.header("content-length").value_or("0"));
    while (buffer.size() < length) {
        if (!readMore()) return false;
    }
    request.body = buffer.substr(0, length);
    buffer.erase(0, length);
    return true;
}

Answer LoopbackServer::State::answerTo(const ReceivedRequest& request) {
    const std::lock_guard lock(mutex);
    if (!answersInTurn.empty()) {
        Answer next = std::move(answersInTurn.front());
        answersInTurn.pop_front();
        return next;
    }
    for (const std::string& key : {request.target, request.target.substr(0, request.target.find('?'))}) {
        if (const auto found = answers.find(key); found != answers.end()) return found->second;
    }
    return everyAnswer;
}

bool LoopbackServer::State::send(int socket, const Answer& answer, bool withoutBody) const {
    using Ending = Answer::Ending;
    if (!rest(answer.delay)) return false;
    if (answer.ending == Ending::noAnswer) return false;
    if (answer.ending == Ending::noAnswerReset) {
        resetConnection(socket);
        return false;
    }
    if (answer.ending == Ending::silence) {
        rest(std::chrono::hours(1));
        return false;
    }

    const std::string body = answer.isGzip ? gzipCompressed(answer.body) : answer.body;
    const bool mayHaveBody = answer.status >= 200 && answer.status != 204 && answer.status != 304;
    std::string head = "HTTP/1.1 " + std::to_string(answer.status) + " Answer\r\n";
    for (const auto& [name, value] : answer.headers) head += name + ": " + value + "\r\n";
    if (answer.isGzip) head += "Content-Encoding: gzip\r\n";
    if (answer.closesConnection) head += "Connection: close\r\n";
    if (answer.isChunked) {
        head += "Transfer-Encoding: chunked\r\n";
    } else if (mayHaveBody) {
        head += "Content-Length: " + std::to_string(answer.declaredLength.value_or(body.size())) + "\r\n";
    }
    if (!sendAll(socket, head + "\r\n")) return false;
    if (withoutBody || !mayHaveBody) return !answer.closesConnection;
    if (answer.ending == Ending::cut || answer.ending == Ending::reset) {
        sendBody(socket, answer, std::string_view(body).substr(0, body.size() / 2));
        // What has been sent is to arrive before the reset does.
        rest(std::chrono::milliseconds(50));
        if (answer.ending == Ending::reset) resetConnection(socket);
        return false;
    }
    if (!sendBody(socket, answer, body)) return false;
    if (answer.isChunked && !sendAll(socket, "0\r\n\r\n")) return false;
    // After a wrong length nobody knows where the next answer begins.
    return !answer.closesConnection && !answer.declaredLength;
}

bool LoopbackServer::State::sendBody(int socket, const Answer& answer, std::string_view body) const {
    const std::size_t size = answer.pieceSize.value_or(std::max<std::size_t>(body.size(), 1));
    for (; !body.empty(); body.remove_prefix(std::min(size, body.size()))) {
        const std::string_view piece = body.substr(0, size);
        std::string framed;
        if (answer.isChunked) {
            char length[32];
            std::snprintf(length, sizeof length, "%zx\r\n", piece.size());
            framed = length + std::string(piece) + "\r\n";
        }
        if (!sendAll(socket, answer.isChunked ? std::string_view(framed) : piece)) return false;
        if (!rest(answer.pause)) return false;
    }
    return true;
}

bool LoopbackServer::State::sendAll(int socket, std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

bool LoopbackServer::State::rest(std::chrono::milliseconds duration) const {
    std::unique_lock lock(mutex);
    return !changed.wait_for(lock, duration, [&] { return isStopping; });
}

}  // namespace tests
