#include "extension/net/network_manager.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

namespace extension {
namespace {

using nlohmann::json;
using platform::Bytes;
using platform::HTTPResponse;
using platform::Result;

/// Far more than any document of the service has, and little compared with the memory of a widget.
constexpr std::size_t largestAnswer = 1U << 20;

/// In lower case, which is what the service receives and expects.
const char* methodText(RequestMethod method) { return method == RequestMethod::post ? "post" : "get"; }

Result<HTTPResponse> checked(Result<HTTPResponse> response) {
    if (response && (response->statusCode != 200 || !response->body))
        return tl::unexpected(platform::urlError(platform::url_error::badServerResponse));
    return response;
}

/// Throws for what JSON cannot express.
void appendLeaf(std::string& text, const json& value) {
    const bool isEndless = value.is_number_float() && !std::isfinite(value.get<double>());
    if (isEndless || value.is_binary() || value.is_discarded()) throw std::domain_error("not a JSON value");
    for (const char c : value.dump()) {
        if (c == '/') text += '\\';
        text += c;
    }
}

/// `newLine` is a line break with the blanks before the brace that ends `value`.
void append(std::string& text, const json& value, const std::string& newLine) {
    if (!value.is_structured()) return appendLeaf(text, value);
    text += value.is_object() ? '{' : '[';
    if (value.empty()) text += '\n';
    const char* separator = "";
    for (const auto& [key, member] : value.items()) {
        text.append(std::exchange(separator, ",")).append(newLine).append("  ");
        if (value.is_object()) {
            appendLeaf(text, key);
            text += " : ";
        }
        append(text, member, newLine + "  ");
    }
    text.append(newLine).append(value.is_object() ? "}" : "]");
}

/// JSON text as the phone's serializer prints it for people: two blanks a level, " : " between key and value,
/// "/" as "\/". Nothing when `value` is neither an object nor an array, or holds what JSON cannot express: a
/// number that is not finite, text that is not UTF-8, bytes.
std::optional<std::string> prettyPrintedJson(const json& value) {
    if (!value.is_structured()) return std::nullopt;
    try {
        std::string text;
        append(text, value, "\n");
        return text;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

}  // namespace

NetworkManager& NetworkManager::shared() {
    static NetworkManager manager(platform::Runtime::process());
    return manager;
}

bool NetworkManager::sendRequest(const std::string& urlString, RequestMethod method,
                                 const std::optional<nlohmann::json>& parameters,
                                 std::function<void(Result<Bytes>)> completion) const {
    return requestResponse(urlString, method, parameters,
                           [completion = std::move(completion)](const Result<HTTPResponse>& response) {
                               if (!response) return completion(tl::unexpected(response.error()));
                               completion(*response->body);
                           });
}

bool NetworkManager::requestResponse(const std::string& urlString, RequestMethod method,
                                     const std::optional<nlohmann::json>& parameters,
                                     platform::DataTaskCompletion completion) const {
    const std::optional<platform::URL> url = platform::URL::parse(urlString);
    if (!url) {
        completion(tl::unexpected(platform::urlError(platform::url_error::badURL)));
        return false;
    }
    platform::URLRequest request{.url = *url,
                                 .method = methodText(method),
                                 .headers = {{"Content-Type", "application/json"}},
                                 .timeoutInterval = std::chrono::seconds(60),
                                 .maximumBodySize = largestAnswer};
    if (parameters) {
        if (std::optional<std::string> body = prettyPrintedJson(*parameters))
            request.body = Bytes(*std::move(body));
    }
    // Its own session, so that a slow completion does not hold up another one.
    platform::URLSession session(runtime_.urls());
    session.dataTask(std::move(request), [completion = std::move(completion)](Result<HTTPResponse> response) {
        completion(checked(std::move(response)));
    });
    return true;
}

}  // namespace extension
