// What other processes ask.

#include <algorithm>
#include <nlohmann/json.hpp>
#include "host/home/home_screen.h"

namespace host {

namespace {

std::string latestDecisions(const Ledger& ledger, std::string_view kind) {
    constexpr std::size_t mostLines = 20;
    const std::vector<LedgerEntry> entries = ledger.entries(0, kind);
    std::string lines;
    const std::size_t first = entries.size() > mostLines ? entries.size() - mostLines : 0;
    for (std::size_t i = first; i < entries.size(); ++i) lines += ledgerLine(entries[i]) + "\n";
    return lines;
}

}  // namespace

std::string HomeScreen::answerProcess(std::string_view question) {
    if (question == "placed") {
        std::string answer = "ok\n";
        const std::lock_guard lock(mutex_);
        for (const Placement& placement : placements_)
            answer += placement.kind + " " + std::string(platform::description(placement.family)) + "\n";
        return answer;
    }
    if (question == "reload" || question.starts_with("reload ")) {
        noticeUser();
        schedule_->reload(question == "reload" ? std::nullopt : std::optional(question.substr(7)),
                          Requester::app);
        changed();
        return "ok\n";
    }
    if (question.starts_with("user ")) {
        const std::string_view name = question.substr(5);
        const auto done = setUser({{"user", name == "none" ? "" : name}});
        changed();
        return done ? "ok\n" : "error\n" + done.error().message;
    }
    if (question.starts_with("why ")) {
        const std::string_view kind = question.substr(4);
        if (std::ranges::find(gallery_, kind, &WidgetListing::kind) == gallery_.end())
            return "error\nthere is no such widget";
        return "ok\n" + latestDecisions(ledger_, kind);
    }
    return "error\nthe question makes no sense";
}

}  // namespace host
