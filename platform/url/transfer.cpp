#include "platform/url/transfer.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <utility>
#include "platform/base/ascii.h"
#include "platform/url/private_network.h"

namespace platform {
namespace {

constexpr int maximumRedirects = 20;
constexpr std::size_t maximumHeaderBytes = 256U << 10;
constexpr std::size_t largestReservation = 2U << 20;

bool isWebScheme(std::string_view scheme) { return scheme == "http" || scheme == "https"; }

bool isRedirect(int status) {
    constexpr std::array redirects{301, 302, 303, 307, 308};
    return std::ranges::find(redirects, status) != redirects.end();
}

bool isCredential(std::string_view headerName) {
    constexpr std::array<std::string_view, 3> credentials{"Authorization", "Cookie", "Proxy-Authorization"};
    return std::ranges::any_of(credentials,
                               [&](auto name) { return equalsIgnoringAsciiCase(name, headerName); });
}

/// Scheme and authority: the text up to the first "/", "?" or "#" after the two slashes.
std::string originOf(const URL& url) {
    const std::string& text = url.text();
    const std::size_t authority = text.find("//");
    if (authority == std::string::npos) return text;
    return text.substr(0, text.find_first_of("/?#", authority + 2));
}

int errorCode(CURLcode code) {
    switch (code) {
        case CURLE_URL_MALFORMAT: return url_error::badURL;
        case CURLE_COULDNT_RESOLVE_HOST: return url_error::cannotFindHost;
        case CURLE_COULDNT_CONNECT: return url_error::cannotConnectToHost;
        case CURLE_OPERATION_TIMEDOUT: return url_error::timedOut;
        case CURLE_GOT_NOTHING:
        case CURLE_PARTIAL_FILE:
        case CURLE_RECV_ERROR:
        case CURLE_SEND_ERROR: return url_error::networkConnectionLost;
        case CURLE_BAD_CONTENT_ENCODING: return url_error::cannotDecodeContentData;
        // The scheme was checked before, so the answer is not HTTP.
        case CURLE_UNSUPPORTED_PROTOCOL:
        case CURLE_WEIRD_SERVER_REPLY: return url_error::badServerResponse;
        case CURLE_PEER_FAILED_VERIFICATION: return url_error::serverCertificateUntrusted;
        case CURLE_SSL_CONNECT_ERROR:
        case CURLE_SSL_CIPHER:
        case CURLE_SSL_CACERT_BADFILE: return url_error::secureConnectionFailed;
        default: return url_error::unknown;
    }
}

}  // namespace

Transfer::Transfer(URLRequest request, std::optional<SteadyTime> deadline, DataTaskCompletion finish)
    : request_(std::move(request)),
      deadline_(deadline),
      finish_(std::move(finish)),
      origin_(originOf(request_.url)) {}

Transfer::~Transfer() { dropHandle(); }

std::optional<Error> Transfer::objection() const {
    const URL& url = request_.url;
    if (!isWebScheme(url.scheme())) return urlError(url_error::unsupportedURL);
    // libcurl would take the path for the host.
    if (url.host().empty()) return urlError(url_error::cannotFindHost);
    return std::nullopt;
}

CURL* Transfer::beginHop(const std::string& acceptLanguage) {
    easy_ = curl_easy_init();
    if (easy_ == nullptr) return nullptr;
    response_ = {};
    body_.clear();
    bytesSeen_ = 0;
    headerBytes_ = 0;
    lastByte_ = std::chrono::steady_clock::now();

    curl_easy_setopt(easy_, CURLOPT_PRIVATE, this);
    curl_easy_setopt(easy_, CURLOPT_URL, request_.url.text().c_str());
    curl_easy_setopt(easy_, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy_, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1);
    curl_easy_setopt(easy_, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(easy_, CURLOPT_PROXY, "");
    curl_easy_setopt(easy_, CURLOPT_NOSIGNAL, 1L);
    // A cancelled name look-up must not hold the thread until the resolver gives up as well.
    curl_easy_setopt(easy_, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(easy_, CURLOPT_ACCEPT_ENCODING, "gzip, deflate, br");
    curl_easy_setopt(easy_, CURLOPT_USERAGENT, "Brightledger/1.0");
    curl_easy_setopt(easy_, CURLOPT_HEADERFUNCTION, &Transfer::takeHeader);
    curl_easy_setopt(easy_, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy_, CURLOPT_WRITEFUNCTION, &Transfer::takeBody);
    curl_easy_setopt(easy_, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy_, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(easy_, CURLOPT_XFERINFOFUNCTION, &Transfer::noteProgress);
    curl_easy_setopt(easy_, CURLOPT_XFERINFODATA, this);
    setMethodAndBody();
    setHeaders(acceptLanguage);
    if (!request_.allowsPrivateHosts) setAddressChecks();
    return easy_;
}

void Transfer::setMethodAndBody() {
    if (request_.body) {
        const std::string_view body = request_.body->view();
        curl_easy_setopt(easy_, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
        curl_easy_setopt(easy_, CURLOPT_POSTFIELDS, body.data());
    } else if (equalsIgnoringAsciiCase(request_.method, "POST")) {
        // An empty body with its length; servers would wait for a body otherwise.
        curl_easy_setopt(easy_, CURLOPT_POSTFIELDSIZE, 0L);
        curl_easy_setopt(easy_, CURLOPT_POSTFIELDS, "");
    }
    curl_easy_setopt(easy_, CURLOPT_CUSTOMREQUEST, request_.method.c_str());
}

void Transfer::setHeaders(const std::string& acceptLanguage) {
    const auto add = [this](const std::string& line) {
        headerLines_ = curl_slist_append(headerLines_, line.c_str());
    };
    const auto isGiven = [this](std::string_view name) {
        return std::ranges::any_of(request_.headers, [&](const auto& header) {
            return equalsIgnoringAsciiCase(header.first, name);
        });
    };
    for (const auto& [name, value] : request_.headers) add(std::string(name).append(": ").append(value));
    if (!isGiven("Accept-Language")) add("Accept-Language: " + acceptLanguage);
    // libcurl would call every body a form, and ask before it sends a long one.
    if (!isGiven("Content-Type")) add("Content-Type:");
    add("Expect:");
    curl_easy_setopt(easy_, CURLOPT_HTTPHEADER, headerLines_);
}

void Transfer::setAddressChecks() {
    curl_easy_setopt(easy_, CURLOPT_OPENSOCKETFUNCTION, &Transfer::openSocket);
    curl_easy_setopt(easy_, CURLOPT_OPENSOCKETDATA, this);
    // No socket is opened for a kept connection, so its other end is looked at too.
    curl_easy_setopt(easy_, CURLOPT_PREREQFUNCTION, &Transfer::checkPeer);
    curl_easy_setopt(easy_, CURLOPT_PREREQDATA, this);
}

std::optional<Result<HTTPResponse>> Transfer::endHop(CURLcode code) {
    long opened = 0;
    curl_easy_getinfo(easy_, CURLINFO_NUM_CONNECTS, &opened);
    connectionsOpened_ += opened;
    long status = 0;
    curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &status);
    const std::optional<URL> target = code == CURLE_OK ? redirectTarget() : std::nullopt;
    const char* peer = nullptr;
    curl_easy_getinfo(easy_, CURLINFO_PRIMARY_IP, &peer);
    response_.peerAddress = peer == nullptr ? "" : peer;
    dropHandle();

    if (ownError_) return tl::unexpected(urlError(*ownError_));
    if (code != CURLE_OK) return tl::unexpected(urlError(errorCode(code)));
    if (target) {
        if (++redirects_ > maximumRedirects) return tl::unexpected(urlError(url_error::httpTooManyRedirects));
        redirectTo(*target, static_cast<int>(status));
        return std::nullopt;
    }
    response_.statusCode = static_cast<int>(status);
    if (!body_.empty()) response_.body = Bytes(std::move(body_));
    return std::move(response_);
}

std::optional<URL> Transfer::redirectTarget() const {
    long status = 0;
    const char* target = nullptr;
    curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &status);
    curl_easy_getinfo(easy_, CURLINFO_REDIRECT_URL, &target);
    if (!isRedirect(static_cast<int>(status)) || target == nullptr) return std::nullopt;
    return URL::parse(target);
}

void Transfer::redirectTo(URL target, int status) {
    const bool isPost = equalsIgnoringAsciiCase(request_.method, "POST");
    if (status == 303 || (isPost && (status == 301 || status == 302))) {
        request_.method = "GET";
        request_.body.reset();
    }
    std::string origin = originOf(target);
    if (origin != origin_)
        std::erase_if(request_.headers, [](const auto& header) { return isCredential(header.first); });
    request_.url = std::move(target);
    origin_ = std::move(origin);
}

SteadyTime Transfer::deadline() const {
    const SteadyTime idle = isUnderWay() ? lastByte_ + request_.timeoutInterval : SteadyTime::max();
    return deadline_ ? std::min(idle, *deadline_) : idle;
}

void Transfer::finish(Result<HTTPResponse> result) {
    if (const auto finish = std::exchange(finish_, nullptr)) finish(std::move(result));
}

void Transfer::dropHandle() {
    if (easy_ != nullptr) curl_easy_cleanup(easy_);
    easy_ = nullptr;
    curl_slist_free_all(headerLines_);
    headerLines_ = nullptr;
}

std::size_t Transfer::takeHeader(char* bytes, std::size_t size, std::size_t count, void* self) {
    Transfer& transfer = *static_cast<Transfer*>(self);
    const std::string_view line(bytes, size * count);
    transfer.lastByte_ = std::chrono::steady_clock::now();
    transfer.headerBytes_ += line.size();
    if (transfer.headerBytes_ > maximumHeaderBytes) {
        transfer.ownError_ = url_error::badServerResponse;
        return 0;
    }
    // A second status line follows an interim response.
    if (line.starts_with("HTTP/")) transfer.response_.headers.clear();
    if (const std::size_t colon = line.find(':'); colon != std::string_view::npos) {
        transfer.response_.headers.insert_or_assign(asciiLowerCased(line.substr(0, colon)),
                                                    std::string(trimmed(line.substr(colon + 1))));
    }
    return line.size();
}

std::size_t Transfer::takeBody(char* bytes, std::size_t size, std::size_t count, void* self) {
    Transfer& transfer = *static_cast<Transfer*>(self);
    const std::string_view piece(bytes, size * count);
    if (piece.size() > transfer.request_.maximumBodySize - transfer.body_.size()) {
        transfer.ownError_ = url_error::dataLengthExceedsMaximum;
        return 0;
    }
    if (transfer.body_.empty()) {
        curl_off_t length = 0;
        curl_easy_getinfo(transfer.easy_, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
        if (length > 0)
            transfer.body_.reserve(std::min(static_cast<std::size_t>(length), largestReservation));
    }
    transfer.body_.append(piece);
    return piece.size();
}

int Transfer::noteProgress(void* self, curl_off_t, curl_off_t downloaded, curl_off_t, curl_off_t uploaded) {
    // Counts bytes as they are sent: a compressed body may trickle in for long before it yields anything.
    Transfer& transfer = *static_cast<Transfer*>(self);
    const curl_off_t seen = downloaded + uploaded;
    if (seen != transfer.bytesSeen_) transfer.lastByte_ = std::chrono::steady_clock::now();
    transfer.bytesSeen_ = seen;
    return 0;
}

curl_socket_t Transfer::openSocket(void* self, curlsocktype, curl_sockaddr* address) {
    Transfer& transfer = *static_cast<Transfer*>(self);
    if (isPrivateAddress(address->addr)) {
        transfer.ownError_ = url_error::unsupportedURL;
        return CURL_SOCKET_BAD;
    }
    return ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

int Transfer::checkPeer(void* self, char* peerAddress, char*, int, int) {
    Transfer& transfer = *static_cast<Transfer*>(self);
    // A name may have several addresses: one was refused, and another one was used.
    transfer.ownError_.reset();
    if (!isPrivateNumericAddress(peerAddress)) return CURL_PREREQFUNC_OK;
    transfer.ownError_ = url_error::unsupportedURL;
    return CURL_PREREQFUNC_ABORT;
}

}  // namespace platform
