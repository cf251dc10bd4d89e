#include "host/process/extension_process.h"

#include <algorithm>
#include <future>
#include <mutex>
#include <utility>
#include "host/process/entry_messages.h"
#include "host/process/extension_child.h"
#include "platform/base/alternatives.h"
#include "platform/wire/conversion.h"

namespace host {
namespace {

namespace wire = brightledger::wire;
using platform::Result;
using std::chrono::milliseconds;

wire::Request helloRequest() {
    wire::Request request;
    request.mutable_hello()->set_version(platform::wireVersion);
    return request;
}

wire::Request clockRequest(std::optional<platform::Instant> instant, double rate) {
    wire::Request request;
    wire::SetClock& clock = *request.mutable_set_clock();
    if (instant) clock.set_instant(platform::nanoseconds(*instant));
    clock.set_rate(rate);
    return request;
}

/// Calls `ask` with a completion and waits until it has been called.
template <typename T, typename Ask>
Result<T> waitFor(const Ask& ask) {
    // Shared, since the completion may still be returning when the answer is here.
    const auto promise = std::make_shared<std::promise<Result<T>>>();
    ask([promise](Result<T> answer) { promise->set_value(std::move(answer)); });
    return promise->get_future().get();
}

}  // namespace

Result<void> checkKind(const std::vector<WidgetListing>& gallery, std::string_view kind) {
    std::vector<std::string> kinds;
    for (const WidgetListing& widget : gallery) kinds.push_back(widget.kind);
    if (std::ranges::find(kinds, kind) != kinds.end()) return {};
    return platform::failure(
        "UsageError", 2,
        "unknown widget \"" + std::string(kind) + "\"; choose " + platform::alternatives(kinds));
}

struct ExtensionProcess::State {
    explicit State(ExtensionOptions ownOptions) : options(std::move(ownOptions)) {}

    const ExtensionOptions options;

    std::mutex mutex;
    /// The latest one.
    std::shared_ptr<ExtensionChild> child;
    /// Earlier ones that are still on their way out.
    std::vector<std::shared_ptr<ExtensionChild>> leaving;
    /// What a new child's clock will show.
    platform::Clock clock;
    double clockRate = 1.0;
    bool isClockSet = false;
    bool isClosed = false;

    /// The running child, or a new one. Null after close().
    std::shared_ptr<ExtensionChild> openChild() {
        const std::lock_guard lock(mutex);
        if (isClosed) return nullptr;
        if (child && child->isOpen()) return child;
        std::erase_if(leaving, [](const auto& each) { return each->isGone(); });
        if (child && !child->isGone()) leaving.push_back(child);
        std::vector<wire::Request> first{helloRequest()};
        if (isClockSet) first.push_back(clockRequest(clock.now(), clockRate));
        child = std::make_shared<ExtensionChild>(options, std::move(first));
        return child;
    }

    void ask(const wire::Request& request, milliseconds limit, const ExtensionChild::Completion& completion) {
        // Twice: an idle child may have been told to exit at this very moment.
        std::string ending = "the extension was ended";
        for (int attempt = 0; attempt < 2; ++attempt) {
            const std::shared_ptr<ExtensionChild> asked = openChild();
            if (!asked) break;
            if (asked->ask(request, limit, completion)) return;
            if (const std::string known = asked->ending(); !known.empty()) ending = known;
        }
        completion(platform::failure("ExtensionError", 1, std::move(ending)));
    }
};

ExtensionProcess::ExtensionProcess(ExtensionOptions options)
    : state_(std::make_shared<State>(std::move(options))) {}

ExtensionProcess::~ExtensionProcess() = default;

Result<std::vector<WidgetListing>> ExtensionProcess::gallery(milliseconds limit) {
    wire::Request request;
    request.mutable_gallery();
    const Result<wire::Reply> reply =
        waitFor<wire::Reply>([&](const auto& completion) { state_->ask(request, limit, completion); });
    if (!reply) return tl::unexpected(reply.error());
    return widgetListings(*reply);
}

Result<EntryAnswer> ExtensionProcess::ask(const EntryQuestion& question, milliseconds limit) {
    return waitFor<EntryAnswer>([&](const auto& completion) { ask(question, limit, completion); });
}

void ExtensionProcess::ask(const EntryQuestion& question, milliseconds limit, Completion completion) {
    state_->ask(askRequest(question), limit,
                [completion = std::move(completion), kind = question.request](Result<wire::Reply> reply) {
                    completion(reply.and_then(
                        [kind](const wire::Reply& answer) { return entryAnswer(answer, kind); }));
                });
}

Result<void> ExtensionProcess::setClock(std::optional<platform::Instant> instant, double rate) {
    const std::lock_guard lock(state_->mutex);
    state_->isClockSet = instant.has_value();
    state_->clockRate = rate;
    if (instant) {
        state_->clock.set(*instant, rate);
    } else {
        state_->clock.followSystem();
    }
    if (!state_->child || !state_->child->isOpen()) return {};
    return state_->child->tell(clockRequest(instant, rate));
}

ExtensionStatistics ExtensionProcess::statistics() const {
    const std::lock_guard lock(state_->mutex);
    return state_->child ? state_->child->statistics() : ExtensionStatistics{};
}

int ExtensionProcess::processId() const {
    const std::lock_guard lock(state_->mutex);
    return state_->child ? state_->child->processId() : 0;
}

void ExtensionProcess::close() {
    const std::lock_guard lock(state_->mutex);
    state_->isClosed = true;
    if (state_->child) state_->child->beginEnd();
}

void ExtensionProcess::end() {
    std::vector<std::shared_ptr<ExtensionChild>> children;
    {
        const std::lock_guard lock(state_->mutex);
        children.swap(state_->leaving);
        if (state_->child) children.push_back(state_->child);
    }
    for (const auto& child : children) child->beginEnd();
    for (const auto& child : children) child->waitUntilGone();
}

}  // namespace host
