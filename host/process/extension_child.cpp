#include "host/process/extension_child.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <fstream>
#include <system_error>
#include <utility>
#include "host/process/spawn.h"
#include "platform/wire/conversion.h"

namespace host {
namespace {

namespace wire = brightledger::wire;
using platform::Result;
using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

// How the child is watched while it owes an answer.
constexpr milliseconds watchInterval{250};
constexpr seconds silenceBeforePing{1};
constexpr seconds pingLimit{2};
constexpr seconds startLimit{15};
constexpr seconds endLimit{1};
constexpr std::size_t longestLogLine = 16384;

platform::Error extensionError(std::string message) { return {"ExtensionError", 1, std::move(message)}; }

/// A descriptor that becomes readable when the process ends. The C library's function is not declared for
/// C++.
int openProcess(int processId) { return static_cast<int>(syscall(SYS_pidfd_open, processId, 0)); }

std::string timeText(milliseconds time) {
    if (time.count() % 1000 != 0) return std::to_string(time.count()) + " ms";
    return std::to_string(time.count() / 1000) + " seconds";
}

/// In KiB; zeros when there is no such process.
struct ProcessMemory {
    long peakResident = 0;
    /// The part of the resident memory that belongs to no file.
    long anonymous = 0;
};

ProcessMemory memoryOf(int processId) {
    ProcessMemory memory;
    std::ifstream status("/proc/" + std::to_string(processId) + "/status");
    // Lines such as "VmHWM:      9284 kB".
    for (std::string line; std::getline(status, line);) {
        long* kibibytes = line.starts_with("VmHWM:")     ? &memory.peakResident
                          : line.starts_with("RssAnon:") ? &memory.anonymous
                                                         : nullptr;
        const char* digits = line.data() + std::min(line.find_first_of("0123456789"), line.size());
        if (kibibytes != nullptr) std::from_chars(digits, line.data() + line.size(), *kibibytes);
    }
    return memory;
}

double inMilliseconds(std::uint64_t microseconds) { return static_cast<double>(microseconds) / 1000.0; }

/// Reads what is there without waiting; false at the end of the stream.
template <typename Take>
bool drain(const platform::FileDescriptor& descriptor, const Take& take) {
    std::array<char, 16384> buffer{};
    for (;;) {
        const ssize_t count = read(descriptor.number(), buffer.data(), buffer.size());
        if (count > 0) {
            take(std::string_view(buffer.data(), static_cast<std::size_t>(count)));
        } else if (count == 0 || errno != EINTR) {
            return count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
        }
    }
}

}  // namespace

ExtensionChild::ExtensionChild(const ExtensionOptions& options, std::vector<wire::Request> first)
    : options_(options), started_(steady_clock::now()), heard_(started_), lastUse_(started_) {
    std::array<int, 2> ends{-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) == 0) {
        messages_ = platform::aboveStandard(ends[0]);
        childMessages_ = platform::aboveStandard(ends[1]);
    }
    if (pipe2(ends.data(), O_CLOEXEC) == 0) {
        log_ = platform::aboveStandard(ends[0]);
        childLog_ = platform::aboveStandard(ends[1]);
    }
    wakeUp_ = platform::FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    for (const platform::FileDescriptor* end : {&messages_, &log_}) {
        if (end->isOpen()) fcntl(end->number(), F_SETFL, fcntl(end->number(), F_GETFL) | O_NONBLOCK);
    }
    for (wire::Request& request : first) tell(std::move(request));

    // Signals to the host are for its other threads.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    thread_ = std::thread([this] { live(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

ExtensionChild::~ExtensionChild() {
    beginEnd();
    thread_.join();
}

bool ExtensionChild::ask(wire::Request request, milliseconds limit, Completion completion) {
    Result<void> sent;
    {
        const std::lock_guard lock(mutex_);
        if (isLeaving()) return false;
        const std::uint64_t id = ++lastId_;
        request.set_id(id);
        lastUse_ = steady_clock::now();
        if (messages_.isOpen()) sent = send(request);
        // A broken pipe is left to the end of the child, which says more about it.
        if (sent || sent.error().code == EPIPE || sent.error().code == ECONNRESET) {
            questions_.emplace(id, Question{lastUse_, limit, std::move(completion)});
            wake();
            return true;
        }
    }
    completion(tl::unexpected(sent.error()));
    return true;
}

Result<void> ExtensionChild::tell(wire::Request request) {
    const std::lock_guard lock(mutex_);
    return send(request);
}

Result<void> ExtensionChild::send(wire::Request& request) {
    const Result<std::string> frame = platform::framedMessage(request);
    if (!frame) return tl::unexpected(frame.error());
    // All or nothing: questions are small, and a child that leaves so many unread is stuck.
    const ssize_t count =
        ::send(messages_.number(), frame->data(), frame->size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count == static_cast<ssize_t>(frame->size())) return {};
    return platform::failure(
        "ExtensionError", count < 0 ? errno : EAGAIN,
        "the extension takes no questions: " + std::generic_category().message(count < 0 ? errno : EAGAIN));
}

bool ExtensionChild::isOpen() const {
    const std::lock_guard lock(mutex_);
    return !isLeaving() && messages_.isOpen();
}

bool ExtensionChild::isLeaving() const { return endBegun_ || !ending_.empty(); }

bool ExtensionChild::isGone() const {
    const std::lock_guard lock(mutex_);
    return isGone_;
}

std::string ExtensionChild::ending() const {
    const std::lock_guard lock(mutex_);
    return ending_;
}

int ExtensionChild::processId() const {
    const std::lock_guard lock(mutex_);
    return processId_;
}

ExtensionStatistics ExtensionChild::statistics() const {
    const std::lock_guard lock(mutex_);
    return statistics_;
}

void ExtensionChild::beginEnd() {
    {
        const std::lock_guard lock(mutex_);
        if (isLeaving()) return;
        closeInput();
    }
    wake();
}

void ExtensionChild::closeInput() {
    endBegun_ = steady_clock::now();
    shutdown(messages_.number(), SHUT_WR);
}

void ExtensionChild::waitUntilGone() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isGone_; });
}

void ExtensionChild::wake() const {
    const std::uint64_t one = 1;
    // Fails only when the counter is full, and then the thread wakes anyway.
    [[maybe_unused]] const ssize_t written = write(wakeUp_.number(), &one, sizeof one);
}

void ExtensionChild::live() {
    if (start()) converse();
    finish();
}

bool ExtensionChild::start() {
    if (!messages_.isOpen() || !log_.isOpen() || !wakeUp_.isOpen()) {
        killReason_ = "the extension cannot be started: too many open files";
        return false;
    }
    const Result<int> child = spawn({.program = options_.program,
                                     .arguments = options_.arguments,
                                     .messages = childMessages_.number(),
                                     .log = childLog_.number()});
    childMessages_.reset();
    childLog_.reset();
    if (!child) {
        killReason_ = "the extension " + options_.program.string() + " " + child.error().message;
        return false;
    }
    const std::lock_guard lock(mutex_);
    processId_ = *child;
    process_ = platform::FileDescriptor(openProcess(*child));
    return true;
}

void ExtensionChild::converse() {
    if (!process_.isOpen()) kill("the extension cannot be watched");
    for (bool isAlive = process_.isOpen(); isAlive;) {
        std::array<pollfd, 4> events{{{messages_.number(), POLLIN, 0},
                                      {log_.number(), POLLIN, 0},
                                      {wakeUp_.number(), POLLIN, 0},
                                      {process_.number(), POLLIN, 0}}};
        poll(events.data(), events.size(), pollTimeout());
        if (events[2].revents != 0) drain(wakeUp_, [](std::string_view) {});
        // What the child wrote before its death still counts.
        isAlive = events[3].revents == 0;
        if (log_.isOpen()) readLog();
        if (messages_.isOpen()) readReplies();
        giveUpLateQuestions();
        if (isAlive) watch();
    }
}

void ExtensionChild::giveUpLateQuestions() {
    std::vector<Question> late;
    {
        const SteadyTime now = steady_clock::now();
        const std::lock_guard lock(mutex_);
        std::erase_if(questions_, [&](auto& each) {
            const bool isLate = each.second.deadline() <= now;
            if (isLate) late.push_back(std::move(each.second));
            return isLate;
        });
    }
    for (const Question& question : late) {
        question.completion(
            tl::unexpected(extensionError("the extension did not answer in " + timeText(question.limit))));
    }
}

int ExtensionChild::pollTimeout() {
    const std::lock_guard lock(mutex_);
    const SteadyTime now = steady_clock::now();
    SteadyTime next = lastUse_ + options_.idleLimit;
    if (!questions_.empty() || endBegun_ || silent_) next = now + watchInterval;
    for (const auto& [id, question] : questions_) next = std::min(next, question.deadline());
    return std::max(0, static_cast<int>(std::chrono::ceil<milliseconds>(next - now).count()));
}

void ExtensionChild::watch() {
    const SteadyTime now = steady_clock::now();
    const std::lock_guard lock(mutex_);
    if (endBegun_) {
        if (now - *endBegun_ > endLimit) kill("the extension was ended");
    } else if (silent_) {
        if (now - *silent_ > endLimit) kill("the extension closed its output");
    } else if (questions_.empty()) {
        pinged_.reset();
        heard_ = now;
        if (now - lastUse_ >= options_.idleLimit) closeInput();
    } else {
        watchAsked(now);
    }
}

void ExtensionChild::watchAsked(SteadyTime now) {
    if (!isGreeted_) {
        if (now - started_ > startLimit) kill("the extension did not start in " + timeText(startLimit));
    } else if (pinged_) {
        if (now - *pinged_ > pingLimit) kill("the extension answered no ping for " + timeText(pingLimit));
    } else if (now - heard_ > silenceBeforePing) {
        wire::Request ping;
        ping.set_id(++lastId_);
        ping.mutable_ping();
        if (send(ping)) pinged_ = now;
    }
    endIfTooLarge(memoryOf(processId_).peakResident);
}

void ExtensionChild::endIfTooLarge(long peakResidentKiB) {
    const long limit = options_.residentLimitKiB;
    if (limit > 0 && peakResidentKiB > limit) {
        kill("the extension's memory passed " + std::to_string(limit / 1024) + " MB");
    }
}

void ExtensionChild::kill(std::string reason) {
    if (killReason_.empty()) killReason_ = std::move(reason);
    ::kill(processId_, SIGKILL);
}

void ExtensionChild::readReplies() {
    const bool isOpen = drain(messages_, [this](std::string_view bytes) { frames_.append(bytes); });
    for (;;) {
        const Result<std::optional<std::string>> frame = frames_.next();
        wire::Reply reply;
        if (!frame || (*frame && !reply.ParseFromString(**frame)))
            return kill("the extension sent something that is not a message");
        if (!*frame) break;
        take(std::move(reply));
    }
    // Usually it is about to die; one that lives on cannot answer any more.
    if (!isOpen) {
        const std::lock_guard lock(mutex_);
        messages_.reset();
        silent_ = steady_clock::now();
    }
}

void ExtensionChild::take(wire::Reply reply) {
    const SteadyTime now = steady_clock::now();
    heard_ = now;
    pinged_.reset();
    if (!isGreeted_) {
        isGreeted_ = reply.has_hello() && reply.hello().version() == platform::wireVersion;
        if (!isGreeted_) kill("the extension speaks another version");
        return;
    }
    Completion completion;
    {
        const std::lock_guard lock(mutex_);
        const auto question = questions_.find(reply.id());
        if (question == questions_.end()) return;  // too late, or never asked
        const ProcessMemory memory = memoryOf(processId_);
        if (!reply.has_pong()) {
            const SteadyTime start = hasAnswered_ ? question->second.asked : started_;
            statistics_ = {.peakRssKiB = memory.peakResident,
                           .privateKiB = memory.anonymous,
                           .userMs = inMilliseconds(reply.user_microseconds()),
                           .systemMs = inMilliseconds(reply.system_microseconds()),
                           .wallMs = std::chrono::duration<double, std::milli>(now - start).count(),
                           .networkMs = inMilliseconds(reply.network_microseconds())};
            hasAnswered_ = true;
        }
        // However short the peak was: the answer is not used, and the child's end answers the question.
        endIfTooLarge(memory.peakResident);
        if (!killReason_.empty()) return;
        lastUse_ = now;
        completion = std::move(question->second.completion);
        questions_.erase(question);
    }
    completion(std::move(reply));
}

void ExtensionChild::readLog() {
    const bool isOpen = drain(log_, [this](std::string_view bytes) {
        for (const char byte : bytes) {
            if (byte != '\n') partOfLogLine_.push_back(byte);
            if (byte == '\n' || partOfLogLine_.size() == longestLogLine)
                takeLogLine(std::exchange(partOfLogLine_, {}));
        }
    });
    if (!isOpen) log_.reset();
}

void ExtensionChild::takeLogLine(std::string line) {
    constexpr std::string_view fatal = "fatal error: ";
    if (!hasFatalLine_) {
        hasFatalLine_ = line.starts_with(fatal);
        lastLogLine_ = hasFatalLine_ ? line.substr(fatal.size()) : line;
    }
    if (options_.log) options_.log(std::move(line));
}

std::string ExtensionChild::endingOf(int status) const {
    if (!killReason_.empty()) return killReason_;
    if (endBegun_) return "the extension was ended while it was asked";
    if (WIFSIGNALED(status)) {
        const char* name = sigabbrev_np(WTERMSIG(status));
        std::string text = "the extension was ended by signal " + std::to_string(WTERMSIG(status));
        if (name != nullptr) text += std::string(" (SIG") + name + ")";
        return hasFatalLine_ ? text + ": " + lastLogLine_ : text;
    }
    const std::string text = "the extension ended with exit code " + std::to_string(WEXITSTATUS(status));
    return lastLogLine_.empty() ? text : text + ": " + lastLogLine_;
}

void ExtensionChild::finish() {
    int status = 0;
    if (processId_ != 0) {
        while (waitpid(processId_, &status, 0) < 0 && errno == EINTR) {
        }
    }
    if (!partOfLogLine_.empty()) takeLogLine(std::move(partOfLogLine_));

    std::map<std::uint64_t, Question> unanswered;
    {
        const std::lock_guard lock(mutex_);
        ending_ = endingOf(status);
        unanswered.swap(questions_);
        processId_ = 0;
        messages_.reset();
        log_.reset();
        process_.reset();
    }
    for (const auto& [id, question] : unanswered)
        question.completion(tl::unexpected(extensionError(ending_)));
    // Last: whoever sees it gone may destroy it, and that waits for this thread.
    const std::lock_guard lock(mutex_);
    isGone_ = true;
    changed_.notify_all();
}

}  // namespace host
