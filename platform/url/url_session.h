#pragma once

// Loads resources by their addresses: one I/O thread for all transfers of a process, and one serial
// background queue per session, on which its completions run one after another.

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>
#include "platform/base/bytes.h"
#include "platform/base/locale.h"
#include "platform/base/result.h"
#include "platform/url/url.h"

namespace platform {

/// The platform's numbers in the error domain "URLError".
namespace url_error {
inline constexpr const char* domain = "URLError";
inline constexpr int unknown = -1;
inline constexpr int cancelled = -999;
inline constexpr int badURL = -1000;
inline constexpr int timedOut = -1001;
inline constexpr int unsupportedURL = -1002;
inline constexpr int cannotFindHost = -1003;
inline constexpr int cannotConnectToHost = -1004;
inline constexpr int networkConnectionLost = -1005;
inline constexpr int httpTooManyRedirects = -1007;
inline constexpr int badServerResponse = -1011;
inline constexpr int dataLengthExceedsMaximum = -1103;
inline constexpr int cannotDecodeContentData = -1016;
inline constexpr int secureConnectionFailed = -1200;
inline constexpr int serverCertificateUntrusted = -1202;
}  // namespace url_error

/// The error of the URL domain with this code. Its message is a fixed text for the code and never contains an
/// address, since addresses may contain a user's secrets.
Error urlError(int code);

struct URLRequest {
    URL url;
    /// Sent as it is, in upper or lower case.
    std::string method = "GET";
    std::vector<std::pair<std::string, std::string>> headers = {};
    std::optional<Bytes> body = {};
    /// Ends the transfer when no data has arrived for this long; restarts with every byte.
    std::chrono::milliseconds timeoutInterval = std::chrono::seconds(60);
    /// A decoded body that is longer is an error (dataLengthExceedsMaximum).
    std::size_t maximumBodySize = 64U << 20;
    /// When false, the transfer ends with unsupportedURL before anything is sent to this machine or a private
    /// network. Every hop is judged by the address that its connection really goes to.
    bool allowsPrivateHosts = true;
};

struct HTTPResponse {
    int statusCode = 0;
    /// The numeric address of the server that sent the answer, after all redirects.
    std::string peerAddress;
    /// Names in lower case; the last of several wins.
    std::map<std::string, std::string, std::less<>> headers;
    /// Absent when the response had no body or an empty one.
    std::optional<Bytes> body;
};

/// Runs exactly once on the session's queue; dropped when the loader is destroyed first.
using DataTaskCompletion = std::function<void(Result<HTTPResponse>)>;

/// Answers requests in place of the network, for a program that simulates it. Any thread.
class URLCarrier {
public:
    virtual ~URLCarrier() = default;
    /// `completion` must be called exactly once, after this has returned.
    virtual void start(URLRequest request, DataTaskCompletion completion) = 0;
    /// For a caller that waits for the answer.
    virtual Result<HTTPResponse> load(URLRequest request) = 0;
};

class URLLoader;

/// A group of transfers whose completions run one at a time on a background queue of their own.
/// Any thread may start transfers.
class URLSession {
public:
    explicit URLSession(URLLoader& loader);
    ~URLSession();
    URLSession(const URLSession&) = delete;
    URLSession& operator=(const URLSession&) = delete;

    /// Starts at once. The session may be gone before the answer comes: its queue lives until its
    /// last completion has run.
    void dataTask(URLRequest request, DataTaskCompletion completion);

private:
    struct Queue;
    URLLoader& loader_;
    std::shared_ptr<Queue> queue_;
};

/// The process's transfers: one I/O thread, started with the first transfer, and one pool of
/// connections for all sessions, at most six to a host; further transfers wait their turn.
///
/// Redirects are followed, at most 20, to http and https only: 301 and 302 turn POST into GET, 303
/// turns everything into GET, 307 and 308 keep method and body. Credentials do not go along to another
/// origin. A 3xx without a usable Location is the response. Bodies arrive decompressed. Every request says
/// which language the answer should have, unless its own headers do. Cookies and answers are not kept: each
/// request goes to the server. Proxies of the environment are not used.
class URLLoader {
public:
    /// `acceptLanguage` is the header of that name (see below). With a carrier the network is not used.
    explicit URLLoader(std::string acceptLanguage = "en-US, en;q=0.9",
                       std::shared_ptr<URLCarrier> carrier = nullptr);
    /// Ends all transfers (their completions are dropped) and waits for completions that are running.
    ~URLLoader();

    /// A session for all callers that need none of their own.
    URLSession& sharedSession();

    /// Loads on the I/O thread and waits for the answer on this one, which may be a session's queue but never
    /// the I/O thread. `deadline` applies to the whole transfer with its redirects; after it the error is
    /// timedOut.
    Result<HTTPResponse> load(URLRequest request, std::chrono::steady_clock::time_point deadline);

    struct Statistics {
        /// Time during which at least one transfer was under way, in total.
        std::chrono::microseconds busy{0};
        long transfers = 0;
        long connectionsOpened = 0;
    };
    Statistics statistics() const;

private:
    friend class URLSession;
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

/// Reads the resource at an address as a widget reads a picture: http and https only, 2 MiB at the
/// most, statuses 101, 200 to 399, 401 and 407 give the body. `allowsPrivateHosts` as in URLRequest.
Result<Bytes> contentsOf(const URL& url, URLLoader& loader, bool allowsPrivateHosts,
                         std::chrono::steady_clock::time_point deadline);

/// The value of the header "Accept-Language" for a device's locale: "en-IN, en;q=0.9" for en_IN, "hi" for hi,
/// and American English for locales without a language (C, POSIX, empty).
std::string acceptLanguage(const Locale& locale);

}  // namespace platform
