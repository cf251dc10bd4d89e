#pragma once

// Gets the News widget's stories.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include "extension/net/network_manager.h"
#include "extension/widgets/news/model/news_timeline_entry.h"
#include "platform/runtime/runtime.h"
#include "platform/settings/property_list.h"

namespace extension {

/// Receives an answer that nobody is waiting for.
struct NewsEntryHolder {
    NewsTimelineEntry entry;
};

/// Asks the service for its top stories, or the address that the phone app has stored instead. Keeps nothing
/// between fetches. Each ends exactly once: on a background queue, or on the caller's thread when the
/// address is not one. Every failure is an empty list.
///
/// A fetch also reads the thumbnails, one after another, for 8 seconds and 2 MiB in all; those that are late
/// or too large are absent. A thumbnail on this machine or on a private network is read only when the feed
/// is on one, too.
class NewsViewModel {
public:
    /// `runtime` must outlive the fetches; the view model need not.
    explicit NewsViewModel(const platform::Runtime& runtime) : runtime_(runtime), network_(runtime) {}

    void fetchNews(std::shared_ptr<NewsEntryHolder> holder) const;
    void fetchEntry(std::function<void(NewsTimelineEntry)> completion) const;
    /// Hands over the list, and whether it has any stories.
    void fetchList(std::function<void(std::vector<NewsUIVM>, bool)> completion) const;

    /// The address that is asked.
    std::string newsAddress() const;

private:
    std::optional<platform::PropertyList> unarchivedObject(std::string_view forKey) const;

    const platform::Runtime& runtime_;
    NetworkManager network_;
};

}  // namespace extension
