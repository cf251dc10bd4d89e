#pragma once

// A real HTTP server on 127.0.0.1 that answers as a test says, faults included.
//
// It stands beside serving/, which only gives well-formed answers: here a test can get a wrong length, bytes
// that trickle, or a connection that is reset halfway.

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tests {

/// How the server answers one request.
struct Answer {
    /// How the answer ends.
    enum class Ending {
        complete,
        /// Closes the connection after the first half of the body.
        cut,
        /// Resets the connection after the first half of the body.
        reset,
        /// Closes the connection instead of answering.
        noAnswer,
        /// Resets the connection instead of answering.
        noAnswerReset,
        /// Never answers; keeps the connection open.
        silence,
    };

    int status = 200;
    std::string body = {};
    std::vector<std::pair<std::string, std::string>> headers = {};
    /// Before the first byte of the answer.
    std::chrono::milliseconds delay{0};
    /// The body goes out in pieces of so many bytes, with a pause after each.
    std::optional<std::size_t> pieceSize = std::nullopt;
    std::chrono::milliseconds pause{0};
    bool isChunked = false;
    /// Compresses the body and says so.
    bool isGzip = false;
    /// The Content-Length to send instead of the right one.
    std::optional<std::size_t> declaredLength = std::nullopt;
    Ending ending = Ending::complete;

    static Answer redirect(int status, std::string location) {
        return {.status = status, .headers = {{"Location", std::move(location)}}};
    }
};

struct ReceivedRequest {
    /// Method, path and query as they came.
    std::string method;
    std::string target;
    /// As they came, names in lower case.
    std::multimap<std::string, std::string> headers;
    std::string body;

    /// The first of that name; absent when there is none.
    std::optional<std::string> header(const std::string& lowerCaseName) const;
};

/// Listens on a port of its own while it lives, and keeps connections open between requests. It answers 404
/// as long as no answer is set. Any thread.
class LoopbackServer {
public:
    LoopbackServer();
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    /// "http://127.0.0.1:PORT"
    std::string origin() const;

    /// Answers every request for a path without an answer of its own.
    void answer(Answer answer) { this->answer("", std::move(answer)); }
    /// Answers requests for `path` (with a "?" in it: for the whole target).
    void answer(const std::string& path, Answer answer);

    /// In the order in which they arrived.
    std::vector<ReceivedRequest> requests() const;
    /// Waits until `count` requests have come; whether they have, after a long wait.
    bool waitForRequests(std::size_t count) const;
    int connectionCount() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace tests
