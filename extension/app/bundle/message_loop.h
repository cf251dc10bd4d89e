#pragma once

// The extension's conversation with its host: reads questions, asks the widgets, writes answers.

#include <functional>
#include <memory>
#include <string_view>
#include "extension/app/bundle/perch_widget_bundle.h"
#include "platform/base/result.h"
#include "platform/runtime/runtime.h"

namespace extension {

/// The extension's side of a conversation with its host, apart from where the bytes come from and go to.
///
/// Pings are answered at once. Everything else is begun by `begin` in the order in which it came, one
/// question at a time. Answers go out as soon as they are there, from any thread; none after the
/// conversation's end.
class Conversation {
public:
    /// Writes a whole frame; false when nobody listens any more.
    using Write = std::function<bool(std::string_view frame)>;
    using Begin = std::function<void(std::function<void()> work)>;

    /// Says hello. What `begin` is given must have run or be dropped before the conversation ends.
    Conversation(const platform::Runtime& runtime, const PerchWidgetBundle& bundle, Write write, Begin begin);
    ~Conversation();

    /// Handles what the host sent, in pieces of any size. An error (domain "WireError") when the host speaks
    /// another version or sends something that is not a message.
    platform::Result<void> receive(std::string_view bytes);

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Holds a conversation on two descriptors until the end of the input; what is still under way then is
/// dropped. Fails as Conversation::receive does.
platform::Result<void> runMessageLoop(const platform::Runtime& runtime, const PerchWidgetBundle& bundle,
                                      int input, int output);

}  // namespace extension
