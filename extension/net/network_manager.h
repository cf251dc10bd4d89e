#pragma once

// The one HTTP client of the widgets. It knows the settings that all requests share, but not what they carry.

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include "platform/base/bytes.h"
#include "platform/base/result.h"
#include "platform/runtime/runtime.h"
#include "platform/url/url_session.h"

namespace extension {

enum class RequestMethod : bool { get, post };

/// Sends requests and hands back raw bodies; neither decodes nor retries. Keeps nothing between
/// requests. Any thread.
class NetworkManager {
public:
    explicit NetworkManager(const platform::Runtime& runtime) : runtime_(runtime) {}
    NetworkManager(const NetworkManager&) = delete;
    NetworkManager& operator=(const NetworkManager&) = delete;

    /// The one of this process. Called by the phone app; nothing here does.
    static NetworkManager& shared();

    /// Calls `completion` exactly once: with the body of an answer of status 200, or with an error of
    /// the URL domain. Answers whether a request is under way. If not, badURL has been handed over on this
    /// thread; everything else comes on the request's own background queue. Any other status and an
    /// empty body are badServerResponse; 60 seconds without data are timedOut, and a body above 1 MiB is
    /// dataLengthExceedsMaximum.
    ///
    /// `parameters` become the body as JSON; what JSON cannot express (numbers that are not finite, text
    /// that is not UTF-8) leaves the request without a body.
    bool sendRequest(const std::string& urlString, RequestMethod method,
                     const std::optional<nlohmann::json>& parameters,
                     std::function<void(platform::Result<platform::Bytes>)> completion) const;

    /// The same for callers that also need to know where the answer came from; its body is there.
    bool requestResponse(const std::string& urlString, RequestMethod method,
                         const std::optional<nlohmann::json>& parameters,
                         platform::DataTaskCompletion completion) const;

private:
    const platform::Runtime& runtime_;
};

}  // namespace extension
