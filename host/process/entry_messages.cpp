#include "host/process/entry_messages.h"

#include <optional>
#include <string>
#include <utility>
#include "platform/wire/conversion.h"

namespace host {
namespace {

namespace wire = brightledger::wire;
using platform::Result;

wire::RequestKind requestKind(EntryRequest request) {
    switch (request) {
        case EntryRequest::placeholder: return wire::PLACEHOLDER;
        case EntryRequest::snapshot: return wire::SNAPSHOT;
        case EntryRequest::timeline: return wire::TIMELINE;
    }
    return wire::TIMELINE;
}

tl::unexpected<platform::Error> brokenReply(std::string what) {
    return platform::failure("ExtensionError", 2,
                             "the extension's answer cannot be used: " + std::move(what));
}

}  // namespace

wire::Request askRequest(const EntryQuestion& question) {
    wire::Request request;
    wire::Ask& message = *request.mutable_ask();
    message.set_kind(question.kind);
    message.set_family(std::string(platform::description(question.family)));
    message.set_request(requestKind(question.request));
    message.set_is_preview(question.isPreview);
    message.set_wants_entries(question.wantsEntries);
    message.set_wants_views(question.wantsViews);
    return request;
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

Result<std::vector<WidgetListing>> widgetListings(const wire::Reply& reply) {
    if (!reply.has_bundle()) return brokenReply("it does not list the widgets");
    std::vector<WidgetListing> widgets;
    for (const wire::Bundle::Widget& message : reply.bundle().widgets()) {
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

}  // namespace host
