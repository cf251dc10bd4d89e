#pragma once

// One transfer of the loader: a request and its redirects, hop by hop.

#include <curl/curl.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include "platform/base/result.h"
#include "platform/url/url_session.h"

namespace platform {

using SteadyTime = std::chrono::steady_clock::time_point;

/// Lives on the loader's I/O thread once it has been handed over. Stays where it is in memory, as
/// libcurl points to it.
class Transfer {
public:
    /// `finish` runs on the I/O thread, exactly once.
    Transfer(URLRequest request, std::optional<SteadyTime> deadline, DataTaskCompletion finish);
    ~Transfer();
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    /// The error that keeps the current hop from being sent at all.
    std::optional<Error> objection() const;
    /// Scheme, host and port of the current hop.
    const std::string& origin() const { return origin_; }

    /// A handle that is ready to send the current hop; nothing when there is no memory. It belongs to the
    /// transfer.
    CURL* beginHop(const std::string& acceptLanguage);
    CURL* handle() const { return easy_; }
    bool isUnderWay() const { return easy_ != nullptr; }

    /// What a hop that ended with `code` has come to: nothing when another hop must follow, else the
    /// transfer's end. The handle is gone afterwards.
    std::optional<Result<HTTPResponse>> endHop(CURLcode code);
    /// Connections that this transfer has opened.
    long connectionsOpened() const { return connectionsOpened_; }

    /// When it is late: too long without a byte, or past the deadline. Time before the hop begins is no
    /// idle time.
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

    // Of the current hop.
    CURL* easy_ = nullptr;
    curl_slist* headerLines_ = nullptr;
    SteadyTime lastByte_;
    curl_off_t bytesSeen_ = 0;
    std::size_t headerBytes_ = 0;
    HTTPResponse response_;
    std::string body_;
    /// Why we ended the hop ourselves.
    std::optional<int> ownError_;
};

}  // namespace platform
