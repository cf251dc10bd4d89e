#include "extension/widgets/portfolio/timeline/pw_provider.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include "extension/app/settings/reload_times.h"
#include "extension/app/settings/store_keys.h"
#include "extension/widgets/portfolio/model/portfolio_data_model.h"
#include "platform/base/diagnostics.h"
#include "platform/json/json_coding.h"

namespace extension {
namespace {

using platform::Instant;
using platform::Result;
using platform::Timeline;
using platform::TimelineReloadPolicy;

/// The text under `key` as it was stored; a number does not count.
std::optional<std::string> storedText(const platform::UserDefaults& defaults, std::string_view key) {
    const auto value = defaults.object(key);
    if (!value || !*value || (*value)->text() == nullptr) return std::nullopt;
    return *(*value)->text();
}

bool hasPortfolio(const PortfolioDataModel& portfolio) {
    if (!portfolio.portfoliosummary || !portfolio.portfoliosummary->networthDetails) return false;
    // Only exactly this text means no investment: "0.0" is one.
    const auto& investments = portfolio.portfoliosummary->networthDetails->investments;
    return investments && !investments->empty() && *investments != "0";
}

/// Whether the market moves now, so that a request is worth it.
bool isInRefreshWindow(const platform::Calendar& calendar, Instant now) {
    const auto opening = calendar.timeOnDay(now, marketOpens);
    const auto closing = calendar.timeOnDay(now, marketCloses);
    if (!opening || !closing) platform::fatalError("the calendar cannot give 09:00 and 16:00 of today");
    return *opening <= now && now <= *closing;
}

}  // namespace

std::optional<PWViewModel::Session> PWViewModel::session() const {
    const auto defaults = sharedDefaults(runtime_);
    if (!defaults) return std::nullopt;
    auto token = storedText(**defaults, keys::token);
    auto userId = storedText(**defaults, keys::userId);
    auto portfolio = storedText(**defaults, keys::userPortfolio);
    if (!token || token->empty() || !userId || userId->empty() || !portfolio) return std::nullopt;
    return Session{std::move(*token), std::move(*userId), std::move(*portfolio)};
}

std::string PWViewModel::requestAddress(const Session& session) const {
    // The service reads these values as they stand: nothing is encoded.
    const auto seconds = std::chrono::floor<std::chrono::seconds>(runtime_.now().time_since_epoch());
    return session.portfolio + "&ctype=2&uname=" + session.userId + "&token=" + session.token +
           "&test=false&ts=" + std::to_string(seconds.count()) + "&t_device=iphone&t_app=BL&t_version=193";
}

PWTimelineEntry PWViewModel::entry(PWAPIError state, std::vector<PortfolioWidgetVM> rows) const {
    return {runtime_, runtime_.now(), std::move(rows), state};
}

PWTimelineEntry PWViewModel::entryFor(std::string_view body, const std::string& userId) const {
    const Result<PortfolioDataModel> portfolio = platform::decodedJSON<PortfolioDataModel>(body);
    if (!portfolio) {
        runtime_.log().write(portfolio.error().message);
        return entry(PWAPIError::failed);
    }
    if (!hasPortfolio(*portfolio)) return entry(PWAPIError::noPortfolio);
    auto rows = makeRows(*portfolio->portfoliosummary->networthDetails, runtime_.ids());
    // Rows that were asked for before a sign-out must not outlive it.
    if (const auto current = session(); current && current->userId == userId) {
        saveRows(rows);
    } else {
        runtime_.log().write("Portfolio array not saved: its user is not signed in any more.");
    }
    return entry(PWAPIError::success, std::move(rows));
}

bool PWViewModel::fetch(Completion completion) {
    const auto asked = session();
    if (!asked) {
        completion(entry(PWAPIError::nonLogin));
        return false;
    }
    return network_.sendRequest(requestAddress(*asked), RequestMethod::get, std::nullopt,
                                [weak = weak_from_this(), &runtime = runtime_, userId = asked->userId,
                                 completion = std::move(completion)](Result<platform::Bytes> answer) {
                                    const auto viewModel = weak.lock();
                                    if (!viewModel || !answer) {
                                        completion({runtime, runtime.now(), {}, PWAPIError::failed});
                                        return;
                                    }
                                    completion(viewModel->entryFor(answer->view(), userId));
                                });
}

void PWViewModel::saveRows(const std::vector<PortfolioWidgetVM>& rows) const {
    const Result<void> saved = encodedRows(rows).and_then([&](const std::string& json) {
        return sharedDefaults(runtime_).and_then(
            [&](const auto& defaults) { return defaults->set(keys::portfolioArray, platform::Bytes(json)); });
    });
    runtime_.log().write(saved ? "Portfolio array saved successfully."
                               : "Failed to save portfolio array: " + saved.error().message);
}

std::optional<std::vector<PortfolioWidgetVM>> PWViewModel::loadRows() const {
    const auto defaults = sharedDefaults(runtime_);
    const auto value =
        defaults ? (*defaults)->object(keys::portfolioArray) : tl::unexpected(defaults.error());
    if (!value || !*value || (*value)->data() == nullptr) {
        runtime_.log().write("No portfolio array found.");
        return std::nullopt;
    }
    auto rows = decodeRows((*value)->data()->view());
    if (!rows) {
        runtime_.log().write("Failed to decode portfolio array: " + rows.error().message);
        return std::nullopt;
    }
    return std::move(*rows);
}

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
