#include "host/process/extension_process.h"

#include <mutex>
#include <utility>
#include "host/process/extension_child.h"
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
            if (!family) return brokenReply("no family \"" + name + "\" is known");
            widget.families.push_back(*family);
        }
    }
    return widgets;
}

}  // namespace

struct ExtensionProcess::State {
    explicit State(ExtensionOptions ownOptions) : options(std::move(ownOptions)) {}

    const ExtensionOptions options;

    std::mutex mutex;
    /// The one that is asked, or the last one that was.
    std::shared_ptr<ExtensionChild> child;
    /// Those that are on their way out.
    std::vector<std::shared_ptr<ExtensionChild>> leaving;
    /// What a new child's clock shall show.
    platform::Clock clock;
    double clockRate = 1.0;
    bool isClockSet = false;
    bool isClosed = false;

    /// The running child; a new one when there is none, and null when there shall be none.
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

    Result<wire::Reply> ask(const wire::Request& request, milliseconds limit) {
        // Twice: a child may have been told to go, being idle, at this very moment.
        std::shared_ptr<ExtensionChild> asked;
        for (int attempt = 0; attempt < 2; ++attempt) {
            asked = openChild();
            if (!asked) return platform::failure("ExtensionError", 1, "the extension was ended");
            std::optional<Result<wire::Reply>> reply = asked->ask(request, limit);
            if (!reply) continue;
            if (*reply && (*reply)->has_failure()) {
                const wire::Failure& failed = (*reply)->failure();
                return platform::failure(failed.is_wrong_usage() ? "UsageError" : "ExtensionError", 2,
                                         failed.message());
            }
            return std::move(*reply);
        }
        asked->waitUntilGone();
        return platform::failure("ExtensionError", 1, asked->ending());
    }
};

ExtensionProcess::ExtensionProcess(ExtensionOptions options)
    : state_(std::make_shared<State>(std::move(options))) {}

ExtensionProcess::~ExtensionProcess() = default;

Result<std::vector<WidgetListing>> ExtensionProcess::gallery(milliseconds limit) {
    wire::Request request;
    request.mutable_gallery();
    const Result<wire::Reply> reply = state_->ask(request, limit);
    if (!reply) return tl::unexpected(reply.error());
    if (!reply->has_bundle()) return brokenReply("it is no gallery");
    return listings(reply->bundle());
}

Result<EntryAnswer> ExtensionProcess::ask(const EntryQuestion& question, milliseconds limit) {
    wire::Request request;
    wire::Ask& message = *request.mutable_ask();
    message.set_kind(question.kind);
    message.set_family(std::string(platform::description(question.family)));
    message.set_request(requestKind(question.request));
    message.set_is_preview(question.isPreview);
    message.set_wants_entries(question.wantsEntries);
    message.set_wants_views(question.wantsViews);
    const Result<wire::Reply> reply = state_->ask(request, limit);
    if (!reply) return tl::unexpected(reply.error());
    if (!reply->has_answer()) return brokenReply("it has no entries");
    return entryAnswer(*reply, question.request);
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

Result<void> ExtensionProcess::ping(milliseconds limit) {
    wire::Request request;
    request.mutable_ping();
    const Result<wire::Reply> reply = state_->ask(request, limit);
    if (!reply) return tl::unexpected(reply.error());
    return {};
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
