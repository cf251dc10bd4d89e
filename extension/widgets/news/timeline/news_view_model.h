#pragma once

// Where the News widget's stories come from.

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

/// Takes an answer for which nobody waits.
struct NewsEntryHolder {
    NewsTimelineEntry entry;
};

/// Asks the service for its top stories, or the address that the phone app has put in its place. Keeps
/// nothing between fetches; each of them ends exactly once, on a background queue, or on the caller's
/// thread when the address is none. Every failure is an empty list.
///
/// A fetch reads the thumbnails too, one after another, all together for 8 seconds at most; those that are
/// late are absent, and so are those that would make more than 2 MiB of all. A thumbnail on this machine or
/// on a private network is read only when the feed's own address is on one.
class NewsViewModel {
public:
    /// `runtime` must outlive the fetches; the view model need not.
    explicit NewsViewModel(const platform::Runtime& runtime) : runtime_(runtime), network_(runtime) {}

    void fetchNews(std::shared_ptr<NewsEntryHolder> holder) const;
    void fetchEntry(std::function<void(NewsTimelineEntry)> completion) const;
    /// The list, and whether it holds anything.
    void fetchList(std::function<void(std::vector<NewsUIVM>, bool)> completion) const;

    /// Where the stories are asked for.
    std::string newsAddress() const;

private:
    std::optional<platform::PropertyList> unarchivedObject(std::string_view forKey) const;

    const platform::Runtime& runtime_;
    NetworkManager network_;
};

}  // namespace extension
