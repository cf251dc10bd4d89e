#include "companion/operations.h"

#include <algorithm>
#include <functional>
#include <future>
#include <nlohmann/json.hpp>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>
#include "extension/app/presence/widget_kit_helper.h"
#include "extension/app/settings/process_state.h"
#include "extension/app/settings/store_keys.h"
#include "extension/app/settings/widget_helper.h"
#include "extension/theme/hex_codec.h"
#include "extension/theme/theme.h"
#include "extension/theme/theme_manager.h"
#include "platform/base/ascii.h"
#include "platform/json/json_document.h"
#include "platform/settings/utf8.h"
#include "platform/text/number_formatter.h"
#include "platform/view/view_json.h"

namespace companion {
namespace {

using extension::AppDefaultColors;
using extension::KeyConstants;
using extension::ProcessState;
using extension::ThemeManager;
using extension::WidgetHelper;
using extension::WidgetKitHelper;
using nlohmann::ordered_json;
using platform::Color;
using platform::Result;
using Words = std::vector<std::string>;

tl::unexpected<platform::Error> noSuch(const std::string& text, std::string_view kind) {
    return platform::failure("UsageError", 0, "'" + text + "' is not a " + std::string(kind));
}

std::optional<Color> colorOf(const ordered_json& components) {
    std::vector<double> values;
    for (const ordered_json& component : components) {
        if (!component.is_number()) return std::nullopt;
        values.push_back(component.get<double>());
        if (!(values.back() >= 0.0 && values.back() <= 1.0)) return std::nullopt;
    }
    return extension::colorOfComponents(values);
}

/// What an argument of a type is called in the list of operations.
template <typename T>
constexpr std::string_view argumentName;
template <>
constexpr std::string_view argumentName<std::string_view> = "TEXT";
template <>
constexpr std::string_view argumentName<std::optional<std::string_view>> = "TEXT|null";
template <>
constexpr std::string_view argumentName<std::int64_t> = "INTEGER";
template <>
constexpr std::string_view argumentName<double> = "NUMBER";
template <>
constexpr std::string_view argumentName<bool> = "true|false";
template <>
constexpr std::string_view argumentName<Color> = "COLOR";

/// Reads an argument. A text's value is a view of `text`.
template <typename T>
Result<T> readArgument(const std::string& text);
template <>
Result<std::string_view> readArgument(const std::string& text) {
    if (!platform::isUtf8(text)) return platform::failure("UsageError", 0, "a text is not UTF-8");
    return text;
}

template <>
Result<std::optional<std::string_view>> readArgument(const std::string& text) {
    if (text == "null") return std::nullopt;
    return readArgument<std::string_view>(text).map(
        [](std::string_view same) { return std::optional(same); });
}

template <>
Result<std::int64_t> readArgument(const std::string& text) {
    const auto number = platform::parsedNumber<std::int64_t>(text);
    return number ? *number : Result<std::int64_t>(noSuch(text, "whole number"));
}

template <>
Result<double> readArgument(const std::string& text) {
    double number = 0.0;
    if (!platform::parseDecimal(text, number)) return noSuch(text, "decimal number");
    return number;
}

template <>
Result<bool> readArgument(const std::string& text) {
    if (text != "true" && text != "false") return noSuch(text, "truth value (true or false)");
    return text == "true";
}

template <>
Result<Color> readArgument(const std::string& text) {
    const ordered_json json = platform::parsedJson(text).value_or(nullptr);
    if (json.is_object() && json.contains("components")) {
        const auto color = json["components"].is_array() ? colorOf(json["components"]) : std::nullopt;
        return color ? Result<Color>(*color)
                     : noSuch(text, "colour of zero, two or four components from 0 to 1");
    }
    const Result<Color> color = platform::colorFromJson(json);
    return color ? color : noSuch(text, R"(colour such as {"hex":"#1A1A22","alpha":1})");
}

}  // namespace

/// What the classes that the extension publishes keep in the phone app's memory.
struct PhoneApp::State : ProcessState {
    using ProcessState::ProcessState;
    /// The one that the phone app's views are bound to.
    ThemeManager themeManager;
};

namespace {

struct Operation {
    std::string_view className;
    std::string_view selector;
    std::vector<std::string_view> parameters;
    /// With as many words as there are parameters.
    std::function<Result<ordered_json>(PhoneApp::State&, const Words&)> call;
};

// What an operation answers, as JSON.

template <typename T>
ordered_json answer(const T& value) {
    return value;
}
ordered_json answer(const std::optional<std::string>& text) {
    return text ? ordered_json(*text) : ordered_json();
}
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

/// Reads every word as its parameter's type and calls `function` with them; the first word that does not fit
/// is the answer instead.
template <typename... Parameters, typename Function, std::size_t... Positions>
Result<ordered_json> callWith(const Function& function, PhoneApp::State& state, const Words& words,
                              std::index_sequence<Positions...>) {
    const std::tuple<Result<Parameters>...> arguments{readArgument<Parameters>(words[Positions])...};
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

/// The operations, as they are collected.
class Operations {
public:
    template <typename... Parameters, typename Function>
    void add(std::string_view className, std::string_view selector, Function function) {
        all.push_back({className,
                       selector,
                       {argumentName<Parameters>...},
                       [function](PhoneApp::State& state, const Words& words) {
                           return callWith<Parameters...>(function, state, words,
                                                          std::index_sequence_for<Parameters...>());
                       }});
    }

    // A published function, with or without the state that it works on.
    template <typename Answer>
    void add(std::string_view className, std::string_view selector, Answer (*function)(ProcessState&)) {
        add<>(className, selector, [function](ProcessState& state) { return function(state); });
    }
    template <typename Answer, typename First>
    void add(std::string_view className, std::string_view selector,
             Answer (*function)(First, ProcessState&)) {
        add<std::decay_t<First>>(className, selector, [function](ProcessState& state, const auto& first) {
            return function(first, state);
        });
    }
    template <typename Answer, typename First>
    void add(std::string_view className, std::string_view selector, Answer (*function)(First)) {
        add<std::decay_t<First>>(className, selector,
                                 [function](ProcessState&, const auto& first) { return function(first); });
    }

    template <typename Value>
    void addConstant(std::string_view className, std::string_view name, const Value& value) {
        add<>(className, name, [value](ProcessState&) { return value; });
    }

    std::vector<Operation> all;
};

/// The colour's hex text, without letting a colour that has none end this process.
Result<std::string> checkedHexString(const Color& color) {
    if (const std::size_t count = color.components().size(); count != 0 && count < 3) {
        return platform::failure("FatalError", 0,
                                 "fatal error: the hex text of a colour with fewer than three components");
    }
    return ThemeManager::getColorHexValueWithColor(color);
}

/// Waits for the answer, so that the properties that are read next show it.
void askWhatIsPlaced(ProcessState& state) {
    const auto isAnswered = std::make_shared<std::promise<void>>();
    WidgetKitHelper::getCurrentConfigurations(state, [isAnswered] { isAnswered->set_value(); });
    isAnswered->get_future().wait();
}

void addSettings(Operations& all) {
    constexpr std::string_view name = "KeyConstants";
    all.addConstant(name, "GROUP_TODAY_EXTENSION", KeyConstants::GROUP_TODAY_EXTENSION);
    all.addConstant(name, "refresh_rate", KeyConstants::refresh_rate);
    all.addConstant(name, "reloadWidgetOnThemeChange", KeyConstants::reloadWidgetOnThemeChange);
    all.add(name, "appleEmailId", KeyConstants::appleEmailId);
    all.add(name, "setAppleEmailId:", KeyConstants::setAppleEmailId);
    all.add(name, "storylyURL", KeyConstants::storylyURL);
    all.add(name, "setStorylyURL:", KeyConstants::setStorylyURL);
    all.add("WidgetHelper", "checkAndRemoveExpiredFutureWidgets",
            WidgetHelper::checkAndRemoveExpiredFutureWidgets);
}

void addPresence(Operations& all) {
    constexpr std::string_view name = "WidgetKitHelper";
    all.add(name, "isWigetAdded", WidgetKitHelper::isWigetAdded);
    all.add(name, "setIsWigetAdded:", WidgetKitHelper::setIsWigetAdded);
    all.add(name, "widgetFamily", WidgetKitHelper::widgetFamily);
    all.add(name, "setWidgetFamily:", WidgetKitHelper::setWidgetFamily);
    all.add(name, "isNewsWidgetAdded", WidgetKitHelper::isNewsWidgetAdded);
    all.add(name, "setIsNewsWidgetAdded:", WidgetKitHelper::setIsNewsWidgetAdded);
    all.add(name, "newsWidgetFamily", WidgetKitHelper::newsWidgetFamily);
    all.add(name, "setNewsWidgetFamily:", WidgetKitHelper::setNewsWidgetFamily);
    all.add(name, "isPortfolioWigetAdded", WidgetKitHelper::isPortfolioWigetAdded);
    all.add(name, "setIsPortfolioWigetAdded:", WidgetKitHelper::setIsPortfolioWigetAdded);
    all.add(name, "portfolioWidgetFamily", WidgetKitHelper::portfolioWidgetFamily);
    all.add(name, "setPortfolioWidgetFamily:", WidgetKitHelper::setPortfolioWidgetFamily);
    all.add(name, "getCurrentConfigurations", askWhatIsPlaced);
    all.add(name, "reloadAllWidgets:", WidgetKitHelper::reloadAllWidgets);
    all.add(name, "updatePortfolioArrayUserDefaults", WidgetKitHelper::updatePortfolioArrayUserDefaults);
}

void addThemes(Operations& all) {
    constexpr std::string_view name = "ThemeManager";
    all.addConstant(name, "lightThemeIdentifier", ThemeManager::lightThemeIdentifier);
    all.addConstant(name, "darkThemeIdentifier", ThemeManager::darkThemeIdentifier);
    all.addConstant(name, "autoThemeIdentifier", ThemeManager::autoThemeIdentifier);
    all.addConstant(name, "currentAutoThemeTypeKey", ThemeManager::currentAutoThemeTypeKey);
    all.add(name, "getCurrentSelectedThemeType", ThemeManager::getCurrentSelectedThemeType);
    all.add(name, "setCurrentSelectedThemeTypeWithType:", ThemeManager::setCurrentSelectedThemeTypeWithType);
    all.add(name, "setDefaultThemeIfNotSet", ThemeManager::setDefaultThemeIfNotSet);
    all.add(name, "currentThemeForAutoMode", ThemeManager::currentThemeForAutoMode);
    all.add(name, "currentDisplayTheme", ThemeManager::currentDisplayTheme);
    all.add(name, "currentFinalSelectedThemeType", ThemeManager::currentFinalSelectedThemeType);
    all.add(name, "currentDisplayThemeKey", ThemeManager::currentDisplayThemeKey);
    all.add(name, "currentFinalDisplayThemeKey", ThemeManager::currentFinalDisplayThemeKey);
    all.add(name, "currentTheme", ThemeManager::currentTheme);
    all.add(name, "getReloadWidgetExtension", ThemeManager::getReloadWidgetExtension);
    all.add(name, "setReloadWidgetExtensionWithReload:", ThemeManager::setReloadWidgetExtensionWithReload);
    using OptionalText = std::optional<std::string_view>;
    all.add<OptionalText, OptionalText>(
        name, "getThemeColorFromHexString:lightHex:",
        [](ProcessState& state, const OptionalText& hex, const OptionalText& lightHex) {
            return ThemeManager::getThemeColorFromHexString(hex, lightHex, state);
        });
    all.add(name, "getColorHexValueWithColor:", checkedHexString);
    all.add<>(name, "currentSelectedThemeType",
              [](PhoneApp::State& state) { return state.themeManager.currentSelectedThemeType.get(); });
    all.add<std::int64_t>(name,
                          "setCurrentSelectedThemeType:", [](PhoneApp::State& state, std::int64_t type) {
                              state.themeManager.currentSelectedThemeType.set(type);
                          });
}

void addColors(Operations& all) {
    constexpr std::string_view name = "AppDefaultColors";
    all.addConstant(name, "colorBlack", AppDefaultColors::colorBlack);
    all.addConstant(name, "colorBlueGray", AppDefaultColors::colorBlueGray);
    all.addConstant(name, "colorGreen", AppDefaultColors::colorGreen);
    all.addConstant(name, "colorRed", AppDefaultColors::colorRed);
    all.addConstant(name, "colorWhitieshGray", AppDefaultColors::colorWhitieshGray);
    all.addConstant(name, "colorLightBlack", AppDefaultColors::colorLightBlack);
    all.addConstant(name, "blueThemeColor", AppDefaultColors::blueThemeColor);
    all.addConstant(name, "colorWhite", AppDefaultColors::colorWhite);
    all.addConstant(name, "sliderThumbColor", AppDefaultColors::sliderThumbColor);
    all.addConstant(name, "sliderLeftColor", AppDefaultColors::sliderLeftColor);
    all.addConstant(name, "sliderRightColor", AppDefaultColors::sliderRightColor);

    using OptionalText = std::optional<std::string_view>;
    all.add("UIColor", "colorFromHexString:", extension::colorFromHexString);
    all.add<OptionalText, double>("UIColor", "colorFromHexStringAndOpacity:alpha:",
                                  [](ProcessState&, const OptionalText& hex, double alpha) {
                                      return extension::colorFromHexStringAndOpacity(hex, alpha);
                                  });
    all.add("UIColor", "hexString", checkedHexString);
    all.add("NSString", "getTheDirectionColor", extension::getTheDirectionColor);
}

const std::vector<Operation>& allOperations() {
    static const std::vector<Operation> operations = [] {
        Operations collected;
        addSettings(collected);
        addPresence(collected);
        addThemes(collected);
        addColors(collected);
        return collected.all;
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

PhoneApp::PhoneApp(const platform::Runtime& runtime) : state_(std::make_unique<State>(runtime)) {}

PhoneApp::~PhoneApp() = default;

Result<ordered_json> PhoneApp::call(std::string_view className, std::string_view selector,
                                    const std::vector<std::string>& arguments) {
    const auto& all = allOperations();
    if (std::ranges::find(all, className, &Operation::className) == all.end())
        return wrongUsage("unknown class " + std::string(className) + "; \"call\" lists all operations");
    const auto found = std::ranges::find_if(all, [&](const Operation& operation) {
        return operation.className == className && operation.selector == selector;
    });
    if (found == all.end()) {
        return wrongUsage(std::string(className) + " has no operation " + std::string(selector) +
                          "; \"call\" lists all operations");
    }
    if (arguments.size() != found->parameters.size())
        return wrongUsage("wrong number of arguments; write " + line(*found));
    return found->call(*state_, arguments);
}

Result<void> PhoneApp::setTheme(std::int64_t type) {
    return ThemeManager::setCurrentSelectedThemeTypeWithType(type, *state_)
        .and_then([&] { return ThemeManager::setReloadWidgetExtensionWithReload(true, *state_); })
        .map([&] { WidgetKitHelper::reloadAllWidgets(std::nullopt, *state_); });
}

std::int64_t PhoneApp::theme() const { return ThemeManager::getCurrentSelectedThemeType(*state_); }

Result<void> PhoneApp::signIn(const std::optional<Session>& session) {
    return setSession(state_->runtime, session)
        .and_then([&] { return WidgetKitHelper::updatePortfolioArrayUserDefaults(*state_); })
        .map([&] { WidgetKitHelper::reloadAllWidgets("PortfolioWidget", *state_); });
}

Result<void> PhoneApp::chooseAssets(const ChosenAssets& assets) {
    return setChosenAssets(state_->runtime, assets).map([&] {
        WidgetKitHelper::reloadAllWidgets("PerchWidget", *state_);
    });
}

Result<void> PhoneApp::setNewsFeed(const std::optional<std::string>& address) {
    return setNewsFeedAddress(state_->runtime, address).map([&] {
        WidgetKitHelper::reloadAllWidgets("NewsWidget", *state_);
    });
}

std::vector<std::string> listOperations() {
    std::vector<std::string> lines;
    for (const Operation& operation : allOperations()) lines.push_back(line(operation));
    std::ranges::sort(lines);
    return lines;
}

}  // namespace companion
