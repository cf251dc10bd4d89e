#include "host/web/page_server.h"
#include <sys/random.h>
#include <array>
#include <condition_variable>
#include <nlohmann/json.hpp>
#include <optional>
#include "host/home/page_actions.h"
#include "platform/base/ascii.h"
#include "platform/base/bytes.h"
#include "platform/base/files.h"
#include "platform/json/json_document.h"

namespace host {
namespace {

using platform::Bytes;
using serving::Request;
using serving::Response;

/// 32 random bytes as hexadecimal text.
std::string secret() {
    std::array<unsigned char, 32> bytes{};
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) std::abort();
    static constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

/// In time that tells nothing of where they differ.
bool isSame(std::string_view a, std::string_view b) {
    unsigned char difference = a.size() == b.size() ? 0 : 1;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
        difference = static_cast<unsigned char>(difference | (a[i] ^ b[i]));
    return difference == 0;
}

Response plain(int status, std::string text) { return {.status = status, .body = Bytes(std::move(text))}; }

/// Cookies do not tell ports apart, so ours carries its port in the name. The server has made sure that the
/// Host header is ours.
std::string cookieName(const Request& request) {
    const std::string_view host = *request.header("Host");
    return "brightledger-" + std::string(host.substr(host.find(':') + 1));
}

Response jsonText(std::string text) {
    return {.contentType = "application/json", .body = Bytes(std::move(text))};
}

Response pngOf(const platform::Result<std::string>& png) {
    if (!png) return plain(404, png.error().message + "\n");
    return {.contentType = "image/png", .body = Bytes(*png)};
}

Response later(std::function<Response()> make) { return {.later = std::move(make)}; }

int scaleOf(const Request& request) {
    const auto scale = platform::parsedNumber<int>(serving::queryValue(request.query, "scale").value_or("3"));
    return std::clamp(scale.value_or(3), 1, 3);
}

struct PageFile {
    std::string_view path;
    std::string_view name;
    std::string_view type;
};

constexpr std::array pageFiles{PageFile{"/", "index.html", "text/html; charset=utf-8"},
                               PageFile{"/home.css", "home.css", "text/css; charset=utf-8"},
                               PageFile{"/home.js", "home.js", "text/javascript; charset=utf-8"},
                               PageFile{"/elements.js", "elements.js", "text/javascript; charset=utf-8"},
                               PageFile{"/workbench.js", "workbench.js", "text/javascript; charset=utf-8"},
                               PageFile{"/icon.svg", "icon.svg", "image/svg+xml"}};

Response fileResponse(const std::filesystem::path& file, std::string_view type) {
    auto content = platform::readFile(file, 1U << 20);
    if (!content) return plain(404, "nothing here\n");
    return {.contentType = std::string(type), .body = Bytes(*std::move(content))};
}

Response withSecurityHeaders(Response response) {
    if (response.later)
        return {.later = [make = std::move(response.later)] { return withSecurityHeaders(make()); }};
    response.headers.emplace_back(
        "Content-Security-Policy",
        "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; "
        "connect-src 'self'; form-action 'none'; base-uri 'none'; frame-ancestors 'none'");
    response.headers.emplace_back("X-Content-Type-Options", "nosniff");
    response.headers.emplace_back("Referrer-Policy", "no-referrer");
    response.headers.emplace_back("Cross-Origin-Resource-Policy", "same-origin");
    response.headers.emplace_back("Cache-Control", "no-store");
    return response;
}

}  // namespace

/// Wakes the one thread that tells the state: who changes something does not wait for that, many changes
/// are told at once, and an older state never after a newer one.
struct PageServer::Signal {
    void raise() {
        {
            const std::lock_guard lock(mutex);
            isRaised = true;
        }
        changed.notify_one();
    }

    /// False at the end.
    bool wait(const std::stop_token& end) {
        std::unique_lock lock(mutex);
        changed.wait(lock, end, [this] { return isRaised; });
        isRaised = false;
        return !end.stop_requested();
    }

    std::mutex mutex;
    std::condition_variable_any changed;
    bool isRaised = false;
};

PageServer::PageServer(HomeScreen& home) : home_(home), state_(home), signal_(std::make_shared<Signal>()) {}

platform::Result<std::unique_ptr<PageServer>> PageServer::start(HomeScreen& home, std::uint16_t port,
                                                                const std::filesystem::path& pages) {
    std::unique_ptr<PageServer> page(new PageServer(home));
    page->pages_ = pages;
    page->token_ = secret();
    page->cookie_ = secret();
    auto server = serving::HttpServer::start(
        port, [&self = *page](const Request& request) { return withSecurityHeaders(self.answer(request)); },
        {.bodyBytes = 64U << 10},
        [&self = *page](const Request& request) { return self.hasCookie(request); });
    if (!server) return tl::unexpected(server.error());
    page->server_ = std::move(*server);
    page->teller_ = std::jthread([&self = *page](const std::stop_token& end) {
        while (self.signal_->wait(end)) self.tell();
    });
    home.whenChanged([signal = page->signal_] { signal->raise(); });
    return page;
}

PageServer::~PageServer() { home_.whenChanged(nullptr); }

std::string PageServer::address() const { return server_->origin() + "/?token=" + token_; }

bool PageServer::hasCookie(const Request& request) const {
    const std::string name = cookieName(request) + "=";
    std::string_view cookies = request.header("Cookie").value_or("");
    while (!cookies.empty()) {
        const std::string_view cookie = cookies.substr(0, cookies.find("; "));
        cookies.remove_prefix(std::min(cookies.size(), cookie.size() + 2));
        if (cookie.starts_with(name) && isSame(cookie.substr(name.size()), cookie_)) return true;
    }
    return false;
}

Response PageServer::answer(const Request& request) {
    const auto token = serving::queryValue(request.query, "token");
    if (request.method == "GET" && request.path == "/" && token && isSame(*token, token_)) {
        if (hasCookie(request)) return {.status = 303, .headers = {{"Location", "/"}}};
        if (isTokenUsed_.exchange(true))
            return plain(403,
                         "This address has been opened once already. Stop the home screen and start it "
                         "again for a new one.\n");
        return {.status = 303,
                .headers = {{"Location", "/"},
                            {"Set-Cookie",
                             cookieName(request) + "=" + cookie_ + "; Path=/; HttpOnly; SameSite=Strict"}}};
    }
    if (!hasCookie(request)) return plain(403, "Open the address that the program printed.\n");
    if (request.method == "GET" || request.method == "HEAD") return get(request);
    if (request.method == "POST") return post(request);
    return plain(405, "GET and POST are all we know\n");
}

Response PageServer::get(const Request& request) {
    const std::string_view path = request.path;
    for (const PageFile& file : pageFiles) {
        if (file.path == path) return fileResponse(pages_ / file.name, file.type);
    }
    if (path == "/events") return events();
    if (path == "/state") return jsonText(state_.state());
    if (path == "/choices") return jsonText(state_.choices());
    if (path == "/day") return later([this] { return jsonText(state_.day()); });
    if (path == "/ledger") {
        const auto after =
            platform::parsedNumber<std::uint64_t>(serving::queryValue(request.query, "after").value_or("0"));
        return jsonText(state_.ledger(after.value_or(0)));
    }
    const std::size_t slash = path.rfind('/');
    const auto number = platform::parsedNumber<int>(path.substr(slash + 1));
    if (path.starts_with("/picture/") && number) return pngOf(home_.picture(*number, scaleOf(request)));
    if (path.starts_with("/inspect/") && number) {
        const auto text = state_.inspection(*number);
        return text ? jsonText(*text) : plain(404, "there is no such widget\n");
    }
    if (path.starts_with("/day/") && number && *number >= 0) {
        const auto picture = state_.dayPicture(static_cast<std::size_t>(*number));
        return picture ? pngOf(*picture) : plain(404, "there is no such picture\n");
    }
    const auto family = platform::widgetFamily(path.substr(slash + 1));
    if (path.starts_with("/preview/") && family && slash > 9) {
        const auto preview = [this, kind = std::string(path.substr(9, slash - 9)), family,
                              scale = scaleOf(request)](EntryRequest entry) {
            return pngOf(home_.preview(kind, *family, entry, scale));
        };
        if (serving::queryValue(request.query, "request") == "placeholder")
            return preview(EntryRequest::placeholder);
        return later([preview] { return preview(EntryRequest::snapshot); });
    }
    return plain(404, "nothing here\n");
}

Response PageServer::post(const Request& request) {
    // The server lets no foreign origin in, and every browser names it with a POST.
    if (!request.header("Origin")) return plain(403, "not from our own page\n");
    if (request.path != "/act") return plain(404, "nothing here\n");
    const auto action = platform::parsedJson(request.body);
    if (!action || !action->is_object()) return plain(400, "not an action\n");
    if (const auto done = act(home_, *action); !done) return plain(409, done.error().message + "\n");
    return plain(200, "done\n");
}

Response PageServer::events() {
    auto stream = std::make_shared<serving::EventStream>();
    {
        // A reader before it is told its first state, so that no change falls between the two.
        const std::lock_guard lock(mutex_);
        readers_.push_back(stream);
    }
    signal_->raise();
    return {.contentType = "text/event-stream", .stream = stream};
}

void PageServer::tell() {
    {
        // Without a reader nobody needs the work of telling the state.
        const std::lock_guard lock(mutex_);
        std::erase_if(readers_, [](const auto& reader) { return !reader->isOpen(); });
        if (readers_.empty()) return;
    }
    const std::string state = state_.state();
    const std::lock_guard lock(mutex_);
    for (const auto& reader : readers_) reader->send("state", state);
}

}  // namespace host
