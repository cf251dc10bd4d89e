#include "tests/support/loopback_server.h"

#include <zlib.h>

#include <algorithm>
#include <boost/asio.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string_view>
#include <thread>
#include "platform/base/ascii.h"

namespace tests {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using asio::ip::tcp;

constexpr std::chrono::seconds longWait{20};

std::optional<ReceivedRequest> receive(tcp::socket& socket, beast::flat_buffer& buffer) {
    http::request_parser<http::string_body> parser;
    beast::error_code error;
    http::read(socket, buffer, parser, error);
    if (error) return std::nullopt;
    const auto& message = parser.get();
    ReceivedRequest request{.method = std::string(message.method_string()),
                            .target = std::string(message.target()),
                            .headers = {},
                            .body = message.body()};
    for (const auto& field : message)
        request.headers.emplace(platform::asciiLowerCased(std::string(field.name_string())), field.value());
    return request;
}

bool sendAll(tcp::socket& socket, const auto& bytes) {
    beast::error_code error;
    asio::write(socket, bytes, error);
    return !error;
}

void resetWhenClosed(tcp::socket& socket) { socket.set_option(asio::socket_base::linger(true, 0)); }

/// Status line and headers, up to the empty line.
std::string headOf(const Answer& answer, bool mayHaveBody, std::size_t bodySize) {
    std::string head = "HTTP/1.1 " + std::to_string(answer.status) + " Answer\r\n";
    for (const auto& [name, value] : answer.headers) head += name + ": " + value + "\r\n";
    if (answer.isGzip) head += "Content-Encoding: gzip\r\n";
    if (answer.isChunked)
        head += "Transfer-Encoding: chunked\r\n";
    else if (mayHaveBody)
        head += "Content-Length: " + std::to_string(answer.declaredLength.value_or(bodySize)) + "\r\n";
    return head + "\r\n";
}

std::string gzipCompressed(std::string content) {
    z_stream stream{};
    constexpr int windowBitsForGzip = 15 + 16;
    deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, windowBitsForGzip, 8, Z_DEFAULT_STRATEGY);
    std::string compressed(deflateBound(&stream, content.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(content.data());
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = reinterpret_cast<Bytef*>(compressed.data());
    stream.avail_out = static_cast<uInt>(compressed.size());
    deflate(&stream, Z_FINISH);
    compressed.resize(stream.total_out);
    deflateEnd(&stream);
    return compressed;
}

}  // namespace

std::optional<std::string> ReceivedRequest::header(const std::string& lowerCaseName) const {
    const auto found = headers.find(lowerCaseName);
    return found == headers.end() ? std::nullopt : std::optional(found->second);
}

struct LoopbackServer::State {
    asio::io_context context;
    tcp::acceptor listener{context, tcp::endpoint(asio::ip::address_v4::loopback(), 0)};
    const int port = listener.local_endpoint().port();

    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    bool isStopping = false;
    std::map<std::string, Answer> answers;
    std::vector<ReceivedRequest> requests;
    std::deque<tcp::socket> connections;
    // The last two, so that they end before anything else goes, and the one that adds others first.
    std::vector<std::jthread> threads;
    std::jthread acceptor;

    void acceptConnections();
    void serve(tcp::socket& socket);
    Answer answerTo(const ReceivedRequest& request) const;
    /// False when the connection is of no more use.
    bool send(tcp::socket& socket, const Answer& answer) const;
    bool sendBody(tcp::socket& socket, const Answer& answer, std::string_view body) const;
    /// Waits; false when the server stops meanwhile.
    bool rest(std::chrono::milliseconds duration) const;
};

LoopbackServer::LoopbackServer() : state_(std::make_unique<State>()) {
    state_->acceptor = std::jthread([state = state_.get()] { state->acceptConnections(); });
}

LoopbackServer::~LoopbackServer() {
    beast::error_code ignored;
    {
        const std::lock_guard lock(state_->mutex);
        state_->isStopping = true;
        for (tcp::socket& connection : state_->connections)
            connection.shutdown(tcp::socket::shutdown_both, ignored);
    }
    state_->changed.notify_all();
    ::shutdown(state_->listener.native_handle(), SHUT_RDWR);
}

std::string LoopbackServer::origin() const { return "http://127.0.0.1:" + std::to_string(state_->port); }

void LoopbackServer::answer(const std::string& path, Answer answer) {
    const std::lock_guard lock(state_->mutex);
    state_->answers.insert_or_assign(path, std::move(answer));
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

void LoopbackServer::State::acceptConnections() {
    for (;;) {
        beast::error_code error;
        tcp::socket socket = listener.accept(error);
        const std::lock_guard lock(mutex);
        if (isStopping) return;
        if (error) continue;
        socket.set_option(tcp::no_delay(true));
        tcp::socket& own = connections.emplace_back(std::move(socket));
        threads.emplace_back([this, &own] { serve(own); });
    }
}

void LoopbackServer::State::serve(tcp::socket& socket) {
    beast::flat_buffer buffer;
    while (auto request = receive(socket, buffer)) {
        const Answer answer = answerTo(*request);
        {
            const std::lock_guard lock(mutex);
            requests.push_back(*std::move(request));
        }
        changed.notify_all();
        if (!send(socket, answer)) break;
    }
    const std::lock_guard lock(mutex);
    socket.close();
}

Answer LoopbackServer::State::answerTo(const ReceivedRequest& request) const {
    const std::lock_guard lock(mutex);
    const std::string path = request.target.substr(0, request.target.find('?'));
    for (const std::string& key : {request.target, path, std::string()}) {
        if (const auto found = answers.find(key); found != answers.end()) return found->second;
    }
    return {.status = 404};
}

bool LoopbackServer::State::send(tcp::socket& socket, const Answer& answer) const {
    using Ending = Answer::Ending;
    if (!rest(answer.delay)) return false;
    if (answer.ending == Ending::silence) rest(std::chrono::hours(1));
    if (answer.ending == Ending::noAnswerReset) resetWhenClosed(socket);
    const bool isAnswered =
        answer.ending == Ending::complete || answer.ending == Ending::cut || answer.ending == Ending::reset;
    if (!isAnswered) return false;

    const std::string body = answer.isGzip ? gzipCompressed(answer.body) : answer.body;
    const bool mayHaveBody = answer.status >= 200 && answer.status != 204 && answer.status != 304;
    if (!sendAll(socket, asio::buffer(headOf(answer, mayHaveBody, body.size())))) return false;
    if (!mayHaveBody) return true;
    if (answer.ending != Ending::complete) {
        sendBody(socket, answer, std::string_view(body).substr(0, body.size() / 2));
        // The client must receive what has been sent before the reset.
        rest(std::chrono::milliseconds(50));
        if (answer.ending == Ending::reset) resetWhenClosed(socket);
        return false;
    }
    if (!sendBody(socket, answer, body)) return false;
    if (answer.isChunked && !sendAll(socket, http::make_chunk_last())) return false;
    // After a wrong length nobody knows where the next answer begins.
    return !answer.declaredLength;
}

bool LoopbackServer::State::sendBody(tcp::socket& socket, const Answer& answer, std::string_view body) const {
    const std::size_t size = answer.pieceSize.value_or(std::max<std::size_t>(body.size(), 1));
    for (; !body.empty(); body.remove_prefix(std::min(size, body.size()))) {
        const auto piece = asio::buffer(body.substr(0, size));
        if (!(answer.isChunked ? sendAll(socket, http::make_chunk(piece)) : sendAll(socket, piece)) ||
            !rest(answer.pause))
            return false;
    }
    return true;
}

bool LoopbackServer::State::rest(std::chrono::milliseconds duration) const {
    std::unique_lock lock(mutex);
    return !changed.wait_for(lock, duration, [&] { return isStopping; });
}

}  // namespace tests
