#include "host/home/host_questions.h"
#include "host/home/page_actions.h"
#include "platform/wire/host_channel.h"

namespace host {

namespace {

using platform::Result;

constexpr std::string_view whyQuestion = "why ";
constexpr std::string_view userQuestion = "user ";
/// Reading the store and its transactions take longer than an answer from memory.
constexpr std::chrono::seconds patience{5};

Result<std::string> latestDecisions(const HomeScreen& home, std::string_view kind) {
    constexpr std::size_t mostLines = 20;
    TRY(checkKind(home.gallery(), kind));
    const std::vector<LedgerEntry> entries = home.ledger().entries(0, kind);
    std::string lines;
    const std::size_t first = entries.size() > mostLines ? entries.size() - mostLines : 0;
    for (std::size_t i = first; i < entries.size(); ++i) lines += ledgerLine(entries[i]) + "\n";
    return lines;
}

}  // namespace

Result<std::string> answerQuestion(HomeScreen& home, std::string_view question) {
    if (question == platform::placedQuestion) {
        std::vector<platform::PlacedWidget> placed;
        for (const Placement& each : home.placements()) placed.push_back({each.kind, each.family});
        return platform::placedText(placed);
    }
    if (question == platform::reloadAllQuestion) {
        home.reloadForApp(std::nullopt);
        return "";
    }
    if (question.starts_with(platform::reloadQuestion)) {
        home.reloadForApp(question.substr(platform::reloadQuestion.size()));
        return "";
    }
    if (question.starts_with(whyQuestion)) return latestDecisions(home, question.substr(whyQuestion.size()));
    if (question.starts_with(userQuestion)) {
        const auto done = signIn(home, std::string(question.substr(userQuestion.size())));
        home.changed();
        return done.map([] { return std::string(); });
    }
    return platform::failure("WidgetCenterError", 1, "the home screen does not know this question");
}

bool isHostRunning(const std::filesystem::path& socket) {
    return platform::askHost(socket, platform::placedQuestion, platform::hostExchangeLimit).has_value();
}

Result<std::string> askWhy(const std::filesystem::path& socket, const std::string& kind) {
    return platform::askHost(socket, std::string(whyQuestion) + kind, patience);
}

Result<void> askToSignIn(const std::filesystem::path& socket, const std::string& name) {
    return platform::askHost(socket, std::string(userQuestion) + name, patience).map([](const std::string&) {
    });
}

}  // namespace host
