#include "companion/operations.h"

#include <algorithm>
#include <functional>
#include <future>
#include <nlohmann/json.hpp>
#include <tuple>
#include <utility>
#include "companion/arguments.h"
#include "extension/app/presence/widget_kit_helper.h"
#include "extension/app/settings/key_constants.h"
#include "extension/app/settings/process_state.h"
#include "extension/app/settings/widget_helper.h"
#include "extension/theme/app_default_colors.h"
#include "extension/theme/direction_color.h"
#include "extension/theme/hex_codec.h"
#include "extension/theme/theme_manager.h"
#include "platform/view/view_json.h"

namespace companion {
namespace {

using extension::AppDefaultColors;
using extension::Guarded;
using extension::KeyConstants;
using extension::PresenceMember;
using extension::ProcessState;
using extension::ThemeManager;
using extension::ThemeService;
using extension::WidgetPresence;
using nlohmann::ordered_json;
using platform::Color;
using platform::Result;
using OptionalText = std::optional<std::string>;
using Words = std::vector<std::string>;

struct Operation {
    std::string_view className;
    std::string_view selector;
    std::vector<std::string_view> parameters;
    /// With as many words as there are parameters.
    std::function<Result<ordered_json>(ProcessState&, const Words&)> call;
};

// What an operation answers, as JSON.

ordered_json answer(std::int64_t number) { return number; }
ordered_json answer(bool truth) { return truth; }
ordered_json answer(std::string_view text) { return text; }
ordered_json answer(const std::string& text) { return text; }
ordered_json answer(const OptionalText& text) { return text ? ordered_json(*text) : ordered_json(); }
ordered_json answer(const Color& color) { return platform::colorJson(color); }
ordered_json answer(const std::shared_ptr<const extension::Theme>& theme) {
    ordered_json colors = ordered_json::object();
    for (const auto& [name, color] : theme->colors()) colors[std::string(name)] = platform::colorJson(color);
    return colors;
}
Result<ordered_json> answer(const Result<void>& done) {
    return done.map([] { return ordered_json(); });
}
Result<ordered_json> answer(const Result<std::string>& text) {
    return text.map([](const std::string& value) { return ordered_json(value); });
}

/// Reads every word as its parameter's type and calls `function` with them; the first word that does not
/// fit is the answer instead.
template <typename... Parameters, typename Function, std::size_t... Positions>
Result<ordered_json> callWith(const Function& function, ProcessState& state, const Words& words,
                              std::index_sequence<Positions...>) {
    const std::tuple<Result<Parameters>...> arguments{Argument<Parameters>::read(words[Positions])...};
    const platform::Error* error = nullptr;
    ((error = !error && !std::get<Positions>(arguments) ? &std::get<Positions>(arguments).error() : error),
     ...);
    if (error) return tl::unexpected(*error);
    if constexpr (std::is_void_v<decltype(function(state, *std::get<Positions>(arguments)...))>) {
        function(state, *std::get<Positions>(arguments)...);
        return ordered_json();
    } else {
        return answer(function(state, *std::get<Positions>(arguments)...));
    }
}

template <typename... Parameters, typename Function>
Operation operation(std::string_view className, std::string_view selector, Function function) {
    return {className,
            selector,
            {Argument<Parameters>::name...},
            [function](ProcessState& state, const Words& words) {
                return callWith<Parameters...>(function, state, words,
                                               std::index_sequence_for<Parameters...>());
            }};
}

template <typename T>
using StateMember = Guarded<T> ProcessState::*;

/// A property in two operations: read by its name, set by `setter`.
template <typename T>
void addProperty(std::vector<Operation>& operations, std::string_view className, std::string_view name,
                 std::string_view setter, StateMember<T> place) {
    operations.push_back(operation<>(className, name, [place](ProcessState& s) { return (s.*place).get(); }));
    operations.push_back(
        operation<T>(className, setter, [place](ProcessState& s, const T& value) { (s.*place).set(value); }));
}

template <typename T>
void addProperty(std::vector<Operation>& operations, std::string_view name, std::string_view setter,
                 PresenceMember<T> place) {
    operations.push_back(
        operation<>("WidgetKitHelper", name, [place](ProcessState& s) { return s.presence->get().*place; }));
    operations.push_back(operation<T>("WidgetKitHelper", setter, [place](ProcessState& s, const T& value) {
        s.presence->update([&](WidgetPresence& presence) { presence.*place = value; });
    }));
}

void addConstant(std::vector<Operation>& operations, std::string_view className, std::string_view name,
                 std::string_view value) {
    operations.push_back(operation<>(className, name, [value](ProcessState&) { return value; }));
}

void addConstant(std::vector<Operation>& operations, std::string_view className, std::string_view name,
                 std::int64_t value) {
    operations.push_back(operation<>(className, name, [value](ProcessState&) { return value; }));
}

void addConstant(std::vector<Operation>& operations, std::string_view className, std::string_view name,
                 const Color& value) {
    operations.push_back(operation<>(className, name, [value](ProcessState&) { return value; }));
}

/// The colour's hex text, without letting a colour that has none end this process.
Result<std::string> checkedHexString(ProcessState&, const Color& color) {
    if (const std::size_t count = color.components().size(); count != 0 && count < 3) {
        return platform::failure("FatalError", 0,
                                 "fatal error: the hex text of a colour with fewer than three components");
    }
    return extension::hexString(color);
}

/// Waits for the answer, so that the properties that are read next show it.
void askWhatIsPlaced(ProcessState& state) {
    const auto isAnswered = std::make_shared<std::promise<void>>();
    extension::queryPlacedWidgets(state, [isAnswered] { isAnswered->set_value(); });
    isAnswered->get_future().wait();
}

std::optional<std::string_view> viewOf(const OptionalText& text) {
    return text ? std::optional<std::string_view>(*text) : std::nullopt;
}

void addSettings(std::vector<Operation>& all) {
    addConstant(all, "KeyConstants", "GROUP_TODAY_EXTENSION", KeyConstants::GROUP_TODAY_EXTENSION);
    addConstant(all, "KeyConstants", "refresh_rate", KeyConstants::refresh_rate);
    addConstant(all, "KeyConstants", "reloadWidgetOnThemeChange", KeyConstants::reloadWidgetOnThemeChange);
    addProperty(all, "KeyConstants", "appleEmailId", "setAppleEmailId:", &ProcessState::appleEmailId);
    addProperty(all, "KeyConstants", "storylyURL", "setStorylyURL:", &ProcessState::storylyURL);
    all.push_back(operation<>("WidgetHelper", "checkAndRemoveExpiredFutureWidgets",
                              [](ProcessState& s) { extension::pruneExpiredFutures(s.runtime); }));
}

void addPresence(std::vector<Operation>& all) {
    addProperty(all, "isWigetAdded", "setIsWigetAdded:", &WidgetPresence::isWigetAdded);
    addProperty(all, "widgetFamily", "setWidgetFamily:", &WidgetPresence::widgetFamily);
    addProperty(all, "isNewsWidgetAdded", "setIsNewsWidgetAdded:", &WidgetPresence::isNewsWidgetAdded);
    addProperty(all, "newsWidgetFamily", "setNewsWidgetFamily:", &WidgetPresence::newsWidgetFamily);
    addProperty(all, "isPortfolioWigetAdded",
                "setIsPortfolioWigetAdded:", &WidgetPresence::isPortfolioWigetAdded);
    addProperty(all, "portfolioWidgetFamily",
                "setPortfolioWidgetFamily:", &WidgetPresence::portfolioWidgetFamily);
    all.push_back(operation<>("WidgetKitHelper", "getCurrentConfigurations", askWhatIsPlaced));
    all.push_back(operation<OptionalText>("WidgetKitHelper",
                                          "reloadAllWidgets:", [](ProcessState& s, const OptionalText& kind) {
                                              extension::reloadWidgets(s.runtime, viewOf(kind));
                                          }));
    all.push_back(operation<>("WidgetKitHelper", "updatePortfolioArrayUserDefaults", [](ProcessState& s) {
        return extension::removeSavedPortfolioRows(s.runtime);
    }));
}

void addThemes(std::vector<Operation>& all) {
    constexpr std::string_view name = "ThemeManager";
    addConstant(all, name, "lightThemeIdentifier", ThemeManager::lightThemeIdentifier);
    addConstant(all, name, "darkThemeIdentifier", ThemeManager::darkThemeIdentifier);
    addConstant(all, name, "autoThemeIdentifier", ThemeManager::autoThemeIdentifier);
    addConstant(all, name, "currentAutoThemeTypeKey", ThemeManager::currentAutoThemeTypeKey);

    const auto getter = [&](std::string_view selector, auto get) {
        all.push_back(
            operation<>(name, selector, [get](ProcessState& s) { return (ThemeService(s).*get)(); }));
    };
    getter("getCurrentSelectedThemeType", &ThemeService::selectedThemeType);
    getter("setDefaultThemeIfNotSet", &ThemeService::setDefaultThemeIfNotSet);
    getter("currentThemeForAutoMode", &ThemeService::themeForAutoMode);
    getter("currentDisplayTheme", &ThemeService::displayTheme);
    getter("currentFinalSelectedThemeType", &ThemeService::finalSelectedThemeType);
    getter("currentDisplayThemeKey", &ThemeService::displayThemeKey);
    getter("currentFinalDisplayThemeKey", &ThemeService::displayThemeKey);
    getter("currentTheme", &ThemeService::currentTheme);
    getter("getReloadWidgetExtension", &ThemeService::reloadsWidgets);

    all.push_back(operation<std::int64_t>(
        name, "setCurrentSelectedThemeTypeWithType:", [](ProcessState& s, std::int64_t type) {
            return ThemeService(s).setSelectedThemeType(type);
        }));
    all.push_back(
        operation<bool>(name, "setReloadWidgetExtensionWithReload:", [](ProcessState& s, bool reload) {
            return ThemeService(s).setReloadsWidgets(reload);
        }));
    all.push_back(operation<OptionalText, OptionalText>(
        name, "getThemeColorFromHexString:lightHex:",
        [](ProcessState& s, const OptionalText& hex, const OptionalText& lightHex) {
            return ThemeService(s).themeColor(viewOf(hex), viewOf(lightHex));
        }));
    all.push_back(operation<Color>(name, "getColorHexValueWithColor:", checkedHexString));
}

void addColors(std::vector<Operation>& all) {
    constexpr std::string_view name = "AppDefaultColors";
    addConstant(all, name, "colorBlack", AppDefaultColors::colorBlack);
    addConstant(all, name, "colorBlueGray", AppDefaultColors::colorBlueGray);
    addConstant(all, name, "colorGreen", AppDefaultColors::colorGreen);
    addConstant(all, name, "colorRed", AppDefaultColors::colorRed);
    addConstant(all, name, "colorWhitieshGray", AppDefaultColors::colorWhitieshGray);
    addConstant(all, name, "colorLightBlack", AppDefaultColors::colorLightBlack);
    addConstant(all, name, "blueThemeColor", AppDefaultColors::blueThemeColor);
    addConstant(all, name, "colorWhite", AppDefaultColors::colorWhite);
    addConstant(all, name, "sliderThumbColor", AppDefaultColors::sliderThumbColor);
    addConstant(all, name, "sliderLeftColor", AppDefaultColors::sliderLeftColor);
    addConstant(all, name, "sliderRightColor", AppDefaultColors::sliderRightColor);

    all.push_back(
        operation<OptionalText>("UIColor", "colorFromHexString:", [](ProcessState&, const OptionalText& hex) {
            return extension::colorFromHexString(viewOf(hex));
        }));
    all.push_back(operation<OptionalText, double>(
        "UIColor",
        "colorFromHexStringAndOpacity:alpha:", [](ProcessState&, const OptionalText& hex, double alpha) {
            return extension::colorFromHexStringAndOpacity(viewOf(hex), alpha);
        }));
    all.push_back(operation<Color>("UIColor", "hexString", checkedHexString));
    all.push_back(operation<std::string>(
        "NSString", "getTheDirectionColor", [](ProcessState& s, const std::string& code) {
            return extension::getTheDirectionColor(code, *ThemeService(s).currentTheme());
        }));
}

const std::vector<Operation>& allOperations() {
    static const std::vector<Operation> operations = [] {
        std::vector<Operation> all;
        addSettings(all);
        addPresence(all);
        addThemes(all);
        addColors(all);
        return all;
    }();
    return operations;
}

std::string line(const Operation& operation) {
    std::string text = std::string(operation.className) + ' ' + std::string(operation.selector);
    for (const std::string_view parameter : operation.parameters) text += ' ' + std::string(parameter);
    return text;
}

tl::unexpected<platform::Error> wrongUsage(std::string message) {
    return platform::failure("UsageError", 0, std::move(message));
}

}  // namespace

struct PhoneApp::State : ProcessState {
    using ProcessState::ProcessState;
};

PhoneApp::PhoneApp(const platform::Runtime& runtime) : state_(std::make_unique<State>(runtime)) {}

PhoneApp::~PhoneApp() = default;

Result<ordered_json> PhoneApp::call(std::string_view className, std::string_view selector,
                                    const std::vector<std::string>& arguments) {
    const auto& all = allOperations();
    if (std::ranges::find(all, className, &Operation::className) == all.end()) {
        return wrongUsage("unknown class " + std::string(className) + "; \"call\" lists all operations");
    }
    const auto found = std::ranges::find_if(all, [&](const Operation& operation) {
        return operation.className == className && operation.selector == selector;
    });
    if (found == all.end()) {
        return wrongUsage(std::string(className) + " has no operation " + std::string(selector) +
                          "; \"call\" lists all operations");
    }
    if (arguments.size() != found->parameters.size()) {
        return wrongUsage("wrong number of arguments; write " + line(*found));
    }
    return found->call(*state_, arguments);
}

Result<void> PhoneApp::setTheme(std::int64_t type) {
    ThemeService themes(*state_);
    return themes.setSelectedThemeType(type)
        .and_then([&] { return themes.setReloadsWidgets(true); })
        .map([&] { extension::reloadWidgets(state_->runtime, std::nullopt); });
}

std::int64_t PhoneApp::theme() const { return ThemeService(*state_).selectedThemeType(); }

Result<void> PhoneApp::signIn(const std::optional<Session>& session) {
    return setSession(state_->runtime, session)
        .and_then([&] { return extension::removeSavedPortfolioRows(state_->runtime); })
        .map([&] { extension::reloadWidgets(state_->runtime, "PortfolioWidget"); });
}

Result<void> PhoneApp::chooseAssets(const ChosenAssets& assets) {
    return setChosenAssets(state_->runtime, assets).map([&] {
        extension::reloadWidgets(state_->runtime, "PerchWidget");
    });
}

Result<void> PhoneApp::setNewsFeed(const std::optional<std::string>& address) {
    return setNewsFeedAddress(state_->runtime, address).map([&] {
        extension::reloadWidgets(state_->runtime, "NewsWidget");
    });
}

std::vector<std::string> listOperations() {
    std::vector<std::string> lines;
    for (const Operation& operation : allOperations()) lines.push_back(line(operation));
    std::ranges::sort(lines);
    return lines;
}

}  // namespace companion
