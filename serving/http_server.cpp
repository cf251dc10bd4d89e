#include "serving/http_server.h"
#include <algorithm>
#include <boost/asio.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <deque>
#include <exception>
#include <thread>
#include "platform/base/ascii.h"

namespace serving {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using asio::ip::tcp;

namespace {

constexpr std::size_t largestBacklog = 1U << 20;
constexpr int workerCount = 4;
constexpr int slowWorkerCount = 8;
constexpr auto quiet = asio::as_tuple(asio::use_awaitable);

using BodyParser = http::request_parser<http::string_body>;
using FullResponse = http::response<http::span_body<const char>>;

Request requestFrom(const http::request<http::string_body>& message) {
    Request request;
    request.method = std::string(message.method_string());
    const std::string_view target(message.target().data(), message.target().size());
    const std::size_t mark = target.find('?');
    request.path = std::string(target.substr(0, mark));
    if (mark != std::string_view::npos) request.query = std::string(target.substr(mark + 1));
    for (const auto& field : message)
        request.headers.emplace_back(std::string(field.name_string()), std::string(field.value()));
    request.body = message.body();
    return request;
}

template <typename Message>
void setHead(Message& message, const Response& response) {
    message.version(11);
    message.result(static_cast<unsigned>(response.status));
    message.set(http::field::content_type, response.contentType);
    for (const auto& [name, value] : response.headers) message.insert(name, value);
}

Response refusal(int status, const char* text) { return {.status = status, .body = platform::Bytes(text)}; }

std::optional<Response> refusalFor(const beast::error_code& error) {
    if (error == http::error::header_limit) return refusal(431, "headers too large\n");
    if (error == http::error::body_limit) return refusal(413, "body too large\n");
    const bool isBadRequest = error.category() == make_error_code(http::error::bad_method).category() &&
                              error != http::error::end_of_stream && error != http::error::partial_message;
    if (isBadRequest) return refusal(400, "not a request\n");
    return std::nullopt;
}

/// Nothing when the request may come in.
std::optional<Response> refusalAtTheDoor(const Request& request, const std::string& authority) {
    const auto countOf = [&](std::string_view name) {
        return std::ranges::count_if(request.headers, [&](const auto& header) {
            return platform::equalsIgnoringAsciiCase(header.first, name);
        });
    };
    if (countOf("Host") > 1) return refusal(400, "more than one Host header\n");
    if (request.header("Host") != authority) return refusal(421, "this is not the host that you look for\n");
    // The body of another coding has no known end, and what follows it would be taken for a request.
    if (const auto coding = request.header("Transfer-Encoding");
        countOf("Transfer-Encoding") > 1 ||
        (coding && !platform::equalsIgnoringAsciiCase(*coding, "chunked")))
        return refusal(501, "chunked is the only transfer coding that is known\n");
    const auto site = request.header("Sec-Fetch-Site");
    const auto origin = request.header("Origin");
    if ((site && site != "same-origin" && site != "none") || (origin && origin != "http://" + authority))
        return refusal(403, "not from our own page\n");
    return std::nullopt;
}

using Make = std::function<Response()>;

Response answerOf(const Make& make) {
    try {
        return make();
    } catch (const std::exception&) {
        return refusal(500, "the request could not be answered\n");
    }
}

/// `make` must outlive the response.
asio::awaitable<Response> madeOn(asio::thread_pool& threads, const Make& make) {
    co_return co_await asio::co_spawn(
        threads, [&make]() -> asio::awaitable<Response> { co_return answerOf(make); }, asio::use_awaitable);
}

}  // namespace

/// Shared by the sender of events and the connection. The sender appends text and wakes the connection, which
/// writes it.
struct EventStream::Wire {
    std::mutex mutex;
    std::string waiting;
    bool isOpen = true;
    /// Set while a connection serves the stream; wakes it on its own thread.
    std::function<void()> wake;

    void close() {
        const std::lock_guard lock(mutex);
        isOpen = false;
        wake = nullptr;
    }
};

EventStream::EventStream() : wire_(std::make_shared<Wire>()) {}

EventStream::~EventStream() {
    const std::lock_guard lock(wire_->mutex);
    wire_->isOpen = false;
    if (wire_->wake) wire_->wake();
}

void EventStream::send(std::string_view event, std::string_view data) {
    std::string text = "event: " + std::string(event) + "\n";
    for (std::size_t start = 0; start <= data.size();) {
        const std::size_t end = std::min(data.find('\n', start), data.size());
        text += "data: ";
        text += data.substr(start, end - start);
        text += '\n';
        start = end + 1;
    }
    text += '\n';

    const std::lock_guard lock(wire_->mutex);
    if (!wire_->isOpen) return;
    if (wire_->waiting.size() + text.size() > largestBacklog) wire_->isOpen = false;
    wire_->waiting += text;
    if (wire_->wake) wire_->wake();
}

bool EventStream::isOpen() const {
    const std::lock_guard lock(wire_->mutex);
    return wire_->isOpen;
}

struct HttpServer::Implementation {
    Implementation(Handler ownHandler, ServerLimits ownLimits, KeyCheck ownKeyCheck)
        : handler(std::move(ownHandler)),
          hasKey(std::move(ownKeyCheck)),
          limits(ownLimits),
          acceptor(network),
          workers(workerCount),
          slowWorkers(slowWorkerCount) {}

    ~Implementation() {
        network.stop();
        if (thread.joinable()) thread.join();
        for (asio::thread_pool* pool : {&workers, &slowWorkers}) {
            pool->stop();
            pool->join();
        }
    }

    asio::awaitable<void> accept();
    asio::awaitable<void> serve(tcp::socket socket);
    /// False when the connection must not be used again.
    asio::awaitable<bool> answer(beast::tcp_stream& stream, Response response, bool isHead, bool keepAlive);
    asio::awaitable<void> push(beast::tcp_stream& stream, const Response& response);
    asio::awaitable<void> wait(std::chrono::milliseconds duration);

    Handler handler;
    KeyCheck hasKey;
    ServerLimits limits;
    std::string authority;
    asio::io_context network{1};
    tcp::acceptor acceptor;
    asio::thread_pool workers;
    asio::thread_pool slowWorkers;
    std::size_t connections = 0;
    /// The oldest first.
    std::deque<beast::tcp_stream*> strangers;
    std::thread thread;
};

asio::awaitable<void> HttpServer::Implementation::accept() {
    for (;;) {
        auto [error, socket] = co_await acceptor.async_accept(quiet);
        if (error) {
            // Perhaps there are no descriptors left; without a pause this would spin.
            co_await wait(std::chrono::milliseconds(50));
            continue;
        }
        if (connections >= limits.connections) continue;
        if (strangers.size() >= limits.strangers) {
            strangers.front()->close();
            strangers.pop_front();
        }
        // Otherwise an event would wait until the reader has acknowledged the one before.
        beast::error_code ignored;
        socket.set_option(tcp::no_delay(true), ignored);
        ++connections;
        asio::co_spawn(network, serve(std::move(socket)),
                       [this](const std::exception_ptr&) { --connections; });
    }
}

asio::awaitable<void> HttpServer::Implementation::wait(std::chrono::milliseconds duration) {
    asio::steady_timer timer(network, duration);
    co_await timer.async_wait(quiet);
}

asio::awaitable<void> HttpServer::Implementation::serve(tcp::socket socket) {
    beast::tcp_stream stream(std::move(socket));
    beast::flat_buffer buffer(limits.headerBytes + limits.bodyBytes);
    strangers.push_back(&stream);
    bool isStranger = true;
    for (;;) {
        BodyParser parser;
        parser.header_limit(static_cast<std::uint32_t>(limits.headerBytes));
        parser.body_limit(limits.bodyBytes);
        stream.expires_after(isStranger ? limits.strangerRequest : limits.idle);
        const auto [error, bytes] = co_await http::async_read(stream, buffer, parser, quiet);
        if (error) {
            if (const std::optional<Response> refused = refusalFor(error))
                co_await answer(stream, *refused, false, false);
            break;
        }
        const bool isHead = parser.get().method() == http::verb::head;
        const Request request = requestFrom(parser.get());
        if (std::optional<Response> refused = refusalAtTheDoor(request, authority)) {
            co_await answer(stream, *std::move(refused), isHead, false);
            break;
        }
        if (isStranger && (!hasKey || hasKey(request))) {
            std::erase(strangers, &stream);
            isStranger = false;
        }
        const bool keepAlive = parser.get().keep_alive() && !isStranger;
        stream.expires_never();
        Make make = [this, &request] { return handler(request); };
        Response response = co_await madeOn(workers, make);
        if (response.later) {
            make = std::move(response.later);
            response = co_await madeOn(slowWorkers, make);
        }
        if (!co_await answer(stream, std::move(response), isHead, keepAlive)) break;
    }
    std::erase(strangers, &stream);
    beast::error_code ignored;
    stream.socket().shutdown(tcp::socket::shutdown_send, ignored);
}

asio::awaitable<bool> HttpServer::Implementation::answer(beast::tcp_stream& stream, Response response,
                                                         bool isHead, bool keepAlive) {
    if (response.delay.count() > 0) co_await wait(response.delay);
    if (response.ending == Response::Ending::reset) {
        beast::error_code ignored;
        stream.socket().set_option(asio::socket_base::linger(true, 0), ignored);
        stream.socket().close(ignored);
        co_return false;
    }
    if (response.stream) {
        co_await push(stream, response);
        co_return false;
    }
    FullResponse message;
    setHead(message, response);
    message.keep_alive(keepAlive);
    const std::string_view body = response.body.view();
    message.body() = {body.data(), body.size()};
    // Statuses without a body must not announce one, or the client waits for it.
    const bool isBodiless = response.status == 204 || response.status == 304;
    if (!isBodiless) message.content_length(body.size());
    if (isBodiless || isHead) message.body() = {};

    stream.expires_after(limits.idle);
    if (response.ending == Response::Ending::cut) {
        message.body() = {body.data(), body.size() / 2};
        message.keep_alive(false);
    }
    http::response_serializer<http::span_body<const char>> serializer(message);
    const auto [error, bytes] = co_await http::async_write(stream, serializer, quiet);
    co_return !error && keepAlive && response.ending == Response::Ending::whole;
}

asio::awaitable<void> HttpServer::Implementation::push(beast::tcp_stream& stream, const Response& response) {
    http::response<http::empty_body> head;
    setHead(head, response);
    head.set(http::field::connection, "close");
    http::response_serializer<http::empty_body> serializer(head);
    stream.expires_after(limits.idle);
    auto [error, bytes] = co_await http::async_write_header(stream, serializer, quiet);

    const std::shared_ptr<EventStream::Wire> wire = response.stream->wire_;
    // However this ends, because the reader leaves or the server stops: nobody must be woken any more.
    const struct Closing {
        ~Closing() { wire->close(); }
        std::shared_ptr<EventStream::Wire> wire;
    } closing{wire};
    const auto timer = std::make_shared<asio::steady_timer>(network);
    {
        const std::lock_guard lock(wire->mutex);
        wire->wake = [timer] { asio::post(timer->get_executor(), [timer] { timer->cancel(); }); };
    }
    bool isOpen = true;
    while (!error && isOpen) {
        std::string text;
        {
            const std::lock_guard lock(wire->mutex);
            text.swap(wire->waiting);
            isOpen = wire->isOpen;
        }
        if (!text.empty()) {
            stream.expires_after(limits.idle);
            std::tie(error, bytes) = co_await asio::async_write(stream, asio::buffer(text), quiet);
            continue;
        }
        if (!isOpen) break;
        // Sending a comment after the wait finds out whether the reader is still there.
        timer->expires_after(std::chrono::seconds(15));
        const auto [ended] = co_await timer->async_wait(quiet);
        if (!ended) {
            const std::lock_guard lock(wire->mutex);
            wire->waiting += ":\n\n";
        }
    }
}

platform::Result<std::unique_ptr<HttpServer>> HttpServer::start(std::uint16_t port, Handler handler,
                                                                ServerLimits limits, KeyCheck hasKey) {
    auto server = std::make_unique<Implementation>(std::move(handler), limits, std::move(hasKey));
    const tcp::endpoint endpoint(asio::ip::address_v4::loopback(), port);
    try {
        server->acceptor.open(endpoint.protocol());
        server->acceptor.set_option(asio::socket_base::reuse_address(true));
        server->acceptor.bind(endpoint);
        server->acceptor.listen();
        server->authority = "127.0.0.1:" + std::to_string(server->acceptor.local_endpoint().port());
        asio::co_spawn(server->network, server->accept(), asio::detached);
        server->thread = std::thread([&network = server->network] { network.run(); });
    } catch (const boost::system::system_error& error) {
        return platform::failure(
            "ServerError", 1,
            "cannot listen on port " + std::to_string(port) + ": " + error.code().message());
    }
    return std::unique_ptr<HttpServer>(new HttpServer(std::move(server)));
}

HttpServer::HttpServer(std::unique_ptr<Implementation> implementation)
    : implementation_(std::move(implementation)) {}

HttpServer::~HttpServer() = default;

std::uint16_t HttpServer::port() const {
    beast::error_code ignored;
    return implementation_->acceptor.local_endpoint(ignored).port();
}

std::string HttpServer::origin() const { return "http://127.0.0.1:" + std::to_string(port()); }

}  // namespace serving
