#include "extension/app/bundle/message_loop.h"

#include <google/protobuf/stubs/logging.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include "platform/base/alternatives.h"
#include "platform/base/serial_queue.h"
#include "platform/wire/conversion.h"
#include "platform/wire/framing.h"

namespace extension {
namespace {

namespace wire = brightledger::wire;
using platform::AnyEntry;
using platform::Result;
using platform::Runtime;
using platform::WidgetConfiguration;

std::uint64_t microseconds(const timeval& time) {
    return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000U + static_cast<std::uint64_t>(time.tv_usec);
}

wire::Reply replyTo(std::uint64_t id) {
    wire::Reply reply;
    reply.set_id(id);
    return reply;
}

wire::Reply failureReply(std::uint64_t id, std::string message, bool isWrongUsage = false) {
    wire::Reply reply = replyTo(id);
    reply.mutable_failure()->set_message(std::move(message));
    reply.mutable_failure()->set_is_wrong_usage(isWrongUsage);
    return reply;
}

/// Writes the answers. Any thread; after `close` nothing more is written.
class Replies {
public:
    Replies(const Runtime& runtime, Conversation::Write write)
        : runtime_(runtime), write_(std::move(write)) {}

    std::chrono::microseconds networkTime() const { return runtime_.urls().statistics().busy; }

    /// `networkBefore` is the network time when the question came.
    void send(wire::Reply reply, std::optional<std::chrono::microseconds> networkBefore = {}) {
        const std::lock_guard lock(mutex_);
        if (isClosed_) return;
        if (networkBefore) {
            const auto waited = networkTime() - *networkBefore;
            reply.set_network_microseconds(static_cast<std::uint64_t>(waited.count()));
        }
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        reply.set_user_microseconds(microseconds(usage.ru_utime));
        reply.set_system_microseconds(microseconds(usage.ru_stime));
        Result<std::string> frame = platform::framedMessage(reply);
        if (!frame) frame = platform::framedMessage(failureReply(reply.id(), frame.error().message));
        // A host that is gone needs no answer; the loop notices at the end of its input.
        if (!write_(*frame)) isClosed_ = true;
    }

    void close() {
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
    }

private:
    const Runtime& runtime_;
    const Conversation::Write write_;
    std::mutex mutex_;
    bool isClosed_ = false;
};

/// One question on its way through a widget; shared by the completions that answer it.
struct Question {
    std::uint64_t id = 0;
    wire::Ask ask;
    platform::EnvironmentValues environment;
    std::shared_ptr<Replies> replies;
    std::chrono::microseconds networkBefore{0};

    void fill(const AnyEntry& entry, wire::Answer& answer) const {
        wire::Answer::Entry& message = *answer.add_entries();
        message.set_date(platform::nanoseconds(entry->date()));
        if (ask.wants_entries()) {
            message.set_entry(
                entry->json().dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
        }
        if (ask.wants_views()) platform::archive(entry->view(environment), message);
    }

    void answer(const std::vector<AnyEntry>& entries,
                std::optional<platform::TimelineReloadPolicy> policy = {}) const {
        wire::Reply reply = replyTo(id);
        wire::Answer& message = *reply.mutable_answer();
        for (const AnyEntry& entry : entries) fill(entry, message);
        if (policy) platform::setPolicy(*policy, message);
        replies->send(std::move(reply), networkBefore);
    }
};

std::string familyComplaint(const platform::WidgetDescription& widget, const std::string& family) {
    std::vector<std::string> names;
    for (const platform::WidgetFamily each : widget.families) names.emplace_back(platform::description(each));
    return widget.kind + " does not support the family \"" + family + "\"; choose " +
           platform::alternatives(names);
}

std::string kindComplaint(const PerchWidgetBundle& bundle, const std::string& kind) {
    std::vector<std::string> names;
    for (const auto& widget : bundle.body()) names.push_back(widget->description().kind);
    return "unknown widget \"" + kind + "\"; choose " + platform::alternatives(names);
}

void ask(WidgetConfiguration& widget, platform::WidgetFamily family, platform::Size displaySize,
         const std::shared_ptr<const Question>& question) {
    const platform::TimelineProviderContext context{
        .family = family, .displaySize = displaySize, .isPreview = question->ask.is_preview()};
    switch (question->ask.request()) {
        case wire::SNAPSHOT:
            widget.getSnapshot(context, [question](const AnyEntry& entry) { question->answer({entry}); });
            return;
        case wire::TIMELINE:
            widget.getTimeline(context, [question](const platform::Timeline<AnyEntry>& timeline) {
                question->answer(timeline.entries, timeline.policy);
            });
            return;
        default: question->answer({widget.placeholder(context)});
    }
}

wire::Reply galleryReply(std::uint64_t id, const PerchWidgetBundle& bundle) {
    wire::Reply reply = replyTo(id);
    for (const auto& widget : bundle.body()) {
        wire::Bundle::Widget& message = *reply.mutable_bundle()->add_widgets();
        message.set_kind(widget->description().kind);
        message.set_display_name(widget->description().displayName);
        message.set_description(widget->description().description);
        message.set_content_margins_disabled(widget->description().contentMarginsDisabled);
        for (const platform::WidgetFamily family : widget->description().families)
            message.add_families(std::string(platform::description(family)));
    }
    return reply;
}

}  // namespace

struct Conversation::State {
    Result<void> handleMessage(std::string_view message) {
        wire::Request request;
        const google::protobuf::LogSilencer silencer;
        if (!request.ParseFromArray(message.data(), static_cast<int>(message.size())))
            return platform::failure("WireError", 3, "the host sent something that is not a message");
        if (request.has_hello()) {
            isGreeted = request.hello().version() == platform::wireVersion;
            if (isGreeted) return {};
            return platform::failure("WireError", 4, "the host speaks another version");
        }
        if (!isGreeted) return platform::failure("WireError", 5, "the host did not say its version first");
        if (request.has_ping()) {
            wire::Reply reply = replyTo(request.id());
            reply.mutable_pong();
            replies->send(std::move(reply));
        } else {
            begin([this, taken = std::move(request)] { handle(taken); });
        }
        return {};
    }

    void handle(const wire::Request& request) {
        switch (request.what_case()) {
            case wire::Request::kGallery: return replies->send(galleryReply(request.id(), bundle));
            case wire::Request::kAsk: return handleAsk(request.id(), request.ask());
            case wire::Request::kSetClock: return setClock(request.set_clock());
            default: return replies->send(failureReply(request.id(), "unknown question"));
        }
    }

    void handleAsk(std::uint64_t id, const wire::Ask& message) {
        WidgetConfiguration* widget = bundle.widget(message.kind());
        if (widget == nullptr)
            return replies->send(failureReply(id, kindComplaint(bundle, message.kind()), true));
        const auto& families = widget->description().families;
        const auto family = platform::widgetFamily(message.family());
        if (!family || std::ranges::find(families, *family) == families.end()) {
            return replies->send(
                failureReply(id, familyComplaint(widget->description(), message.family()), true));
        }
        ask(*widget, *family, runtime.screen().widgetSize(*family),
            std::make_shared<const Question>(Question{
                .id = id,
                .ask = message,
                .environment = {.widgetFamily = *family, .osVersion = runtime.osVersion()},
                .replies = replies,
                .networkBefore = replies->networkTime(),
            }));
    }

    void setClock(const wire::SetClock& message) {
        if (message.has_instant()) {
            runtime.clock().set(platform::instantFromNanoseconds(message.instant()), message.rate());
        } else {
            runtime.clock().followSystem();
        }
    }

    const Runtime& runtime;
    const PerchWidgetBundle& bundle;
    const std::shared_ptr<Replies> replies;
    const Begin begin;
    platform::FrameReader reader = {};
    bool isGreeted = false;
};

Conversation::Conversation(const Runtime& runtime, const PerchWidgetBundle& bundle, Write write, Begin begin)
    : state_(new State{runtime, bundle, std::make_shared<Replies>(runtime, std::move(write)),
                       std::move(begin)}) {
    wire::Reply hello;
    hello.mutable_hello()->set_version(platform::wireVersion);
    state_->replies->send(std::move(hello));
}

Conversation::~Conversation() { state_->replies->close(); }

Result<void> Conversation::receive(std::string_view bytes) {
    state_->reader.append(bytes);
    for (;;) {
        const std::optional<std::string> message = TRY(state_->reader.next());
        if (!message) return {};
        TRY(state_->handleMessage(*message));
    }
}

Result<void> runMessageLoop(const Runtime& runtime, const PerchWidgetBundle& bundle, int input, int output) {
    // The queue's thread ends before the conversation that its work belongs to.
    std::optional<Conversation> conversation;
    platform::SerialQueue queue;
    conversation.emplace(
        runtime, bundle,
        [output](std::string_view frame) { return platform::writeAll(output, frame).has_value(); },
        [&queue](std::function<void()> work) { queue.add(std::move(work)); });
    for (;;) {
        const Result<std::string> bytes = platform::readSome(input);
        if (!bytes || bytes->empty()) return {};
        TRY(conversation->receive(*bytes));
    }
}

}  // namespace extension
