#pragma once

// Gets the Portfolio widget's rows: from the service, for the user who is signed in, or those of its last
// answer.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include "extension/net/network_manager.h"
#include "extension/widgets/portfolio/model/pw_timeline_entry.h"
#include "platform/runtime/runtime.h"

namespace extension {

/// Keeps nothing between calls. Any thread. Held by a shared pointer, since an answer looks whether the view
/// model is still there.
class PWViewModel : public std::enable_shared_from_this<PWViewModel> {
public:
    using Completion = std::function<void(PWTimelineEntry)>;

    /// `runtime` must outlive it and its fetches.
    explicit PWViewModel(const platform::Runtime& runtime) : runtime_(runtime), network_(runtime) {}

    const platform::Runtime& runtime() const { return runtime_; }

    /// Answers whether a request is under way. If not (nobody is signed in, or the address is not one),
    /// `completion` has been called; otherwise it is called once on the session's queue, also when the view
    /// model has gone by then. Any failure is the entry's state. A `success` is saved, unless its user has
    /// signed out or somebody else has signed in meanwhile.
    bool fetch(Completion completion);

    void saveRows(const std::vector<PortfolioWidgetVM>& rows) const;
    /// Nothing when no rows are saved or they cannot be read.
    std::optional<std::vector<PortfolioWidgetVM>> loadRows() const;

private:
    PWTimelineEntry entry(PWAPIError state, std::vector<PortfolioWidgetVM> rows = {}) const;
    /// What the phone app stores about the user who is signed in.
    struct Session {
        std::string token;
        std::string userId;
        std::string portfolio;
    };

    std::optional<Session> session() const;
    std::string requestAddress(const Session& session) const;
    PWTimelineEntry entryFor(std::string_view body, const std::string& userId) const;

    const platform::Runtime& runtime_;
    NetworkManager network_;
};

}  // namespace extension
