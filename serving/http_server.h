#pragma once

// A small HTTP/1.1 server for this machine alone.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>
#include "platform/base/bytes.h"
#include "platform/base/result.h"

namespace serving {

struct Request {
    /// As it was sent: "GET", or "get" from clients that send it so.
    std::string method;
    /// The part of the target before "?", as it was sent.
    std::string path;
    /// What follows the first "?"; empty when there is none.
    std::string query;
    /// In the order of the wire.
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;

    /// The first header of that name in whatever case; nothing when there is none.
    std::optional<std::string_view> header(std::string_view name) const;
    /// Whether the method is this one in whatever case.
    bool isMethod(std::string_view name) const;
};

/// An answer that does not end: server-sent events, which any thread may push at any time.
///
/// A reader that falls behind by more than a megabyte is disconnected; it comes back by itself and
/// starts from what is true then.
class EventStream {
public:
    EventStream();
    ~EventStream();
    EventStream(const EventStream&) = delete;
    EventStream& operator=(const EventStream&) = delete;

    /// `data` may have several lines. Dropped when the reader has gone.
    void send(std::string_view event, std::string_view data);
    /// False once the reader has gone or the server has ended.
    bool isOpen() const;

private:
    friend class HttpServer;
    struct Wire;
    std::shared_ptr<Wire> wire_;
};

struct Response {
    int status = 200;
    std::string contentType = "text/plain; charset=utf-8";
    std::vector<std::pair<std::string, std::string>> headers = {};
    platform::Bytes body = {};
    /// Waited for before the first byte is sent, without holding a thread.
    std::chrono::milliseconds delay{0};
    /// How the connection fares: `cut` sends half of the body that it announces and closes, `reset`
    /// sends nothing and resets.
    enum class Ending { whole, cut, reset } ending = Ending::whole;
    /// When there, status and headers are sent and then whatever is pushed; `body` is not used.
    std::shared_ptr<EventStream> stream = nullptr;
    /// When there, the answer is what this makes. It runs on one of few threads kept for what takes long, so
    /// that what is answered at once never waits for it.
    std::function<Response()> later = nullptr;
};

struct ServerLimits {
    std::size_t connections = 64;
    std::size_t headerBytes = 16U << 10;
    std::size_t bodyBytes = 1U << 20;
    /// Between requests, and for the whole of one request's arrival.
    std::chrono::milliseconds idle = std::chrono::seconds(60);
};

/// Listens on 127.0.0.1 from its making to its end. A connection beyond the limit is closed at once,
/// a request beyond one is answered with 400, 413 or 431 and closes its connection.
class HttpServer {
public:
    /// Runs on the server's own worker threads, several at once. Should not throw; what it throws
    /// becomes status 500.
    using Handler = std::function<Response(const Request&)>;

    /// `port` 0 takes any free one. Fails (domain "ServerError") when the port cannot be had.
    static platform::Result<std::unique_ptr<HttpServer>> start(std::uint16_t port, Handler handler,
                                                               ServerLimits limits = {});
    /// Closes all connections and waits for handlers that are running.
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    std::uint16_t port() const;
    /// "http://127.0.0.1:PORT".
    std::string origin() const;

private:
    struct Implementation;
    explicit HttpServer(std::unique_ptr<Implementation> implementation);
    std::unique_ptr<Implementation> implementation_;
};

/// "%41" as "A" and "+" as a blank; a "%" without two digits stands for itself.
std::string percentDecoded(std::string_view text);

/// The decoded value of the first parameter of that name in a query; nothing when there is none.
std::optional<std::string> queryValue(std::string_view query, std::string_view name);

}  // namespace serving
