#pragma once

// Values that cross between host and extension, as messages and back.

#include <optional>
#include <string>
#include "platform/base/clock.h"
#include "platform/base/result.h"
#include "platform/view/view.h"
#include "platform/widget/timeline.h"
#include "platform/wire/extension.pb.h"

namespace platform {

/// The first message of either side names this.
inline constexpr std::uint32_t wireVersion = 1;

std::int64_t nanoseconds(Instant instant);
Instant instantFromNanoseconds(std::int64_t nanoseconds);

/// Archives a tree: pictures stand beside it, not in it.
void archive(const View& view, brightledger::wire::Answer::Entry& message);
/// The tree that `archive` put there; nothing when the message carries none. An error of the
/// domain "ViewError" when it is no tree.
Result<std::optional<View>> archivedView(const brightledger::wire::Answer::Entry& message);

/// Sets or reads the end of a timeline's answer.
void setPolicy(const TimelineReloadPolicy& policy, brightledger::wire::Answer& message);
TimelineReloadPolicy policyOf(const brightledger::wire::Answer& message);

/// A message of any kind as a frame, ready to be written.
Result<std::string> framedMessage(const google::protobuf::MessageLite& message);

}  // namespace platform
