#include "extension/app/settings/store_keys.h"

namespace extension {

platform::Result<std::shared_ptr<platform::UserDefaults>> sharedDefaults(const platform::Runtime& runtime) {
    return runtime.defaults(keys::GROUP_TODAY_EXTENSION);
}

}  // namespace extension
