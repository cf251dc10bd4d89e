// What the page is shown: widgets as they stand, as they would be, and through a day.

#include <nlohmann/json.hpp>
#include "host/home/home_screen.h"
#include "host/home/page_answers.h"
#include "host/schedule/day_strip.h"

namespace host {

namespace {

using nlohmann::ordered_json;
using platform::Result;
using platform::WidgetFamily;

constexpr std::chrono::seconds dayLimit{20};

}  // namespace

Result<std::string> HomeScreen::picture(int id, int scale) {
    const std::optional<WidgetState> state = schedule_->state(id);
    if (!state || !state->picture) return refusal("there is no picture yet");
    return renderer_.png(state->picture->widget, scale);
}

Result<std::string> HomeScreen::preview(const std::string& kind, WidgetFamily family, EntryRequest request,
                                        int scale) {
    const bool isPlaceholder = request == EntryRequest::placeholder;
    const auto answer = extension_->ask(
        {.kind = kind, .family = family, .request = request, .isPreview = true, .wantsViews = true},
        answerLimit(request));
    if (!answer) return tl::unexpected(answer.error());
    if (answer->entries.empty() || !answer->entries.front().view) return refusal("there is nothing to draw");
    return renderer_.png({*answer->entries.front().view, kind, family, isPlaceholder}, scale);
}

std::string HomeScreen::dayText() {
    const auto limit = std::chrono::steady_clock::now() + dayLimit;
    const std::lock_guard one(dayMutex_);
    const auto rows = lookThroughDay(*dayExtension_, gallery_, clock_.now(), runtime_->calendar(), limit);
    dayExtension_->end();
    std::vector<std::string> pictures;
    ordered_json list = ordered_json::array();
    for (const DayRow& row : rows) {
        ordered_json looks = ordered_json::array();
        for (const DayLook& look : row.looks) {
            looks.push_back({{"from", platform::formatInstant(look.from)},
                             {"cause", look.cause},
                             {"picture", pictures.size()}});
            pictures.push_back(renderer_.png(look.widget, 1).value_or(""));
        }
        list.push_back({{"displayName", displayName(row.kind)},
                        {"family", platform::description(row.family)},
                        {"questions", row.questions},
                        {"error", row.error},
                        {"looks", looks}});
    }
    const std::lock_guard lock(mutex_);
    dayPictures_ = std::move(pictures);
    return dumped(list);
}

std::optional<std::string> HomeScreen::dayPicture(std::size_t number) const {
    const std::lock_guard lock(mutex_);
    if (number >= dayPictures_.size()) return std::nullopt;
    return dayPictures_[number];
}

}  // namespace host
