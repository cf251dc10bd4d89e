#include "extension/theme/theme_manager.h"

#include "extension/theme/hex_codec.h"
#include "extension/theme/palette.h"

namespace extension {
namespace {

using platform::Result;
using Transaction = platform::UserDefaults::Transaction;

std::int64_t numberOf(ThemeType type) { return static_cast<std::int64_t>(type); }

Result<void> writePalette(Transaction& store, bool isLight) {
    for (const PaletteColor& color : palette()) {
        const Result<void> written = storeColor(store, color.name, isLight ? color.light : color.dark);
        if (!written) return written;
    }
    return {};
}

Result<void> applyThemeType(Transaction& store, ThemeType type, const platform::Runtime& runtime) {
    if (type == ThemeType::unpainted) return {};
    if (type != ThemeType::automatic) return writePalette(store, type == ThemeType::light);
    const ThemeType automatic = automaticThemeType(runtime);
    const Result<void> written = store.set(keys::autoThemeType, numberOf(automatic));
    return written ? writePalette(store, automatic == ThemeType::light) : written;
}

/// Writes the choice and its palette.
Result<void> chooseThemeType(Transaction& store, std::int64_t number, const platform::Runtime& runtime) {
    const std::int64_t choice = number >= 4 ? 0 : number;
    const Result<void> written = store.set(keys::themeType, choice);
    return written ? applyThemeType(store, themeTypeOf(choice), runtime) : written;
}

/// Dark the first time, otherwise again what was chosen.
Result<void> chooseDefault(Transaction& store, const platform::Runtime& runtime) {
    const auto isSet = store.object(keys::isThemeTypeSet);
    if (!isSet) return tl::unexpected(isSet.error());
    if (!platform::coercedBool(*isSet)) {
        const Result<void> chosen = chooseThemeType(store, numberOf(ThemeType::dark), runtime);
        return chosen ? store.set(keys::isThemeTypeSet, true) : chosen;
    }
    const auto stored = store.object(keys::themeType);
    if (!stored) return tl::unexpected(stored.error());
    return chooseThemeType(store, numberOf(themeTypeOf(platform::coercedInteger(*stored))), runtime);
}

/// Does `work` in the shared store and logs a failure.
template <typename Work>
Result<void> inStore(const platform::Runtime& runtime, const Work& work) {
    const auto defaults = sharedDefaults(runtime);
    const Result<void> done =
        defaults ? (*defaults)->transaction(work) : Result<void>(tl::unexpected(defaults.error()));
    if (!done) runtime.log().write("The theme could not be stored: " + done.error().message);
    return done;
}

}  // namespace

std::int64_t ThemeService::selectedThemeType() const {
    return numberOf(extension::selectedThemeType(state_.runtime));
}

Result<void> ThemeService::setSelectedThemeType(std::int64_t number) {
    const Result<void> done = inStore(state_.runtime, [&](Transaction& transaction) {
        return chooseThemeType(transaction, number, state_.runtime);
    });
    readCurrentTheme();
    return done;
}

Result<void> ThemeService::setDefaultThemeIfNotSet() {
    if (const auto defaults = sharedDefaults(state_.runtime); !defaults) {
        return tl::unexpected(defaults.error());
    }
    const Result<void> done = inStore(
        state_.runtime, [&](Transaction& transaction) { return chooseDefault(transaction, state_.runtime); });
    readCurrentTheme();
    return done;
}

std::int64_t ThemeService::themeForAutoMode() const { return numberOf(automaticThemeType(state_.runtime)); }

std::int64_t ThemeService::displayTheme() const {
    const ThemeType effective = effectiveThemeType(state_.runtime);
    return numberOf(effective == ThemeType::unpainted ? ThemeType::dark : effective);
}

std::int64_t ThemeService::finalSelectedThemeType() const {
    return numberOf(effectiveThemeType(state_.runtime));
}

std::string_view ThemeService::displayThemeKey() const {
    return effectiveThemeType(state_.runtime) == ThemeType::light ? "light" : "dark";
}

std::shared_ptr<const Theme> ThemeService::currentTheme() {
    return state_.currentTheme.update([this](std::shared_ptr<const Theme>& theme) {
        if (!theme) theme = std::make_shared<const Theme>(state_.runtime);
        return theme;
    });
}

void ThemeService::readCurrentTheme() {
    // Reads under the lock, so that the later of two simultaneous changes stays.
    state_.currentTheme.update([this](std::shared_ptr<const Theme>& theme) {
        theme = std::make_shared<const Theme>(state_.runtime);
    });
}

platform::Color ThemeService::themeColor(std::optional<std::string_view> darkHex,
                                         std::optional<std::string_view> lightHex) const {
    return colorFromHexString(effectiveThemeType(state_.runtime) == ThemeType::dark ? darkHex : lightHex);
}

Result<void> ThemeService::setReloadsWidgets(bool reload) {
    return inStore(state_.runtime, [&](Transaction& transaction) {
        return transaction.set(keys::reloadWidgetOnThemeChange, reload);
    });
}

bool ThemeService::reloadsWidgets() const {
    const auto defaults = sharedDefaults(state_.runtime);
    if (!defaults) return false;
    const auto stored = (*defaults)->object(keys::reloadWidgetOnThemeChange);
    return stored && platform::coercedBool(*stored);
}

namespace {

ThemeService service() { return ThemeService(ProcessState::shared()); }

}  // namespace

std::int64_t ThemeManager::getCurrentSelectedThemeType() { return service().selectedThemeType(); }

void ThemeManager::setCurrentSelectedThemeTypeWithType(std::int64_t type) {
    service().setSelectedThemeType(type);
}

void ThemeManager::setDefaultThemeIfNotSet() { service().setDefaultThemeIfNotSet(); }

std::int64_t ThemeManager::currentThemeForAutoMode() { return service().themeForAutoMode(); }

std::int64_t ThemeManager::currentDisplayTheme() { return service().displayTheme(); }

std::int64_t ThemeManager::currentFinalSelectedThemeType() { return service().finalSelectedThemeType(); }

std::string_view ThemeManager::currentDisplayThemeKey() { return service().displayThemeKey(); }

std::string_view ThemeManager::currentFinalDisplayThemeKey() { return service().displayThemeKey(); }

std::shared_ptr<const Theme> ThemeManager::currentTheme() { return service().currentTheme(); }

platform::Color ThemeManager::getThemeColorFromHexString(std::optional<std::string_view> hex,
                                                         std::optional<std::string_view> lightHex) {
    return service().themeColor(hex, lightHex);
}

std::string ThemeManager::getColorHexValueWithColor(const platform::Color& color) { return hexString(color); }

void ThemeManager::setReloadWidgetExtensionWithReload(bool reload) { service().setReloadsWidgets(reload); }

bool ThemeManager::getReloadWidgetExtension() { return service().reloadsWidgets(); }

}  // namespace extension
