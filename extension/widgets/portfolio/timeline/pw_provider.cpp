#include "extension/widgets/portfolio/timeline/pw_provider.h"

#include <memory>
#include <optional>
#include <utility>
#include "extension/app/settings/reload_times.h"
#include "platform/base/fatal.h"

namespace extension {
namespace {

using platform::Instant;
using platform::Timeline;
using platform::TimelineReloadPolicy;

/// Whether the market moves now, so that a request is worth it.
bool isInRefreshWindow(const platform::Calendar& calendar, Instant now) {
    const auto opening = calendar.timeOnDay(now, marketOpens);
    const auto closing = calendar.timeOnDay(now, marketCloses);
    if (!opening || !closing) platform::fatalError("the calendar cannot give 09:00 and 16:00 of today");
    return *opening <= now && now <= *closing;
}

}  // namespace

PWTimelineEntry PWProvider::placeholder(const platform::TimelineProviderContext&) {
    const auto answer = std::make_shared<std::optional<PWTimelineEntry>>();
    const bool isUnderWay =
        pwViewModel->fetch([answer](PWTimelineEntry entry) { *answer = std::move(entry); });
    // The answer of a request, however quick, is not for the placeholder.
    if (!isUnderWay) return **answer;
    const platform::Runtime& runtime = pwViewModel->runtime();
    return {runtime, runtime.now(), {}, PWAPIError::failed};
}

void PWProvider::getSnapshot(const platform::TimelineProviderContext&,
                             std::function<void(PWTimelineEntry)> completion) {
    pwViewModel->fetch(std::move(completion));
}

void PWProvider::getTimeline(const platform::TimelineProviderContext&,
                             std::function<void(Timeline<PWTimelineEntry>)> completion) {
    const platform::Runtime& runtime = pwViewModel->runtime();
    const Instant now = runtime.now();
    const auto fetchWithPolicy = [this](TimelineReloadPolicy policy, auto done) {
        pwViewModel->fetch([policy, done = std::move(done)](PWTimelineEntry entry) {
            done(Timeline<PWTimelineEntry>{{std::move(entry)}, policy});
        });
    };
    if (isInRefreshWindow(runtime.calendar(), now))
        return fetchWithPolicy(reloadIn30Seconds(runtime), std::move(completion));
    if (auto rows = pwViewModel->loadRows()) {
        completion({{PWTimelineEntry(runtime, now, std::move(*rows), PWAPIError::success)},
                    TimelineReloadPolicy::atEnd()});
        return;
    }
    fetchWithPolicy(TimelineReloadPolicy::atEnd(), std::move(completion));
}

}  // namespace extension
