#include "host/process/extension_process.h"

#include <algorithm>
#include <future>
#include <mutex>
#include <utility>
#include "host/process/extension_child.h"
#include "platform/base/alternatives.h"
#include "platform/wire/conversion.h"

namespace host {
namespace {

namespace wire = brightledger::wire;
using platform::Result;
using std::chrono::milliseconds;

wire::RequestKind requestKind(EntryRequest request) {
    switch (request) {
        case EntryRequest::placeholder: return wire::PLACEHOLDER;
        case EntryRequest::snapshot: return wire::SNAPSHOT;
        case EntryRequest::timeline: return wire::TIMELINE;
    }
    return wire::TIMELINE;
}

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

tl::unexpected<platform::Error> brokenReply(std::string what) {
    return platform::failure("ExtensionError", 2,
                             "the extension's answer cannot be used: " + std::move(what));
}

Result<EntryAnswer> entryAnswer(const wire::Reply& reply, EntryRequest request) {
    if (reply.has_failure()) {
        return platform::failure(reply.failure().is_wrong_usage() ? "UsageError" : "ExtensionError", 2,
                                 reply.failure().message());
    }
    if (!reply.has_answer()) return brokenReply("it has no entries");
    EntryAnswer answer;
    answer.networkMs = static_cast<double>(reply.network_microseconds()) / 1000.0;
    for (const wire::Answer::Entry& message : reply.answer().entries()) {
        Result<std::optional<platform::View>> view = platform::archivedView(message);
        if (!view) return brokenReply(view.error().message);
        answer.entries.push_back({.date = platform::instantFromNanoseconds(message.date()),
                                  .json = message.entry(),
                                  .view = std::move(*view)});
    }
    if (request == EntryRequest::timeline) answer.policy = platform::policyOf(reply.answer());
    return answer;
}

Result<std::vector<WidgetListing>> listings(const wire::Bundle& bundle) {
    std::vector<WidgetListing> widgets;
    for (const wire::Bundle::Widget& message : bundle.widgets()) {
        WidgetListing& widget =
            widgets.emplace_back(WidgetListing{.kind = message.kind(),
                                               .displayName = message.display_name(),
                                               .description = message.description(),
                                               .families = {},
                                               .contentMarginsDisabled = message.content_margins_disabled()});
        for (const std::string& name : message.families()) {
            const auto family = platform::widgetFamily(name);
            if (!family) return brokenReply("unknown family \"" + name + "\"");
            widget.families.push_back(*family);
        }
    }
    return widgets;
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
    if (!reply->has_bundle()) return brokenReply("it does not list the widgets");
    return listings(reply->bundle());
}

Result<EntryAnswer> ExtensionProcess::ask(const EntryQuestion& question, milliseconds limit) {
    return waitFor<EntryAnswer>([&](const auto& completion) { ask(question, limit, completion); });
}

void ExtensionProcess::ask(const EntryQuestion& question, milliseconds limit, Completion completion) {
    wire::Request request;
    wire::Ask& message = *request.mutable_ask();
    message.set_kind(question.kind);
    message.set_family(std::string(platform::description(question.family)));
    message.set_request(requestKind(question.request));
    message.set_is_preview(question.isPreview);
    message.set_wants_entries(question.wantsEntries);
    message.set_wants_views(question.wantsViews);
    state_->ask(request, limit,
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
