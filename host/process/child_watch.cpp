#include "host/process/child_watch.h"

#include <google/protobuf/stubs/logging.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstring>
#include <utility>
#include "platform/wire/conversion.h"

namespace host {
namespace {

namespace wire = brightledger::wire;
using platform::Result;
using std::chrono::milliseconds;
using std::chrono::seconds;

// How the child is watched while it owes an answer.
constexpr milliseconds watchInterval{250};
constexpr seconds silenceBeforePing{1};
constexpr seconds pingLimit{2};
constexpr seconds startLimit{15};
constexpr seconds endLimit{1};

tl::unexpected<platform::Error> extensionFailure(std::string message) {
    return platform::failure("ExtensionError", 1, std::move(message));
}

std::string timeText(milliseconds time) {
    if (time.count() % 1000 != 0) return std::to_string(time.count()) + " ms";
    return std::to_string(time.count() / 1000) + " seconds";
}

double millisecondsBetween(ChildWatch::SteadyTime from, ChildWatch::SteadyTime to) {
    return std::chrono::duration<double, std::milli>(to - from).count();
}

}  // namespace

ChildWatch::ChildWatch(const ExtensionOptions& options, std::function<ProcessMemory()> memory, SteadyTime now)
    : idleLimit_(options.idleLimit),
      residentLimitKiB_(options.residentLimitKiB),
      memory_(std::move(memory)),
      started_(now),
      heard_(now),
      lastUse_(now) {}

void ChildWatch::ask(wire::Request& request, milliseconds limit, Completion completion, SteadyTime now) {
    request.set_id(++lastId_);
    lastUse_ = now;
    questions_.emplace(lastId_, Question{now, limit, std::move(completion)});
}

ChildWatch::Completion ChildWatch::withdraw(std::uint64_t id) {
    return std::move(questions_.extract(id).mapped().completion);
}

void ChildWatch::beginEnd(SteadyTime now) {
    if (!isLeaving()) endBegun_ = now;
}

void ChildWatch::received(std::string_view bytes, SteadyTime now) {
    frames_.append(bytes);
    // Without it the library reports text that is not UTF-8 on standard error.
    const google::protobuf::LogSilencer silencer;
    for (;;) {
        const Result<std::optional<std::string>> frame = frames_.next();
        wire::Reply reply;
        if (!frame || (*frame && !reply.ParseFromString(**frame)))
            return kill("the extension sent something that is not a message");
        if (!*frame) return;
        take(std::move(reply), now);
    }
}

void ChildWatch::take(wire::Reply reply, SteadyTime now) {
    heard_ = now;
    pinged_.reset();
    if (!isGreeted_) {
        isGreeted_ = reply.has_hello() && reply.hello().version() == platform::wireVersion;
        if (!isGreeted_) kill("the extension speaks another version");
        return;
    }
    const auto question = questions_.find(reply.id());
    if (question == questions_.end()) return;  // too late, or never asked
    const ProcessMemory memory = memory_();
    note(reply, memory, millisecondsBetween(hasAnswered_ ? question->second.asked : started_, now));
    // However short the peak was: the answer is not used, and the child's end answers the question.
    killIfTooLarge(memory.peakResident);
    if (!killReason_.empty()) return;
    lastUse_ = now;
    complete(std::move(question->second.completion), std::move(reply));
    questions_.erase(question);
}

void ChildWatch::note(const wire::Reply& reply, const ProcessMemory& memory, double wallMs) {
    statistics_ = {
        .peakRssKiB = memory.peakResident,
        .privateKiB = memory.anonymous,
        .userMs = static_cast<double>(reply.user_microseconds()) / 1000.0,
        .systemMs = static_cast<double>(reply.system_microseconds()) / 1000.0,
        .wallMs = wallMs,
        .networkMs = static_cast<double>(reply.network_microseconds()) / 1000.0,
    };
    hasAnswered_ = true;
}

// Usually it is about to die; one that lives on cannot answer any more.
void ChildWatch::closedOutput(SteadyTime now) { silent_ = now; }

void ChildWatch::logged(const std::string& line) {
    constexpr std::string_view fatal = "fatal error: ";
    if (hasFatalLine_) return;
    hasFatalLine_ = line.starts_with(fatal);
    lastLogLine_ = hasFatalLine_ ? line.substr(fatal.size()) : line;
}

void ChildWatch::kill(std::string reason) {
    if (killReason_.empty()) killReason_ = std::move(reason);
}

void ChildWatch::killIfTooLarge(long peakResidentKiB) {
    if (residentLimitKiB_ > 0 && peakResidentKiB > residentLimitKiB_)
        kill("the extension's memory passed " + std::to_string(residentLimitKiB_ / 1024) + " MB");
}

void ChildWatch::ended(int status) {
    ending_ = endingOf(status);
    for (auto& [id, question] : questions_)
        complete(std::move(question.completion), extensionFailure(ending_));
    questions_.clear();
}

std::string ChildWatch::endingOf(int status) const {
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

void ChildWatch::complete(Completion completion, Result<wire::Reply> reply) {
    steps_.completions.push_back([completion = std::move(completion), reply = std::move(reply)]() mutable {
        completion(std::move(reply));
    });
}

ChildWatch::Steps ChildWatch::advance(SteadyTime now) {
    for (auto each = questions_.begin(); each != questions_.end();) {
        Question& question = each->second;
        if (question.deadline() > now) {
            ++each;
            continue;
        }
        complete(std::move(question.completion),
                 extensionFailure("the extension did not answer in " + timeText(question.limit)));
        each = questions_.erase(each);
    }
    if (endBegun_) {
        if (now - *endBegun_ > endLimit) kill("the extension was ended");
    } else if (silent_) {
        if (now - *silent_ > endLimit) kill("the extension closed its output");
    } else if (questions_.empty()) {
        pinged_.reset();
        heard_ = now;
        if (now - lastUse_ >= idleLimit_) {
            endBegun_ = now;
            steps_.closeInput = true;
        }
    } else {
        watchAsked(now);
    }
    steps_.kill = !killReason_.empty();
    return std::exchange(steps_, {});
}

void ChildWatch::watchAsked(SteadyTime now) {
    if (!isGreeted_) {
        if (now - started_ > startLimit) kill("the extension did not start in " + timeText(startLimit));
    } else if (pinged_) {
        if (now - *pinged_ > pingLimit) kill("the extension answered no ping for " + timeText(pingLimit));
    } else if (now - heard_ > silenceBeforePing) {
        steps_.ping.emplace().set_id(++lastId_);
        steps_.ping->mutable_ping();
        pinged_ = now;
    }
    killIfTooLarge(memory_().peakResident);
}

ChildWatch::SteadyTime ChildWatch::nextLook(SteadyTime now) const {
    SteadyTime next = lastUse_ + idleLimit_;
    if (!questions_.empty() || endBegun_ || silent_) next = now + watchInterval;
    for (const auto& [id, question] : questions_) next = std::min(next, question.deadline());
    return next;
}

}  // namespace host
