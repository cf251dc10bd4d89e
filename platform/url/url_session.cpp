#include "platform/url/url_session.h"

#include <curl/curl.h>

#include <algorithm>
#include <condition_variable>
#include <csignal>
#include <deque>
#include <future>
#include <iterator>
#include <mutex>
#include <thread>
#include "platform/base/diagnostics.h"
#include "platform/url/transfer.h"

namespace platform {
namespace {

using std::chrono::steady_clock;

constexpr int connectionsPerHost = 6;
constexpr long keptConnections = 16;
constexpr std::size_t largestPicture = 2U << 20;

const char* description(int code) {
    switch (code) {
        case url_error::cancelled: return "cancelled";
        case url_error::badURL: return "bad URL";
        case url_error::timedOut: return "timed out";
        case url_error::unsupportedURL: return "unsupported URL";
        case url_error::cannotFindHost: return "cannot find host";
        case url_error::cannotConnectToHost: return "cannot connect to host";
        case url_error::networkConnectionLost: return "network connection lost";
        case url_error::httpTooManyRedirects: return "too many redirects";
        case url_error::badServerResponse: return "bad server response";
        case url_error::dataLengthExceedsMaximum: return "data length exceeds maximum";
        case url_error::cannotDecodeContentData: return "cannot decode content data";
        case url_error::secureConnectionFailed: return "secure connection failed";
        case url_error::serverCertificateUntrusted: return "server certificate untrusted";
        default: return "unknown URL error";
    }
}

/// Counts the threads that run completions, so that their loader can wait for them.
struct RunningThreads {
    std::mutex mutex;
    std::condition_variable changed;
    int count = 0;
    bool isStopping = false;
};

}  // namespace

Error urlError(int code) { return {url_error::domain, code, description(code)}; }

/// Runs completions in order, on a thread that exists only while there are completions.
struct URLSession::Queue : std::enable_shared_from_this<Queue> {
    explicit Queue(std::shared_ptr<RunningThreads> running) : threads(std::move(running)) {}

    void push(std::function<void()> completion) {
        const std::lock_guard lock(threads->mutex);
        if (threads->isStopping) return;
        completions.push_back(std::move(completion));
        if (isRunning) return;
        isRunning = true;
        ++threads->count;
        std::thread([queue = shared_from_this()] { queue->run(); }).detach();
    }

    void run() {
        while (const std::function<void()> completion = next()) completion();
    }

    /// The next completion. Null when the thread must end, which it then has told the loader.
    std::function<void()> next() {
        std::deque<std::function<void()>> dropped;
        const std::lock_guard lock(threads->mutex);
        if (threads->isStopping) dropped.swap(completions);
        if (completions.empty()) {
            isRunning = false;
            --threads->count;
            threads->changed.notify_all();
            return nullptr;
        }
        std::function<void()> completion = std::move(completions.front());
        completions.pop_front();
        return completion;
    }

    const std::shared_ptr<RunningThreads> threads;
    // The mutex of `threads` guards both.
    std::deque<std::function<void()>> completions;
    bool isRunning = false;
};

struct URLLoader::Implementation {
    ~Implementation();

    void submit(std::unique_ptr<Transfer> transfer);
    void start();
    void stop();

    // On the I/O thread.
    void run();
    bool takeSubmitted();
    void beginWaiting();
    void begin(Transfer& transfer);
    void takeEnded();
    void endLate();
    int millisecondsToNextLate() const;
    std::optional<Result<HTTPResponse>> endHop(Transfer& transfer, CURLcode code);
    void finish(Transfer& transfer, Result<HTTPResponse> result);
    void cancelAll();

    const std::shared_ptr<RunningThreads> completionThreads = std::make_shared<RunningThreads>();
    std::string acceptLanguage;
    std::shared_ptr<URLCarrier> carrier;
    std::optional<URLSession> sharedSession;

    mutable std::mutex mutex;
    std::thread thread;
    bool isStopping = false;
    std::vector<std::unique_ptr<Transfer>> submitted;
    Statistics statistics;
    long transfersUnderWay = 0;
    steady_clock::time_point busySince;

    // Only the I/O thread uses these, except to wake it up.
    CURLM* multi = nullptr;
    std::vector<std::unique_ptr<Transfer>> transfers;
    std::map<std::string, int> connectionsTo;
};

URLLoader::Implementation::~Implementation() {
    stop();
    if (multi != nullptr) curl_multi_cleanup(multi);
}

void URLLoader::Implementation::submit(std::unique_ptr<Transfer> transfer) {
    {
        const std::lock_guard lock(mutex);
        if (!isStopping) {
            if (!thread.joinable()) start();
            ++statistics.transfers;
            if (transfersUnderWay++ == 0) busySince = steady_clock::now();
            submitted.push_back(std::move(transfer));
            curl_multi_wakeup(multi);
            return;
        }
    }
    transfer->finish(tl::unexpected(urlError(url_error::cancelled)));
}

void URLLoader::Implementation::start() {
    static const CURLcode library = curl_global_init(CURL_GLOBAL_DEFAULT);
    multi = library == CURLE_OK ? curl_multi_init() : nullptr;
    if (multi == nullptr) fatalError("the URL library does not start");
    curl_multi_setopt(multi, CURLMOPT_MAXCONNECTS, keptConnections);
    thread = std::thread([this] { run(); });
}

void URLLoader::Implementation::stop() {
    {
        const std::lock_guard lock(completionThreads->mutex);
        completionThreads->isStopping = true;
    }
    {
        const std::lock_guard lock(mutex);
        isStopping = true;
        if (multi != nullptr) curl_multi_wakeup(multi);
    }
    if (thread.joinable()) thread.join();
    std::unique_lock lock(completionThreads->mutex);
    completionThreads->changed.wait(lock, [&] { return completionThreads->count == 0; });
}

void URLLoader::Implementation::run() {
    // A server that hangs up must not end the process.
    sigset_t brokenPipe;
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);

    while (takeSubmitted()) {
        beginWaiting();
        int count = 0;
        curl_multi_perform(multi, &count);
        takeEnded();
        endLate();
        std::erase_if(transfers, [](const auto& transfer) { return transfer->isFinished(); });
        curl_multi_poll(multi, nullptr, 0, millisecondsToNextLate(), nullptr);
    }
    cancelAll();
}

/// False when the loader stops.
bool URLLoader::Implementation::takeSubmitted() {
    const std::lock_guard lock(mutex);
    std::ranges::move(submitted, std::back_inserter(transfers));
    submitted.clear();
    return !isStopping;
}

void URLLoader::Implementation::beginWaiting() {
    for (const auto& transfer : transfers) {
        if (!transfer->isUnderWay() && !transfer->isFinished()) begin(*transfer);
    }
}

void URLLoader::Implementation::begin(Transfer& transfer) {
    if (const std::optional<Error> objection = transfer.objection()) {
        finish(transfer, tl::unexpected(*objection));
        return;
    }
    const auto connections = connectionsTo.find(transfer.origin());
    if (connections != connectionsTo.end() && connections->second == connectionsPerHost) return;
    CURL* const handle = transfer.beginHop(acceptLanguage);
    if (handle == nullptr) {
        finish(transfer, tl::unexpected(urlError(url_error::unknown)));
        return;
    }
    ++connectionsTo[transfer.origin()];
    curl_multi_add_handle(multi, handle);
}

void URLLoader::Implementation::takeEnded() {
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi, &left)) {
        if (message->msg != CURLMSG_DONE) continue;
        char* self = nullptr;
        curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &self);
        Transfer& transfer = *reinterpret_cast<Transfer*>(self);
        if (auto result = endHop(transfer, message->data.result)) finish(transfer, std::move(*result));
    }
    // Transfers that were redirected or waited for a connection continue now.
    beginWaiting();
}

void URLLoader::Implementation::endLate() {
    const auto now = steady_clock::now();
    for (const auto& transfer : transfers) {
        if (transfer->isFinished() || transfer->deadline() > now) continue;
        if (transfer->isUnderWay()) endHop(*transfer, CURLE_OPERATION_TIMEDOUT);
        finish(*transfer, tl::unexpected(urlError(url_error::timedOut)));
    }
}

int URLLoader::Implementation::millisecondsToNextLate() const {
    constexpr std::chrono::milliseconds longest = std::chrono::minutes(10);
    const auto now = steady_clock::now();
    auto wait = longest;
    for (const auto& transfer : transfers) {
        if (transfer->deadline() > now + longest) continue;
        wait = std::min(wait, std::chrono::ceil<std::chrono::milliseconds>(transfer->deadline() - now));
    }
    return static_cast<int>(std::max(wait, std::chrono::milliseconds(0)).count());
}

std::optional<Result<HTTPResponse>> URLLoader::Implementation::endHop(Transfer& transfer, CURLcode code) {
    curl_multi_remove_handle(multi, transfer.handle());
    const auto connections = connectionsTo.find(transfer.origin());
    if (--connections->second == 0) connectionsTo.erase(connections);
    return transfer.endHop(code);
}

void URLLoader::Implementation::finish(Transfer& transfer, Result<HTTPResponse> result) {
    {
        const std::lock_guard lock(mutex);
        statistics.connectionsOpened += transfer.connectionsOpened();
        if (--transfersUnderWay == 0) {
            statistics.busy +=
                std::chrono::duration_cast<std::chrono::microseconds>(steady_clock::now() - busySince);
        }
    }
    transfer.finish(std::move(result));
}

void URLLoader::Implementation::cancelAll() {
    for (const auto& transfer : transfers) {
        if (transfer->isFinished()) continue;
        if (transfer->isUnderWay()) endHop(*transfer, CURLE_ABORTED_BY_CALLBACK);
        finish(*transfer, tl::unexpected(urlError(url_error::cancelled)));
    }
    transfers.clear();
}

URLLoader::URLLoader(std::string acceptLanguage, std::shared_ptr<URLCarrier> carrier)
    : implementation_(std::make_unique<Implementation>()) {
    implementation_->acceptLanguage = std::move(acceptLanguage);
    implementation_->carrier = std::move(carrier);
    implementation_->sharedSession.emplace(*this);
}

URLLoader::~URLLoader() = default;

URLSession& URLLoader::sharedSession() { return *implementation_->sharedSession; }

Result<HTTPResponse> URLLoader::load(URLRequest request, steady_clock::time_point deadline) {
    if (implementation_->carrier) return implementation_->carrier->load(std::move(request));
    const auto promise = std::make_shared<std::promise<Result<HTTPResponse>>>();
    std::future<Result<HTTPResponse>> answer = promise->get_future();
    implementation_->submit(std::make_unique<Transfer>(
        std::move(request), deadline,
        [promise](Result<HTTPResponse> result) { promise->set_value(std::move(result)); }));
    return answer.get();
}

URLLoader::Statistics URLLoader::statistics() const {
    const std::lock_guard lock(implementation_->mutex);
    Statistics statistics = implementation_->statistics;
    if (implementation_->transfersUnderWay > 0) {
        statistics.busy += std::chrono::duration_cast<std::chrono::microseconds>(steady_clock::now() -
                                                                                 implementation_->busySince);
    }
    return statistics;
}

URLSession::URLSession(URLLoader& loader)
    : loader_(loader), queue_(std::make_shared<Queue>(loader.implementation_->completionThreads)) {}

URLSession::~URLSession() = default;

void URLSession::dataTask(URLRequest request, DataTaskCompletion completion) {
    if (const auto& carrier = loader_.implementation_->carrier)
        return carrier->start(std::move(request), std::move(completion));
    auto finish = [queue = queue_, completion = std::move(completion)](Result<HTTPResponse> result) {
        queue->push([completion, result = std::move(result)]() mutable { completion(std::move(result)); });
    };
    loader_.implementation_->submit(
        std::make_unique<Transfer>(std::move(request), std::nullopt, std::move(finish)));
}

std::string acceptLanguage(const Locale& locale) {
    std::string language = locale.identifier.substr(0, locale.identifier.find_first_of(".@"));
    if (language.empty() || language == "C" || language == "POSIX") language = "en_US";
    std::ranges::replace(language, '_', '-');
    const std::size_t region = language.find('-');
    return region == std::string::npos ? language : language + ", " + language.substr(0, region) + ";q=0.9";
}

Result<Bytes> contentsOf(const URL& url, URLLoader& loader, bool allowsPrivateHosts,
                         steady_clock::time_point deadline) {
    const HTTPResponse response = TRY(loader.load(
        {.url = url, .maximumBodySize = largestPicture, .allowsPrivateHosts = allowsPrivateHosts}, deadline));
    const int status = response.statusCode;
    const bool isContent = status == 101 || (status >= 200 && status < 400) || status == 401 || status == 407;
    if (!isContent) return tl::unexpected(urlError(url_error::badServerResponse));
    return response.body.value_or(Bytes());
}

}  // namespace platform
