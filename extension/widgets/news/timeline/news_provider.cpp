#include "extension/widgets/news/timeline/news_provider.h"

#include <memory>
#include <utility>
#include "extension/app/settings/reload_times.h"

namespace extension {

using platform::Timeline;

NewsTimelineEntry NewsProvider::placeholder(const platform::TimelineProviderContext&) {
    NewsTimelineEntry empty(runtime_, {}, false);
    newsViewModel.fetchNews(std::make_shared<NewsEntryHolder>(empty));
    return empty;
}

void NewsProvider::getSnapshot(const platform::TimelineProviderContext&,
                               std::function<void(NewsTimelineEntry)> completion) {
    newsViewModel.fetchEntry(std::move(completion));
}

void NewsProvider::getTimeline(const platform::TimelineProviderContext&,
                               std::function<void(Timeline<NewsTimelineEntry>)> completion) {
    newsViewModel.fetchList(
        [&runtime = runtime_, policy = reloadIn30Seconds(runtime_), completion = std::move(completion)](
            std::vector<NewsUIVM> stories, bool isSuccess) {
            completion(Timeline<NewsTimelineEntry>{
                {NewsTimelineEntry(runtime, std::move(stories), isSuccess)}, policy});
        });
}

}  // namespace extension
