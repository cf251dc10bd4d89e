#include "extension/widgets/portfolio/timeline/pw_provider.h"

#include <chrono>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include "extension/net/network_manager.h"
#include "platform/base/fatal.h"

namespace extension {
namespace {

using platform::Instant;
using platform::Timeline;
using platform::TimelineReloadPolicy;
using namespace std::chrono_literals;

Instant orFatal(const std::optional<Instant>& instant, const char* message) {
    if (!instant) platform::fatalError(message);
    return *instant;
}

/// Whether the market's figures move now, and so are worth a request.
bool isInRefreshWindow(const platform::Calendar& calendar, Instant now) {
    constexpr const char* noTime = "the calendar cannot give a time of today";
    const Instant opening = orFatal(calendar.timeOnDay(now, 9h), noTime);
    const Instant closing = orFatal(calendar.timeOnDay(now, 16h), noTime);
    return opening <= now && now <= closing;
}

}  // namespace

PWProvider::PWProvider(const platform::Runtime& runtime)
    : runtime_(runtime),
      network_(std::make_shared<NetworkManager>(runtime)),
      pwViewModel_(std::make_shared<PWViewModel>(runtime, *network_)) {}

PWTimelineEntry PWProvider::placeholder(const platform::TimelineProviderContext&) {
    const auto placeholder =
        std::make_shared<PWTimelineEntry>(PWTimelineEntry(runtime_, runtime_.now(), {}, PWAPIError::failed));
    // A fetch that finds nobody signed in answers before it returns, on this thread. An answer from the
    // service, however quick, is not for the placeholder.
    pwViewModel_->fetch([placeholder, caller = std::this_thread::get_id()](PWTimelineEntry entry) {
        if (std::this_thread::get_id() == caller) *placeholder = std::move(entry);
    });
    return *placeholder;
}

void PWProvider::getSnapshot(const platform::TimelineProviderContext&,
                             std::function<void(PWTimelineEntry)> completion) {
    pwViewModel_->fetch(std::move(completion));
}

void PWProvider::getTimeline(const platform::TimelineProviderContext&,
                             std::function<void(Timeline<PWTimelineEntry>)> completion) {
    const Instant now = runtime_.now();
    const auto fetchWithPolicy = [this](TimelineReloadPolicy policy, auto done) {
        pwViewModel_->fetch([policy, done = std::move(done)](PWTimelineEntry entry) {
            done(Timeline<PWTimelineEntry>{{std::move(entry)}, policy});
        });
    };
    if (isInRefreshWindow(runtime_.calendar(), now)) {
        const Instant reload = orFatal(runtime_.calendar().dateByAddingSeconds(30, now),
                                       "the calendar cannot add 30 seconds to now");
        fetchWithPolicy(TimelineReloadPolicy::after(reload), std::move(completion));
        return;
    }
    if (auto rows = pwViewModel_->loadRows()) {
        completion({{PWTimelineEntry(runtime_, now, std::move(*rows), PWAPIError::success)},
                    TimelineReloadPolicy::atEnd()});
        return;
    }
    fetchWithPolicy(TimelineReloadPolicy::atEnd(), std::move(completion));
}

}  // namespace extension
