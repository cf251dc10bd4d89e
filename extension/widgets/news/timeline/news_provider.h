#pragma once

// The News widget's timelines: always from the network, one entry each.

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
#include "platform/widget/timeline.h"

namespace extension {

/// Receives an answer that nobody is waiting for.
struct NewsEntryHolder {
    NewsTimelineEntry entry;
};

/// The first five stories of an answer that has a body; none when it cannot be decoded. Reads their
/// thumbnails too, one after another, for at most 8 seconds in all: late ones are absent, and so are those
/// that would make all of them more than 2 MiB. A thumbnail on this machine or a private network is read only
/// when the answer came from such an address: a public feed must not make this device read from a private
/// network.
std::vector<NewsUIVM> makeStories(const platform::HTTPResponse& answer, const platform::Runtime& runtime);

/// Asks the service for its top stories, or the address that the phone app has put in its place. Keeps
/// nothing between fetches. Each fetch ends exactly once: on a background queue, or on the caller's thread
/// when the address cannot be formed. Every failure is an empty list.
class NewsViewModel {
public:
    /// `runtime` must outlive the fetches; the view model need not.
    explicit NewsViewModel(const platform::Runtime& runtime) : runtime_(runtime), network_(runtime) {}

    void fetchNews(std::shared_ptr<NewsEntryHolder> holder) const;
    void fetchEntry(std::function<void(NewsTimelineEntry)> completion) const;
    /// Hands over the list, and whether it has any stories.
    void fetchList(std::function<void(std::vector<NewsUIVM>, bool)> completion) const;

    /// The address of the stories.
    std::string newsAddress() const;

private:
    std::optional<platform::PropertyList> unarchivedObject(std::string_view forKey) const;

    const platform::Runtime& runtime_;
    NetworkManager network_;
};

class NewsProvider {
public:
    using Entry = NewsTimelineEntry;

    /// `runtime` must outlive the provider and its fetches.
    explicit NewsProvider(const platform::Runtime& runtime) : newsViewModel(runtime), runtime_(runtime) {}

    /// Always the empty entry, at once; the answer of the request that it starts is not used.
    NewsTimelineEntry placeholder(const platform::TimelineProviderContext& context);

    void getSnapshot(const platform::TimelineProviderContext& context,
                     std::function<void(NewsTimelineEntry)> completion);

    /// Wants to be asked again 30 seconds after the call, whatever the answer. Fatal when the calendar cannot
    /// give that moment.
    void getTimeline(const platform::TimelineProviderContext& context,
                     std::function<void(platform::Timeline<NewsTimelineEntry>)> completion);

    NewsViewModel newsViewModel;

private:
    const platform::Runtime& runtime_;
};

}  // namespace extension
