#include "extension/theme/theme_manager.h"

#include "extension/theme/theme.h"

namespace extension {
namespace {

using platform::Result;
using Transaction = platform::UserDefaults::Transaction;

std::int64_t numberOf(ThemeType type) { return static_cast<std::int64_t>(type); }

Result<void> writePalette(Transaction& store, bool isLight) {
    for (const PaletteColor& color : palette()) {
        TRY(storeColor(store, color.name, isLight ? color.light : color.dark));
    }
    return {};
}

/// Writes the choice and its palette.
Result<void> chooseThemeType(Transaction& store, std::int64_t number, const platform::Runtime& runtime) {
    const std::int64_t choice = number >= 4 ? 0 : number;
    ThemeType type = themeTypeOf(choice);
    Result<void> written = store.set(keys::themeType, choice);
    if (type == ThemeType::automatic) {
        type = automaticThemeType(runtime);
        written = written.and_then([&] { return store.set(keys::autoThemeType, numberOf(type)); });
    }
    if (type == ThemeType::unpainted) return written;
    return written.and_then([&] { return writePalette(store, type == ThemeType::light); });
}

/// Dark the first time, otherwise again what was chosen.
Result<void> chooseDefault(Transaction& store, const platform::Runtime& runtime) {
    const auto isSet = store.object(keys::isThemeTypeSet);
    const auto chosen = TRY(isSet ? store.object(keys::themeType) : isSet);
    if (platform::coercedBool(*isSet))
        return chooseThemeType(store, numberOf(themeTypeOf(platform::coercedInteger(chosen))), runtime);
    return chooseThemeType(store, numberOf(ThemeType::dark), runtime).and_then([&] {
        return store.set(keys::isThemeTypeSet, true);
    });
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

/// Makes the colours that the store holds now the current theme.
void readCurrentTheme(ProcessState& state) {
    // Reads under the lock, so that the later of two simultaneous changes stays.
    state.currentTheme.update(
        [&](std::shared_ptr<const Theme>& theme) { theme = std::make_shared<const Theme>(state.runtime); });
}

}  // namespace

std::int64_t ThemeManager::getCurrentSelectedThemeType(ProcessState& state) {
    return numberOf(selectedThemeType(state.runtime));
}

Result<void> ThemeManager::setCurrentSelectedThemeTypeWithType(std::int64_t type, ProcessState& state) {
    const Result<void> done = inStore(state.runtime, [&](Transaction& transaction) {
        return chooseThemeType(transaction, type, state.runtime);
    });
    readCurrentTheme(state);
    return done;
}

Result<void> ThemeManager::setDefaultThemeIfNotSet(ProcessState& state) {
    TRY(sharedDefaults(state.runtime));
    const Result<void> done = inStore(
        state.runtime, [&](Transaction& transaction) { return chooseDefault(transaction, state.runtime); });
    readCurrentTheme(state);
    return done;
}

std::int64_t ThemeManager::currentThemeForAutoMode(ProcessState& state) {
    return numberOf(automaticThemeType(state.runtime));
}

std::int64_t ThemeManager::currentDisplayTheme(ProcessState& state) {
    const ThemeType effective = effectiveThemeType(state.runtime);
    return numberOf(effective == ThemeType::unpainted ? ThemeType::dark : effective);
}

std::int64_t ThemeManager::currentFinalSelectedThemeType(ProcessState& state) {
    return numberOf(effectiveThemeType(state.runtime));
}

std::string_view ThemeManager::currentDisplayThemeKey(ProcessState& state) {
    return effectiveThemeType(state.runtime) == ThemeType::light ? "light" : "dark";
}

std::string_view ThemeManager::currentFinalDisplayThemeKey(ProcessState& state) {
    return currentDisplayThemeKey(state);
}

std::shared_ptr<const Theme> ThemeManager::currentTheme(ProcessState& state) {
    return state.currentTheme.update([&](std::shared_ptr<const Theme>& theme) {
        if (!theme) theme = std::make_shared<const Theme>(state.runtime);
        return theme;
    });
}

platform::Color ThemeManager::getThemeColorFromHexString(std::optional<std::string_view> hex,
                                                         std::optional<std::string_view> lightHex,
                                                         ProcessState& state) {
    return colorFromHexString(effectiveThemeType(state.runtime) == ThemeType::dark ? hex : lightHex);
}

Result<void> ThemeManager::setReloadWidgetExtensionWithReload(bool reload, ProcessState& state) {
    return inStore(state.runtime, [&](Transaction& transaction) {
        return transaction.set(keys::reloadWidgetOnThemeChange, reload);
    });
}

bool ThemeManager::getReloadWidgetExtension(ProcessState& state) {
    const auto defaults = sharedDefaults(state.runtime);
    if (!defaults) return false;
    const auto stored = (*defaults)->object(keys::reloadWidgetOnThemeChange);
    return stored && platform::coercedBool(*stored);
}

platform::Color getTheDirectionColor(std::string_view code, ProcessState& state) {
    const auto theme = ThemeManager::currentTheme(state);
    if (code == "1" || code == "+1" || code == "OPEN") return theme->positiveDirectionColor();
    if (code == "-1" || code == "CLOSED") return theme->negativeDirectionColor();
    if (code == "PRE" || code == "AFTER") return colorFromHexString("#FF9D00");
    return theme->textColor();
}

}  // namespace extension
