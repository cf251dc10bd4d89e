#pragma once

// The Portfolio widget's timelines: fetched while the market is open, the saved rows at other times.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include "extension/net/network_manager.h"
#include "extension/widgets/portfolio/model/pw_timeline_entry.h"
#include "platform/runtime/runtime.h"
#include "platform/widget/timeline.h"

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

class PWProvider {
public:
    using Entry = PWTimelineEntry;

    /// `runtime` must outlive the provider and its fetches.
    explicit PWProvider(const platform::Runtime& runtime)
        : pwViewModel(std::make_shared<PWViewModel>(runtime)) {}

    /// Never waits: `nonLogin` when nobody is signed in, `failed` otherwise; the answer of the
    /// request that it starts is not used.
    PWTimelineEntry placeholder(const platform::TimelineProviderContext& context);

    /// Asks at any hour.
    void getSnapshot(const platform::TimelineProviderContext& context,
                     std::function<void(PWTimelineEntry)> completion);

    /// From 09:00:00 to 16:00:00 of the user's calendar, both included, it asks and wants to be asked
    /// again in 30 seconds. At other hours it answers with the saved rows, however old, before it returns,
    /// and asks when there are none. Calls `completion` exactly once.
    void getTimeline(const platform::TimelineProviderContext& context,
                     std::function<void(platform::Timeline<PWTimelineEntry>)> completion);

    std::shared_ptr<PWViewModel> pwViewModel;
};

}  // namespace extension
