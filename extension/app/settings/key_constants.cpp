#include "extension/app/settings/key_constants.h"

#include "extension/app/settings/process_state.h"

namespace extension {

std::optional<std::string> KeyConstants::appleEmailId() { return ProcessState::shared().appleEmailId.get(); }

void KeyConstants::setAppleEmailId(std::optional<std::string> value) {
    ProcessState::shared().appleEmailId.set(std::move(value));
}

std::optional<std::string> KeyConstants::storylyURL() { return ProcessState::shared().storylyURL.get(); }

void KeyConstants::setStorylyURL(std::optional<std::string> value) {
    ProcessState::shared().storylyURL.set(std::move(value));
}

}  // namespace extension
