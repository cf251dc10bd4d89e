#pragma once

// A small HTTP/1.1 server that only this machine can reach.

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
    /// As it was sent: "GET", or "get" from some clients.
    std::string method;
    /// The part of the target before "?", as it was sent.
    std::string path;
    /// The part after the first "?"; empty without one.
    std::string query;
    /// In the order in which they were sent.
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;

    /// The first header of that name, in upper or lower case.
    std::optional<std::string_view> header(std::string_view name) const;
    /// Compares in upper or lower case.
    bool isMethod(std::string_view name) const;
};

/// An answer that does not end: server-sent events, which any thread may push at any time.
///
/// A reader that falls behind by more than a megabyte is disconnected; it reconnects by itself and
/// starts from the state at that time.
class EventStream {
public:
    EventStream();
    ~EventStream();
    EventStream(const EventStream&) = delete;
    EventStream& operator=(const EventStream&) = delete;

    /// `data` may have several lines. Dropped when the reader has gone.
    void send(std::string_view event, std::string_view data);
    /// False once the reader has left or the server has stopped.
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
    /// How long to wait before the first byte is sent. Blocks no thread.
    std::chrono::milliseconds delay{0};
    /// How the connection ends: `cut` closes it after half of the announced body, `reset` resets it without
    /// sending anything.
    enum class Ending { whole, cut, reset } ending = Ending::whole;
    /// When set, status and headers are sent first, then the events; `body` is not used.
    std::shared_ptr<EventStream> stream = nullptr;
    /// When set, this makes the answer. It runs on one of a few threads for slow answers, so that quick
    /// answers never wait for it.
    std::function<Response()> later = nullptr;
};

struct ServerLimits {
    std::size_t connections = 256;
    /// Of these, the connections that have sent no request with the key yet. One more closes the oldest of
    /// them, so that they never keep out whoever has the key.
    std::size_t strangers = 16;
    /// How long a stranger may take for its request.
    std::chrono::milliseconds strangerRequest = std::chrono::seconds(5);
    std::size_t headerBytes = 16U << 10;
    std::size_t bodyBytes = 1U << 20;
    /// The limit for the time between requests, and for the arrival of one whole request.
    std::chrono::milliseconds idle = std::chrono::seconds(60);
};

/// Listens on 127.0.0.1 while it exists. A connection beyond the limit is closed at once. A request beyond a
/// limit is answered with 413 or 431, a malformed one with 400, and its connection is closed.
///
/// Other names for this machine and other people's pages do not get in: a request needs exactly one Host
/// header, which is "127.0.0.1:PORT" (otherwise 421), and what a browser says about where it comes from
/// (Origin, Sec-Fetch-Site) must be our own page or the person who typed the address (otherwise 403).
class HttpServer {
public:
    /// Runs on the server's own worker threads, several at once. Should not throw; an exception
    /// becomes status 500.
    using Handler = std::function<Response(const Request&)>;

    /// Whether a request holds the key of its server. Runs on the server's own threads, like the handler.
    using KeyCheck = std::function<bool(const Request&)>;

    /// `port` 0 takes any free one. Without `hasKey` nobody needs a key. Fails (domain "ServerError") when
    /// the port is not available.
    static platform::Result<std::unique_ptr<HttpServer>> start(std::uint16_t port, Handler handler,
                                                               ServerLimits limits = {},
                                                               KeyCheck hasKey = nullptr);
    /// Closes all connections and waits for handlers that are running.
    ~HttpServer();

    std::uint16_t port() const;
    /// "http://127.0.0.1:PORT".
    std::string origin() const;

private:
    struct Implementation;
    explicit HttpServer(std::unique_ptr<Implementation> implementation);
    std::unique_ptr<Implementation> implementation_;
};

/// "%41" as "A" and "+" as a blank; a "%" without two hexadecimal digits stays.
std::string percentDecoded(std::string_view text);

/// The decoded value of the first parameter of that name in a query; nothing when the query has no such
/// parameter.
std::optional<std::string> queryValue(std::string_view query, std::string_view name);

}  // namespace serving
