#include "platform/wire/conversion.h"

#include <nlohmann/json.hpp>
#include <vector>
#include "platform/view/view_json.h"
#include "platform/wire/framing.h"

namespace platform {
namespace wire = brightledger::wire;

std::int64_t nanoseconds(Instant instant) {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(instant.time_since_epoch()).count();
}

Instant instantFromNanoseconds(std::int64_t nanoseconds) {
    return Instant(std::chrono::duration_cast<Instant::duration>(std::chrono::nanoseconds(nanoseconds)));
}

void archive(const View& view, wire::Answer::Entry& message) {
    std::vector<Bytes> attachments;
    const nlohmann::ordered_json tree = viewJson(view, attachments);
    // Texts come from a service: one that is no UTF-8 is shown with a replacement character.
    message.set_view(tree.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
    for (const Bytes& bytes : attachments) message.add_attachments(std::string(bytes.view()));
}

Result<std::optional<View>> archivedView(const wire::Answer::Entry& message) {
    if (message.view().empty()) return std::nullopt;
    std::vector<Bytes> attachments;
    attachments.reserve(static_cast<std::size_t>(message.attachments_size()));
    for (const std::string& bytes : message.attachments()) attachments.emplace_back(bytes);
    return viewFromJson(message.view(), attachments).map([](View view) {
        return std::optional(std::move(view));
    });
}

void setPolicy(const TimelineReloadPolicy& policy, wire::Answer& message) {
    if (policy.kind == TimelineReloadPolicy::Kind::after) message.set_reload_after(nanoseconds(policy.date));
}

TimelineReloadPolicy policyOf(const wire::Answer& message) {
    if (!message.has_reload_after()) return TimelineReloadPolicy::atEnd();
    return TimelineReloadPolicy::after(instantFromNanoseconds(message.reload_after()));
}

Result<std::string> framedMessage(const google::protobuf::MessageLite& message) {
    const std::size_t size = message.ByteSizeLong();
    std::string frame = TRY(frameLength(size));
    // In its place at once: with pictures a second copy costs an extension its life.
    const std::size_t prefix = frame.size();
    frame.resize(prefix + size);
    message.SerializeWithCachedSizesToArray(reinterpret_cast<std::uint8_t*>(frame.data() + prefix));
    return frame;
}

}  // namespace platform
