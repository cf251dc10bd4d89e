#include "extension/widgets/news/timeline/news_provider.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>
#include "extension/app/settings/build_flags.h"
#include "extension/app/settings/reload_times.h"
#include "extension/app/settings/store_keys.h"
#include "platform/json/json_coding.h"
#include "platform/settings/keyed_archive.h"
#include "platform/url/private_network.h"
#include "platform/url/url_session.h"

namespace extension {

using platform::Timeline;

namespace {

using platform::Bytes;
using platform::PropertyList;
using platform::Result;
using platform::Runtime;
using std::chrono::steady_clock;

constexpr std::string_view rankingPath =
    "/newsapi/app/get_news_ranking/main_home_page/allnews/?start=0&limit=5";
constexpr std::size_t storiesShown = 5;
constexpr std::chrono::seconds timeForAllThumbnails{8};
/// There are three copies of them on their way to the host.
constexpr std::size_t roomForAllThumbnails = 2U << 20;

bool holdsOnlyTexts(const PropertyList::Dictionary& dictionary) {
    return std::ranges::all_of(dictionary,
                               [](const auto& member) { return member.second.text() != nullptr; });
}

/// Reads pictures until the time or the room for all of them is used up.
ThumbnailReader thumbnailReader(const Runtime& runtime, bool allowsPrivateHosts) {
    const auto deadline = steady_clock::now() + timeForAllThumbnails;
    return [&runtime, allowsPrivateHosts, deadline,
            room = roomForAllThumbnails](const platform::URL& url) mutable -> std::optional<Bytes> {
        if (steady_clock::now() >= deadline) return std::nullopt;
        Result<Bytes> bytes = platform::contentsOf(url, runtime.urls(), allowsPrivateHosts, deadline);
        if (!bytes || bytes->size() > room) return std::nullopt;
        room -= bytes->size();
        return *std::move(bytes);
    };
}

}  // namespace

std::vector<NewsUIVM> makeStories(const platform::HTTPResponse& answer, const Runtime& runtime) {
    const Result<NewsDataModel> news = platform::decodedJSON<NewsDataModel>(answer.body->view());
    if (!news || !news->list) return {};
    const ThumbnailReader readThumbnail =
        thumbnailReader(runtime, platform::isPrivateNumericAddress(answer.peerAddress));
    std::vector<NewsUIVM> stories;
    for (const NewsDetails& story : *news->list) {
        if (stories.size() == storiesShown) break;
        stories.push_back(makeNewsUIVM(story, runtime.ids(), readThumbnail));
    }
    return stories;
}

void NewsViewModel::fetchNews(std::shared_ptr<NewsEntryHolder> holder) const {
    fetchEntry([holder = std::move(holder)](NewsTimelineEntry entry) { holder->entry = std::move(entry); });
}

void NewsViewModel::fetchEntry(std::function<void(NewsTimelineEntry)> completion) const {
    fetchList([&runtime = runtime_, completion = std::move(completion)](std::vector<NewsUIVM> stories,
                                                                        bool isSuccess) {
        completion(NewsTimelineEntry(runtime, std::move(stories), isSuccess));
    });
}

void NewsViewModel::fetchList(std::function<void(std::vector<NewsUIVM>, bool)> completion) const {
    network_.requestResponse(newsAddress(), RequestMethod::get, std::nullopt,
                             [&runtime = runtime_, completion = std::move(completion)](
                                 const Result<platform::HTTPResponse>& answer) {
                                 // Without a network the widget is empty; it never shows a message.
                                 std::vector<NewsUIVM> stories =
                                     answer ? makeStories(*answer, runtime) : std::vector<NewsUIVM>();
                                 const bool isSuccess = !stories.empty();
                                 completion(std::move(stories), isSuccess);
                             });
}

std::string NewsViewModel::newsAddress() const {
    if (const std::optional<PropertyList> links = unarchivedObject(keys::extraLinks)) {
        const PropertyList::Dictionary* dictionary = links->dictionary();
        if (dictionary != nullptr && holdsOnlyTexts(*dictionary)) {
            const auto replacement = dictionary->find(keys::newsWidgetApiUrl);
            if (replacement != dictionary->end() && !replacement->second.text()->empty())
                return *replacement->second.text();
        }
    }
    return webHost(runtime_).append(rankingPath);
}

std::optional<PropertyList> NewsViewModel::unarchivedObject(std::string_view forKey) const {
    if (forKey.empty()) return std::nullopt;
    const auto defaults = sharedDefaults(runtime_);
    if (!defaults) return std::nullopt;
    const Result<std::optional<PropertyList>> stored = (*defaults)->object(forKey);
    const Bytes* archive = stored && *stored ? (*stored)->data() : nullptr;
    if (archive == nullptr) return std::nullopt;
    Result<PropertyList> object = platform::unarchivedObject(archive->view());
    if (!object) {
        runtime_.log().write("Failed to unarchive object for key " + std::string(forKey) + ": " +
                             object.error().message);
        return std::nullopt;
    }
    return *std::move(object);
}

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
