#include "extension/app/settings/process_state.h"

namespace extension {

ProcessState& ProcessState::shared() {
    static ProcessState state(platform::Runtime::process());
    return state;
}

}  // namespace extension
