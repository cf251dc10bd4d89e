#include "platform/runtime/command_line.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace platform {

Result<ProcessOptions> takeProcessOptions(std::vector<std::string>& arguments) {
    ProcessOptions options;
    std::vector<std::string> rest;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string& argument = arguments[i];
        if (argument == "--") {
            rest.insert(rest.end(), arguments.begin() + static_cast<std::ptrdiff_t>(i), arguments.end());
            break;
        }
        const std::size_t equals = argument.find('=');
        const auto option = std::ranges::find(commonOptions, std::string_view(argument).substr(0, equals),
                                              &CommonOption::name);
        if (argument == "--verbose") {
            options.isVerbose = true;
        } else if (option == commonOptions.end()) {
            rest.push_back(std::move(argument));
        } else if (equals != std::string::npos) {
            options.*(option->value) = argument.substr(equals + 1);
        } else if (i + 1 < arguments.size()) {
            options.*(option->value) = std::move(arguments[++i]);
        } else {
            return failure("UsageError", 2, argument + " needs a value");
        }
    }
    arguments = std::move(rest);
    return options;
}

}  // namespace platform
