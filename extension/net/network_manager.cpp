#include "extension/net/network_manager.h"

#include <nlohmann/json.hpp>
#include <utility>
#include "extension/net/pretty_json.h"
#include "platform/url/url_session.h"

namespace extension {
namespace {

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
