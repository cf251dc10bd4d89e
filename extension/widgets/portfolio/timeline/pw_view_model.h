#pragma once

// Where the Portfolio widget's rows come from: the service, for the user who is signed in, or the
// rows of the last time that it answered.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include "extension/widgets/portfolio/model/pw_timeline_entry.h"
#include "platform/runtime/runtime.h"

namespace extension {

class NetworkManager;

/// Keeps nothing between calls. Any thread. Held by a shared pointer, since an answer asks whether
/// it is still wanted.
class PWViewModel : public std::enable_shared_from_this<PWViewModel> {
public:
    using Completion = std::function<void(PWTimelineEntry)>;

    /// Both must outlive it and its fetches.
    PWViewModel(const platform::Runtime& runtime, NetworkManager& network);

    /// Calls `completion` exactly once, also when the view model has gone by then: before it returns
    /// when nobody is signed in or the address is none, else on the session's queue. Never fails but
    /// through the entry's state. A `success` is saved, unless another user has signed in meanwhile.
    void fetch(Completion completion);

    void saveRows(const std::vector<PortfolioWidgetVM>& rows) const;
    /// Nothing when none were saved or what was saved cannot be read.
    std::optional<std::vector<PortfolioWidgetVM>> loadRows() const;

private:
    PWTimelineEntry entry(PWAPIError state, std::vector<PortfolioWidgetVM> rows = {}) const;
    /// What the phone app leaves of the user who is signed in.
    struct Session {
        std::string token;
        std::string userId;
        std::string portfolio;

        bool operator==(const Session&) const = default;
    };

    std::optional<Session> session() const;
    std::string requestAddress(const Session& session) const;
    PWTimelineEntry entryFor(std::string_view body, const Session& asked) const;

    const platform::Runtime& runtime_;
    NetworkManager& network_;
};

}  // namespace extension
