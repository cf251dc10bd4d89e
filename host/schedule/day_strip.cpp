#include "host/schedule/day_strip.h"
#include <algorithm>
#include <map>
#include "companion/extension_facts.h"
#include "host/schedule/reload_plan.h"

namespace host {
namespace {

using platform::Instant;
using namespace std::chrono_literals;

/// The first moments at which something is another than just before.
std::map<Instant, std::string> changesOf(Instant start, Instant end, const platform::Calendar& calendar) {
    const platform::Calendar india({"Asia/Kolkata"});
    std::map<Instant, std::string> changes;
    const auto add = [&](const platform::Calendar& zone, std::chrono::seconds time, std::string cause) {
        // A day there may begin on the day before ours and end on the day after it.
        for (const auto day : {start, end}) {
            const std::optional<Instant> moment = zone.timeOnDay(day, time);
            if (moment && *moment > start && *moment < end) changes.emplace(*moment, cause);
        }
    };
    add(india, companion::dayBegins, "theme");
    add(india, companion::dayEnds + 1s, "theme");
    add(calendar, companion::marketOpens, "window");
    add(calendar, companion::marketCloses + 1s, "window");
    return changes;
}

class Row {
public:
    using SteadyTime = std::chrono::steady_clock::time_point;

    Row(ExtensionProcess& extension, DayRow& row, SteadyTime end)
        : extension_(extension), row_(row), end_(end) {}

    void ask(Instant moment, const std::string& cause) {
        if (restOfTime() <= 0ms) {
            row_.error = tooSlow;
            return;
        }
        const Moment now = momentAt(moment);
        // A phone would not ask at a change; that we do must cost the row no budget.
        if (cause != "policy") plan_.ask(Requester::clock, now);
        plan_.start(now);
        ++row_.questions;
        static_cast<void>(extension_.setClock(moment, 0.0));
        const auto answer = extension_.ask(
            {.kind = row_.kind, .family = row_.family, .wantsViews = true},
            std::min<std::chrono::milliseconds>(restOfTime(), answerLimit(EntryRequest::timeline)));
        if (!answer || answer->entries.empty() || !answer->entries.front().view) {
            row_.error = restOfTime() <= 0ms ? tooSlow
                         : answer            ? "the timeline has no entry"
                                             : answer.error().message;
            return;
        }
        const auto last = std::ranges::max(answer->entries, {}, &AnsweredEntry::date).date;
        plan_.answered(answer->policy.value_or(platform::TimelineReloadPolicy::atEnd()),
                       answer->entries.size(), last, now);
        for (const AnsweredEntry& entry : answer->entries) add(entry, std::max(entry.date, moment), cause);
    }

    std::optional<Instant> next(Instant now) const {
        const std::optional<NextReload> next = plan_.next(momentAt(now));
        return next ? std::optional(std::max(next->at.shown, now + 1s)) : std::nullopt;
    }

private:
    static constexpr const char* tooSlow = "the answers come too slowly for a whole day";

    std::chrono::milliseconds restOfTime() const {
        return std::chrono::ceil<std::chrono::milliseconds>(end_ - std::chrono::steady_clock::now());
    }

    static Moment momentAt(Instant moment) { return {moment, SteadyTime()}; }

    void add(const AnsweredEntry& entry, Instant from, const std::string& cause) {
        if (!entry.view || visible_ == entry.view) return;
        visible_ = entry.view;
        row_.looks.push_back({from, cause, {*entry.view, row_.kind, row_.family, false}});
    }

    ExtensionProcess& extension_;
    DayRow& row_;
    SteadyTime end_;
    ReloadPlan plan_{ReloadMode::phone};
    std::optional<platform::View> visible_;
};

}  // namespace

std::vector<DayRow> lookThroughDay(ExtensionProcess& extension, const std::vector<WidgetListing>& gallery,
                                   Instant day, const platform::Calendar& calendar,
                                   std::chrono::steady_clock::time_point limit) {
    const Instant start = calendar.startOfDay(day).value_or(std::chrono::floor<std::chrono::days>(day));
    const Instant end = calendar.startOfDay(start + 36h).value_or(start + 24h);
    std::vector<DayRow> rows;
    for (const WidgetListing& widget : gallery) {
        for (const platform::WidgetFamily family : widget.families) {
            DayRow& row =
                rows.emplace_back(DayRow{.kind = widget.kind, .family = family, .looks = {}, .error = {}});
            Row requester(extension, row, limit);
            auto changes = changesOf(start, end, calendar);
            Instant now = start;
            std::string cause = "policy";
            while (now < end && row.error.empty()) {
                requester.ask(now, cause);
                const std::optional<Instant> reload = requester.next(now);
                cause = "policy";
                now = reload.value_or(end);
                if (!changes.empty() && changes.begin()->first <= now) {
                    now = changes.begin()->first;
                    cause = changes.begin()->second;
                    changes.erase(changes.begin());
                }
            }
        }
    }
    return rows;
}

}  // namespace host
