#pragma once

// Plays the phone app: calls what the extension publishes to it, by class and selector.

#include <cstdint>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include "companion/user_choices.h"
#include "platform/base/result.h"
#include "platform/runtime/runtime.h"

namespace companion {

/// One phone app. What the operations keep in memory (the current theme, which widgets are placed, two
/// texts) lives as long as this object. Any thread.
class PhoneApp {
public:
    /// `runtime` must outlive it.
    explicit PhoneApp(const platform::Runtime& runtime);
    ~PhoneApp();

    /// Calls one operation and answers its result, null if it has none. A property is read by its name and
    /// set by `setName:`; an operation of a value takes the value first.
    ///
    /// Arguments are texts: numbers in decimal, "true" and "false", a colour as {"hex":"#1A1A22","alpha":1}
    /// or {"components":[0.5,1]} with none, two or four components of 0 to 1, an absent optional as "null".
    /// Errors: "UsageError" for an unknown class or selector and for arguments that do not fit,
    /// "FatalError" for what would end the phone app's process by contract. Asking what is placed waits for
    /// the answer.
    platform::Result<nlohmann::ordered_json> call(std::string_view className, std::string_view selector,
                                                  const std::vector<std::string>& arguments);

    // What a person does in the phone app. Each stores the change and has the widgets reloaded that show it.

    platform::Result<void> setTheme(std::int64_t type);
    /// The stored choice, from 0 to 3.
    std::int64_t theme() const;
    /// Signs in, or out when there is no session.
    platform::Result<void> signIn(const std::optional<Session>& session);
    platform::Result<void> chooseAssets(const ChosenAssets& assets);
    /// Replaces the news feed's address, or gives it back to the environment.
    platform::Result<void> setNewsFeed(const std::optional<std::string>& address);

    struct State;

private:
    std::unique_ptr<State> state_;
};

/// Every operation with the kinds of its arguments, one line each, such as
/// "ThemeManager setCurrentSelectedThemeTypeWithType: INTEGER".
std::vector<std::string> listOperations();

/// The words of one line: parted by blanks; a word that begins with a quotation mark is a JSON text and
/// stands for what it says, one that begins with a brace or bracket goes to its end, blanks included.
/// Error "UsageError" for a text or brace that does not end.
platform::Result<std::vector<std::string>> splitCallLine(std::string_view line);

}  // namespace companion
