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
using std::chrono::steady_clock;

constexpr std::size_t longestLogLine = 16384;

/// A descriptor that becomes readable when the process ends. The C library's function is not declared for
/// C++.
int openProcess(int processId) { return static_cast<int>(syscall(SYS_pidfd_open, processId, 0)); }

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

ExtensionChild::ExtensionChild(const ExtensionOptions& options, const std::vector<wire::Request>& first)
    : options_(options),
      watch_(
          options, [this] { return memoryOf(processId_); }, steady_clock::now()) {
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
    for (const wire::Request& request : first) tell(request);

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
        if (watch_.isLeaving()) return false;
        watch_.ask(request, limit, std::move(completion), steady_clock::now());
        if (messages_.isOpen()) sent = send(request);
        // A broken pipe is left to the end of the child, which says more about it.
        if (sent || sent.error().code == EPIPE || sent.error().code == ECONNRESET) {
            wake();
            return true;
        }
        completion = watch_.withdraw(request.id());
    }
    completion(tl::unexpected(sent.error()));
    return true;
}

Result<void> ExtensionChild::tell(const wire::Request& request) {
    const std::lock_guard lock(mutex_);
    return send(request);
}

Result<void> ExtensionChild::send(const wire::Request& request) {
    const std::string frame = TRY(platform::framedMessage(request));
    // All or nothing: questions are small, and a child that leaves so many unread is stuck.
    const ssize_t count = ::send(messages_.number(), frame.data(), frame.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count == static_cast<ssize_t>(frame.size())) return {};
    return platform::failure(
        "ExtensionError", count < 0 ? errno : EAGAIN,
        "the extension takes no questions: " + std::generic_category().message(count < 0 ? errno : EAGAIN));
}

bool ExtensionChild::isOpen() const {
    const std::lock_guard lock(mutex_);
    return !watch_.isLeaving() && messages_.isOpen();
}

bool ExtensionChild::isGone() const {
    const std::lock_guard lock(mutex_);
    return isGone_;
}

std::string ExtensionChild::ending() const {
    const std::lock_guard lock(mutex_);
    return watch_.ending();
}

int ExtensionChild::processId() const {
    const std::lock_guard lock(mutex_);
    return processId_;
}

ExtensionStatistics ExtensionChild::statistics() const {
    const std::lock_guard lock(mutex_);
    return watch_.statistics();
}

void ExtensionChild::beginEnd() {
    {
        const std::lock_guard lock(mutex_);
        if (watch_.isLeaving()) return;
        watch_.beginEnd(steady_clock::now());
        shutdown(messages_.number(), SHUT_WR);
    }
    wake();
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
    Result<int> child = platform::failure("ExtensionError", EMFILE, "cannot be started: too many open files");
    if (messages_.isOpen() && log_.isOpen() && wakeUp_.isOpen()) {
        child = spawn({.program = options_.program,
                       .arguments = options_.arguments,
                       .messages = childMessages_.number(),
                       .log = childLog_.number(),
                       .addressSpace = options_.addressSpaceLimit});
    }
    childMessages_.reset();
    childLog_.reset();
    const std::lock_guard lock(mutex_);
    if (!child) {
        watch_.kill("the extension " + options_.program.string() + " " + child.error().message);
        return false;
    }
    processId_ = *child;
    process_ = platform::FileDescriptor(openProcess(*child));
    if (process_.isOpen()) return true;
    watch_.kill("the extension cannot be watched");
    ::kill(processId_, SIGKILL);
    return false;
}

void ExtensionChild::converse() {
    for (bool isAlive = true; isAlive;) {
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
        if (isAlive) advance();
    }
}

int ExtensionChild::pollTimeout() const {
    const std::lock_guard lock(mutex_);
    const auto now = steady_clock::now();
    const auto pause = std::chrono::ceil<milliseconds>(watch_.nextLook(now) - now);
    return std::max(0, static_cast<int>(pause.count()));
}

void ExtensionChild::advance() {
    ChildWatch::Steps steps;
    {
        const std::lock_guard lock(mutex_);
        steps = watch_.advance(steady_clock::now());
        // One that takes no ping is killed for not answering it.
        if (steps.ping) static_cast<void>(send(*steps.ping));
        if (steps.closeInput) shutdown(messages_.number(), SHUT_WR);
        if (steps.kill && processId_ > 0) ::kill(processId_, SIGKILL);
    }
    for (const auto& complete : steps.completions) complete();
}

void ExtensionChild::readReplies() {
    const bool isOpen = drain(messages_, [this](std::string_view bytes) {
        const std::lock_guard lock(mutex_);
        watch_.received(bytes, steady_clock::now());
    });
    if (isOpen) return;
    const std::lock_guard lock(mutex_);
    messages_.reset();
    watch_.closedOutput(steady_clock::now());
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
    {
        const std::lock_guard lock(mutex_);
        watch_.logged(line);
    }
    if (options_.log) options_.log(std::move(line));
}

void ExtensionChild::finish() {
    int status = 0;
    if (processId_ != 0) {
        while (waitpid(processId_, &status, 0) < 0 && errno == EINTR) {
        }
    }
    if (!partOfLogLine_.empty()) takeLogLine(std::move(partOfLogLine_));
    {
        const std::lock_guard lock(mutex_);
        watch_.ended(status);
        processId_ = 0;
        messages_.reset();
        log_.reset();
        process_.reset();
    }
    advance();
    // Last: whoever sees it gone may destroy it, and that waits for this thread.
    const std::lock_guard lock(mutex_);
    isGone_ = true;
    changed_.notify_all();
}

}  // namespace host
