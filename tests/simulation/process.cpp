#include "tests/simulation/process.h"

#include <algorithm>
#include <csignal>
#include <string>
#include <utility>
#include "extension/app/bundle/message_loop.h"
#include "host/process/child_watch.h"
#include "host/process/entry_messages.h"
#include "platform/base/diagnostics.h"
#include "platform/wire/conversion.h"
#include "platform/wire/framing.h"
#include "tests/simulation/network.h"

namespace simulation {
namespace {

namespace wire = brightledger::wire;
using namespace std::chrono_literals;

constexpr long usualSize = 20L * 1024;
constexpr long hugeSize = 40L * 1024;

/// What ends a process whose contract is broken.
struct FatalError {
    std::string message;
};

}  // namespace

/// One process from start to end.
class SimulatedProcess::Life : public std::enable_shared_from_this<Life> {
public:
    Life(SimulatedProcess& owner, platform::RuntimeOptions options)
        : owner_(owner),
          network_(std::static_pointer_cast<SimulatedNetwork>(options.carrier)),
          inside_(std::make_unique<Inside>(std::move(options))),
          watch_(
              {.program = {}, .arguments = {}, .log = {}, .residentLimitKiB = 30L * 1024},
              [this] {
                  return host::ProcessMemory{size_, size_};
              },
              owner.executor_.now()) {}

    void start() {
        network_->runWith([this](const std::function<void()>& work) {
            if (isAlive_) guarded(work)();
        });
        const bool isSlow = owner_.random_.happens(owner_.weather_.slowStart);
        owner_.executor_.after(isSlow ? 20s : owner_.random_.around(40ms), guarded([this] {
                                   if (!isAlive_) return;
                                   inside_->conversation.emplace(
                                       inside_->runtime, inside_->bundle,
                                       [this](std::string_view frame) { return toHost(frame); },
                                       [this](std::function<void()> work) {
                                           owner_.executor_.after(0ms,
                                                                  guarded([this, work = std::move(work)] {
                                                                      if (isAlive_ && !isHung_) work();
                                                                  }));
                                       });
                                   for (const std::string& frame : std::exchange(waiting_, {}))
                                       receive(frame);
                               }));
        wire::Request hello;
        hello.mutable_hello()->set_version(platform::wireVersion);
        toChild(hello);
        look();
    }

    bool isOpen() const { return isAlive_ && !watch_.isLeaving(); }
    bool isAlive() const { return isAlive_; }
    void setClock(platform::Instant instant) {
        if (isAlive_) inside_->runtime.clock().set(instant, 0.0);
    }

    void ask(wire::Request request, std::chrono::milliseconds limit,
             host::ChildWatch::Completion completion) {
        watch_.ask(request, limit, std::move(completion), owner_.executor_.now());
        toChild(request);
        look();
    }
    void hang() { isHung_ = true; }
    void grow() { size_ = hugeSize; }
    void beginEnd() {
        watch_.beginEnd(owner_.executor_.now());
        if (!isHung_) die(0, owner_.random_.around(5ms));
        look();
    }
    /// `status` is one of `waitpid`.
    void die(int status, std::chrono::milliseconds delay) {
        owner_.executor_.after(delay, guarded([this, status] {
                                   if (!isAlive_) return;
                                   isAlive_ = false;
                                   inside_.reset();
                                   watch_.ended(status);
                                   look();
                               }));
    }

private:
    /// What ends with the process.
    struct Inside {
        explicit Inside(platform::RuntimeOptions options) : runtime(std::move(options)), bundle(runtime) {}

        platform::Runtime runtime;
        extension::PerchWidgetBundle bundle;
        std::optional<extension::Conversation> conversation = {};
    };

    /// Work that is dropped once this is gone.
    std::function<void()> guarded(std::function<void()> work) {
        return [life = weak_from_this(), work = std::move(work)] {
            const auto held = life.lock();
            if (!held) return;
            try {
                work();
            } catch (const FatalError& error) {
                held->watch_.logged("fatal error: " + error.message);
                held->die(SIGABRT, 0ms);
            }
        };
    }

    void toChild(const wire::Request& request) {
        owner_.executor_.after(1ms, guarded([this, frame = *platform::framedMessage(request)] {
                                   if (!isAlive_) return;
                                   if (inside_->conversation) {
                                       receive(frame);
                                   } else {
                                       waiting_.push_back(frame);
                                   }
                               }));
    }
    void receive(const std::string& frame) {
        if (!isHung_ && !inside_->conversation->receive(frame)) die(1 << 8, 0ms);
    }

    bool toHost(std::string_view sent) {
        // Without what was measured in real time, which would make every run another.
        wire::Reply reply;
        platform::FrameReader reader;
        reader.append(sent);
        reply.ParseFromString(**reader.next());
        reply.clear_network_microseconds();
        reply.clear_user_microseconds();
        reply.clear_system_microseconds();
        std::string frame = *platform::framedMessage(reply);
        const ProcessWeather& weather = owner_.weather_;
        Random& random = owner_.random_;
        if (random.happens(weather.lost)) return true;
        if (random.happens(weather.damaged))
            frame[random.below(frame.size())] ^= static_cast<char>(1U << random.below(8));
        const auto delay = random.happens(weather.late) ? random.around(40s) : 1ms;
        for (int copies = random.happens(weather.doubled) ? 2 : 1; copies > 0; --copies) {
            owner_.executor_.after(delay, guarded([this, frame] {
                                       // What it wrote before its death still counts, but not after it was
                                       // reaped.
                                       if (!isAlive_) return;
                                       watch_.received(frame, owner_.executor_.now());
                                       look();
                                   }));
        }
        return true;
    }

    /// Does what the watch wants, and looks again when it says so.
    void look() {
        host::ChildWatch::Steps steps = watch_.advance(owner_.executor_.now());
        if (steps.ping) toChild(*steps.ping);
        if (steps.closeInput && !isHung_) die(0, owner_.random_.around(5ms));
        if (steps.kill) die(SIGKILL, 1ms);
        for (const auto& complete : steps.completions) complete();
        if (!isAlive_) return;
        const SteadyTime next =
            std::max(watch_.nextLook(owner_.executor_.now()), owner_.executor_.now() + 1ms);
        if (next >= nextLook_ && nextLook_ > owner_.executor_.now()) return;
        nextLook_ = next;
        owner_.executor_.at(next, guarded([this, next] {
                                if (next == nextLook_ && isAlive_) look();
                            }));
    }

    SimulatedProcess& owner_;
    const std::shared_ptr<SimulatedNetwork> network_;
    std::unique_ptr<Inside> inside_;
    host::ChildWatch watch_;
    std::vector<std::string> waiting_;
    SteadyTime nextLook_{};
    long size_ = usualSize;
    bool isAlive_ = true;
    bool isHung_ = false;
};

SimulatedProcess::SimulatedProcess(Executor& executor, Random& random, const ProcessWeather& weather,
                                   std::function<platform::RuntimeOptions()> options)
    : executor_(executor), random_(random), weather_(weather), options_(std::move(options)) {
    platform::handleFatalErrors([](std::string_view message) { throw FatalError{std::string(message)}; });
}

SimulatedProcess::~SimulatedProcess() = default;

SimulatedProcess::Life* SimulatedProcess::open() {
    if (!lives_.empty() && lives_.back()->isOpen()) return lives_.back().get();
    std::erase_if(lives_, [](const auto& life) { return !life->isAlive(); });
    lives_.push_back(std::make_shared<Life>(*this, options_()));
    lives_.back()->start();
    return lives_.back().get();
}

void SimulatedProcess::ask(const host::EntryQuestion& question, std::chrono::milliseconds limit,
                           const host::ExtensionProcess::Completion& completion) {
    ++unanswered_;
    open()->ask(host::askRequest(question), limit,
                [this, completion, kind = question.request](platform::Result<wire::Reply> reply) {
                    --unanswered_;
                    completion(reply.and_then(
                        [kind](const wire::Reply& answer) { return host::entryAnswer(answer, kind); }));
                });
}

void SimulatedProcess::setClock(platform::Instant instant) {
    for (const auto& life : lives_) life->setClock(instant);
}

void SimulatedProcess::kill(int signal) {
    if (!lives_.empty()) lives_.back()->die(signal, random_.around(5ms));
}
void SimulatedProcess::hang() {
    if (!lives_.empty()) lives_.back()->hang();
}
void SimulatedProcess::grow() {
    if (!lives_.empty()) lives_.back()->grow();
}
void SimulatedProcess::end() {
    if (!lives_.empty()) lives_.back()->beginEnd();
}

}  // namespace simulation
