#pragma once

// One transfer of the loader: a request and its redirects, hop by hop.

#include <curl/curl.h>

#include <chrono>
#include <optional>
#include <string>
#include "platform/base/result.h"
#include "platform/url/url_session.h"

namespace platform {

using SteadyTime = std::chrono::steady_clock::time_point;

/// Used only on the loader's I/O thread once it has been submitted. Cannot be moved, because libcurl keeps a
/// pointer to it.
class Transfer {
public:
    /// `finish` runs on the I/O thread, exactly once.
    Transfer(URLRequest request, std::optional<SteadyTime> deadline, DataTaskCompletion finish);
    ~Transfer();
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    /// Why the current hop cannot be sent at all.
    std::optional<Error> objection() const;
    /// Scheme, host and port of the current hop.
    const std::string& origin() const { return origin_; }

    /// A handle that is ready to send the current hop; null when memory runs out. The transfer owns it.
    CURL* beginHop(const std::string& acceptLanguage);
    CURL* handle() const { return easy_; }
    bool isUnderWay() const { return easy_ != nullptr; }

    /// The result of the transfer after a hop that ended with `code`; nothing when another hop must follow.
    /// The handle is gone afterwards.
    std::optional<Result<HTTPResponse>> endHop(CURLcode code);
    /// Connections that this transfer has opened.
    long connectionsOpened() const { return connectionsOpened_; }

    /// When the transfer times out: too long without a byte, or past its deadline. The time before a hop
    /// begins does not count as idle.
    SteadyTime deadline() const;

    void finish(Result<HTTPResponse> result);
    bool isFinished() const { return finish_ == nullptr; }

private:
    void setMethodAndBody();
    void setHeaders(const std::string& acceptLanguage);
    void setAddressChecks();
    std::optional<URL> redirectTarget() const;
    void redirectTo(URL target, int status);
    void dropHandle();

    static std::size_t takeHeader(char* bytes, std::size_t size, std::size_t count, void* self);
    static std::size_t takeBody(char* bytes, std::size_t size, std::size_t count, void* self);
    static int noteProgress(void* self, curl_off_t downloadTotal, curl_off_t downloaded,
                            curl_off_t uploadTotal, curl_off_t uploaded);
    static curl_socket_t openSocket(void* self, curlsocktype purpose, curl_sockaddr* address);
    static int checkPeer(void* self, char* peerAddress, char* ownAddress, int peerPort, int ownPort);

    URLRequest request_;
    std::optional<SteadyTime> deadline_;
    DataTaskCompletion finish_;
    std::string origin_;
    int redirects_ = 0;
    long connectionsOpened_ = 0;

    // These belong to the current hop.
    CURL* easy_ = nullptr;
    curl_slist* headerLines_ = nullptr;
    SteadyTime lastByte_;
    curl_off_t bytesSeen_ = 0;
    std::size_t headerBytes_ = 0;
    HTTPResponse response_;
    std::string body_;
    /// The error code when the transfer ended the hop itself.
    std::optional<int> ownError_;
};

}  // namespace platform
