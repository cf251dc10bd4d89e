#include "tests/simulation/device.h"

#include <malloc.h>

#include <array>
#include <csignal>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <utility>
#include "companion/operations.h"
#include "companion/user_choices.h"
#include "demo/market.h"
#include "host/schedule/timeline_keeper.h"
#include "tests/simulation/faulty_disk.h"
#include "tests/simulation/network.h"
#include "tests/simulation/process.h"

namespace simulation {
namespace {

using namespace std::chrono_literals;
using host::LedgerEntry;
using host::Moment;
using host::ReloadMode;
using host::Requester;
using platform::Instant;
using platform::PropertyList;
using platform::WidgetFamily;

struct Choice {
    const char* kind;
    WidgetFamily family;
};
constexpr std::array choices{
    Choice{"PerchWidget", WidgetFamily::systemSmall},
    Choice{"PerchWidget", WidgetFamily::systemLarge},
    Choice{"NewsWidget", WidgetFamily::systemLarge},
    Choice{"PortfolioWidget", WidgetFamily::systemSmall},
    Choice{"PortfolioWidget", WidgetFamily::systemMedium},
};
constexpr std::array users{"10042", "10043", "10044"};
constexpr std::size_t mostWidgets = 8;
// A wish may have to wait for hung children and for the longest back-off.
constexpr auto longestWait = 20min;

/// What the simulation knows of a widget beside what the keeper says.
struct Watched {
    bool hadContent = false;
    int failures = 0;
    SteadyTime failedAt;
    /// The reload that somebody asked for and that has not begun.
    std::optional<SteadyTime> wish;
    /// What *phone* granted to the timeline since the clock was set.
    std::deque<Instant> grants;
};

class Device {
public:
    Device(std::uint64_t seed, const std::filesystem::path& folder);
    Findings live(int days);

private:
    class Center;

    Instant shown() const {
        return shownStart_ + std::chrono::nanoseconds(static_cast<long long>(
                                 static_cast<double>((executor_.now() - realStart_).count()) * rate_));
    }
    Moment moment() const { return {shown(), executor_.now()}; }
    platform::RuntimeOptions runtimeOptions() const;
    void note(const std::string& text);
    void broken(const std::string& rule);

    // What happens.
    void pump();
    void ask(const host::TimelineQuestion& question);
    void act();
    void changeWeather();
    void calm();
    void place();
    void setClock(Instant instant, double rate);
    void stepClockBack(std::chrono::hours step);
    void setMode(ReloadMode mode);
    void signIn(const char* userId);
    void chooseAssets();
    void wish(int id) {
        if (!widgets_[id].wish) widgets_[id].wish = executor_.now();
    }
    void reload(std::optional<std::string_view> kind, Requester requester);
    void noticeUser();
    std::string storedUser() const;

    // The rules.
    void check();
    void noteFailures();
    void checkLedger();
    void checkStart(const LedgerEntry& entry);
    void checkPicture(const host::WidgetState& state);
    void checkDay(int day);
    void checkEnd();

    Random random_;
    Executor executor_;
    const std::filesystem::path folder_;
    NetworkWeather network_;
    ProcessWeather processWeather_;
    Instant shownStart_;
    SteadyTime realStart_;
    const SteadyTime birth_ = executor_.now();
    double rate_ = 1.0;

    std::unique_ptr<platform::Runtime> phone_;
    std::unique_ptr<companion::PhoneApp> phoneApp_;
    host::Ledger ledger_;
    host::TimelineKeeper keeper_{ledger_, ReloadMode::phone};
    std::unique_ptr<SimulatedProcess> process_;
    bool hasNews_ = true;
    std::uint64_t wakeNumber_ = 0;
    int lastWidget_ = 0;
    std::optional<std::string> knownUser_;

    std::map<int, Watched> widgets_;
    std::set<std::string> allowedUsers_{""};
    std::uint64_t lastEntry_ = 0;
    std::map<std::uint64_t, SteadyTime> running_;
    std::uint64_t marksSeen_ = 0;
    Findings findings_;
    std::deque<std::string> events_;
};

class Device::Center final : public platform::WidgetCenter {
public:
    explicit Center(Device& device) : device_(device) {}
    void reloadTimelines(std::string_view kind) override {
        device_.noticeUser();
        device_.reload(kind, Requester::app);
    }
    void reloadAllTimelines() override {
        device_.noticeUser();
        device_.reload(std::nullopt, Requester::app);
    }
    void getCurrentConfigurations(
        std::function<void(platform::Result<std::vector<platform::PlacedWidget>>)> completion) override {
        std::vector<platform::PlacedWidget> placed;
        for (const auto& state : device_.keeper_.states(device_.moment()))
            placed.push_back({state.kind, state.family});
        completion(placed);
    }

private:
    Device& device_;
};

Device::Device(std::uint64_t seed, const std::filesystem::path& folder)
    : random_(seed), folder_(folder), realStart_(executor_.now()) {
    // Some day of the year, at some time of the day.
    shownStart_ =
        *platform::parseInstant("2026-01-01T00:00:00Z") + std::chrono::seconds(random_.below(31'000'000));
    setDiskFault(DiskFault::none);
    platform::RuntimeOptions options = runtimeOptions();
    options.widgetCenter = std::make_shared<Center>(*this);
    phone_ = std::make_unique<platform::Runtime>(std::move(options));
    phoneApp_ = std::make_unique<companion::PhoneApp>(*phone_);
    process_ = std::make_unique<SimulatedProcess>(executor_, random_, processWeather_, [this] {
        platform::RuntimeOptions child = runtimeOptions();
        child.carrier =
            std::make_shared<SimulatedNetwork>(executor_, random_, network_, [this] { return shown(); });
        return child;
    });
    executor_.whenTimePasses([this] {
        phone_->clock().set(shown(), 0.0);
        process_->setClock(shown());
    });
}

platform::RuntimeOptions Device::runtimeOptions() const {
    platform::RuntimeOptions options{.dataDirectory = folder_,
                                     .now = shown(),
                                     .locale = {"en_IN"},
                                     .timeZone = {"Asia/Kolkata"},
                                     .idSeed = 1};
    options.bundle.entries = {{"ENVIRONMENT", "production"}};
    for (const char* name : {"ProductionAPIHost", "ProductionWebHost"})
        options.bundle.entries[name] = serviceOrigin;
    return options;
}

void Device::note(const std::string& text) {
    const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(executor_.now() - birth_);
    std::string line =
        std::to_string(time.count()) + " ms, shown " + platform::formatInstant(shown()) + ": " + text;
    for (const char letter : line)
        findings_.fingerprint = (findings_.fingerprint ^ static_cast<unsigned char>(letter)) * 1099511628211U;
    events_.push_back(std::move(line));
    if (events_.size() > 60) events_.pop_front();
}

void Device::broken(const std::string& rule) {
    if (!findings_.broken.empty()) return;
    note("BROKEN: " + rule);
    findings_.broken = rule;
    findings_.lastEvents.assign(events_.begin(), events_.end());
}

Findings Device::live(int days) {
    for (int i = 0; i < 4; ++i) place();
    executor_.after(1min, [this] { act(); });
    executor_.after(30min, [this] { changeWeather(); });
    const auto advanceTo = [this](SteadyTime end) {
        bool isRunning = true;
        while (isRunning && findings_.broken.empty()) {
            isRunning = executor_.runNext(end);
            ++findings_.steps;
            if (hasNews_) pump();
        }
    };
    for (int day = 1; day <= days && findings_.broken.empty(); ++day) {
        advanceTo(birth_ + day * 24h);
        checkDay(day);
    }
    if (findings_.broken.empty()) {
        executor_.clear();
        calm();
        process_->kill(SIGKILL);
        setMode(ReloadMode::live);
        setClock(shown(), 1.0);
        advanceTo(executor_.now() + 10min);
        for (auto& [id, widget] : widgets_) wish(id);
        keeper_.reload(std::nullopt, Requester::person, moment());
        hasNews_ = true;
        pump();
        // All is well, so every widget soon has its picture.
        setMode(ReloadMode::phone);
        advanceTo(executor_.now() + 1min);
        checkEnd();
    }
    return findings_;
}

void Device::pump() {
    hasNews_ = false;
    for (;;) {
        host::TimelineKeeper::Steps steps = keeper_.advance(moment());
        for (const host::TimelineQuestion& question : steps.questions) ask(question);
        check();
        if (!steps.questions.empty() || !steps.changed.empty()) continue;
        if (!steps.pause) return;
        executor_.after(*steps.pause, [this, number = ++wakeNumber_] {
            if (number == wakeNumber_) hasNews_ = true;
        });
        return;
    }
}

void Device::ask(const host::TimelineQuestion& question) {
    process_->ask(
        question.question, answerLimit(question.question.request),
        [this, question](platform::Result<host::EntryAnswer> answer) {
            note("widget " + std::to_string(question.widget) + " answered: " +
                 (answer ? std::to_string(answer->entries.size()) + " entries" : answer.error().message));
            keeper_.answered(question.number, std::move(answer), 0, moment());
            noteFailures();
            hasNews_ = true;
        });
}

void Device::calm() {
    network_ = {};
    processWeather_ = {};
    setDiskFault(DiskFault::none);
}

void Device::changeWeather() {
    executor_.after(random_.around(2h), [this] { changeWeather(); });
    calm();
    if (random_.happens(0.5)) return note("calm");
    const auto strength = [this] {
        return random_.happens(0.4) ? static_cast<double>(random_.below(100)) / 100 : 0.0;
    };
    network_ = {.refused = strength(),
                .lost = strength(),
                .late = strength(),
                .wrongStatus = strength(),
                .damaged = strength()};
    processWeather_ = {.damaged = strength() / 4,
                       .doubled = strength(),
                       .lost = strength() / 4,
                       .late = strength() / 2,
                       .slowStart = strength() / 2};
    constexpr std::array disks{DiskFault::none, DiskFault::none, DiskFault::busy, DiskFault::full,
                               DiskFault::unreadable};
    const DiskFault disk = random_.oneOf(disks);
    setDiskFault(disk);
    note("storm, disk " + std::to_string(static_cast<int>(disk)));
}

void Device::act() {
    executor_.after(random_.around(40min), [this] { act(); });
    hasNews_ = true;
    switch (random_.below(15)) {
        case 0: return place();
        case 1: {
            if (widgets_.size() < 2) return;
            const int id = random_.oneOf(widgets_).first;
            note("widget " + std::to_string(id) + " removed");
            widgets_.erase(id);
            return keeper_.remove(id);
        }
        case 2: {
            const int id = random_.oneOf(widgets_).first;
            note("a person reloads widget " + std::to_string(id));
            wish(id);
            return keeper_.reload(id, Requester::person, moment());
        }
        case 3: note("a person reloads everything"); return reload(std::nullopt, Requester::person);
        case 4: return signIn(random_.oneOf(users));
        case 5: return signIn(nullptr);
        case 6: {
            const auto theme = static_cast<std::int64_t>(random_.below(4));
            note("theme " + std::to_string(theme));
            static_cast<void>(phoneApp_->setTheme(theme));
            return;
        }
        case 7: return chooseAssets();
        case 8:
            setMode(ReloadMode::live);
            return executor_.after(random_.around(5min), [this] { setMode(ReloadMode::phone); });
        case 9: {
            constexpr std::array rates{0.0, 1.0, 1.0, 60.0};
            const auto jump = std::chrono::seconds(random_.below(6 * 86400)) - std::chrono::days(3);
            setClock(shown() + jump, random_.oneOf(rates));
            return executor_.after(random_.around(5min), [this] { setClock(shown(), 1.0); });
        }
        case 10: note("killed"); return process_->kill(random_.happens(0.5) ? SIGKILL : SIGSEGV);
        case 14: return stepClockBack(std::chrono::hours(1 + random_.below(72)));
        case 11: note("hung"); return process_->hang();
        case 12: note("grown"); return process_->grow();
        default: note("ended"); return process_->end();
    }
}

void Device::place() {
    if (widgets_.size() >= mostWidgets) return;
    const Choice& choice = random_.oneOf(choices);
    const int id = ++lastWidget_;
    note("widget " + std::to_string(id) + " placed: " + choice.kind);
    wish(id);
    keeper_.place(id, choice.kind, choice.family, moment());
}

void Device::setClock(Instant instant, double rate) {
    shownStart_ = instant;
    realStart_ = executor_.now();
    rate_ = rate;
    note("clock set, rate " + std::to_string(rate));
    phone_->clock().set(shown(), 0.0);
    process_->setClock(shown());
    keeper_.clockSet(rate, moment());
    for (auto& [id, widget] : widgets_) {
        wish(id);
        widget.grants.clear();
    }
    hasNews_ = true;
}

/// As a system's clock is set: nobody tells the home screen.
void Device::stepClockBack(std::chrono::hours step) {
    shownStart_ = shown() - step;
    realStart_ = executor_.now();
    note("the system's clock goes back");
    phone_->clock().set(shown(), 0.0);
    process_->setClock(shown());
    for (auto& [id, widget] : widgets_) {
        wish(id);
        widget.grants.clear();
    }
    hasNews_ = true;
}

void Device::setMode(ReloadMode mode) {
    note("mode " + std::string(description(mode)));
    keeper_.setMode(mode);
    hasNews_ = true;
}

std::string Device::storedUser() const {
    const auto session = companion::session(*phone_);
    return session && *session ? (*session)->userId : "";
}

void Device::signIn(const char* userId) {
    std::optional<companion::Session> session;
    if (userId != nullptr) {
        session = {.token = "t",
                   .userId = userId,
                   .portfolioAddress = std::string(serviceOrigin) + "/portfolioapi/summary?format=json"};
    }
    // An operation that fails may have stored its change or not, and may have told nobody.
    const std::string wanted = userId == nullptr ? "" : userId;
    allowedUsers_.insert(wanted);
    const bool isDone = phoneApp_->signIn(session).has_value();
    note("signed in as \"" + wanted + "\": " + (isDone ? "done" : "failed"));
    if (isDone) allowedUsers_ = {wanted};
}

void Device::chooseAssets() {
    companion::ChosenAssets assets;
    for (const demo::Instrument& each : demo::catalogue()) {
        if (!random_.happens(0.3)) continue;
        PropertyList::Dictionary record{{"title", std::string(each.title)},
                                        {"exchg", std::string(each.exchange)},
                                        {"id", std::string(each.id)},
                                        {"type", std::string(each.type)},
                                        {"symbol", std::string(each.symbol)},
                                        {"link_flag", "1"},
                                        {"priceIdentifier", std::string(each.priceIdentifier)}};
        if (each.type == "stock") record["market"] = "equity";
        (each.type == "indices"  ? assets.indices
         : each.type == "crypto" ? assets.cryptos
                                 : assets.stocks)
            .push_back(record);
    }
    const bool isDone = phoneApp_->chooseAssets(assets).has_value();
    note(std::string("assets chosen: ") + (isDone ? "done" : "failed"));
}

void Device::reload(std::optional<std::string_view> kind, Requester requester) {
    for (const host::WidgetState& state : keeper_.states(moment())) {
        if (!kind || state.kind == *kind) wish(state.id);
    }
    keeper_.reload(kind, requester, moment());
    hasNews_ = true;
}

// As a home screen does it: the pictures of another user go at once.
void Device::noticeUser() {
    const std::string user = storedUser();
    const bool isSame = !knownUser_ || *knownUser_ == user;
    knownUser_ = user;
    if (isSame) return;
    note("the user is now \"" + user + "\"");
    for (const host::WidgetState& state : keeper_.states(moment())) {
        if (state.kind != "PortfolioWidget") continue;
        widgets_[state.id].hadContent = false;
        wish(state.id);
    }
    keeper_.forget("PortfolioWidget", moment());
    hasNews_ = true;
}

/// Right after each answer: the next reload may begin in the same step.
void Device::noteFailures() {
    for (const host::WidgetState& state : keeper_.states(moment())) {
        Watched& widget = widgets_[state.id];
        if (state.failures > widget.failures) widget.failedAt = executor_.now();
        widget.failures = state.failures;
    }
}

void Device::check() {
    checkLedger();
    for (const host::WidgetState& state : keeper_.states(moment())) {
        const Watched& widget = widgets_[state.id];
        checkPicture(state);
        if (widget.wish && executor_.now() - *widget.wish > longestWait)
            broken("widget " + std::to_string(state.id) + " was asked for and never reloaded");
    }
}

void Device::checkLedger() {
    for (const LedgerEntry& entry : ledger_.entries(lastEntry_)) {
        lastEntry_ = entry.number;
        if (entry.result == LedgerEntry::Result::held) continue;
        note("widget " + std::to_string(entry.widget) + " reloads, asked by " +
             std::string(description(entry.requester)));
        running_.emplace(entry.number, executor_.now());
        checkStart(entry);
    }
    if (running_.empty()) return;
    for (const LedgerEntry& entry : ledger_.entries(running_.begin()->first - 1)) {
        if (entry.result != LedgerEntry::Result::running) running_.erase(entry.number);
    }
    if (!running_.empty() && executor_.now() - running_.begin()->second > 40s)
        broken("a reload has no end in the ledger");
}

void Device::checkStart(const LedgerEntry& entry) {
    const auto found = widgets_.find(entry.widget);
    if (found == widgets_.end()) return broken("a widget that is gone was reloaded");
    Watched& widget = found->second;
    if (entry.requester != Requester::policy) {
        if (!widget.wish) broken("a wish was served twice");
        widget.wish.reset();
        return;
    }
    if (widget.failures > 0) {
        const auto pause = std::chrono::seconds(std::min(300, 1 << std::min(widget.failures - 1, 10)));
        if (executor_.now() - widget.failedAt < pause) broken("a failed reload was repeated too early");
        return;
    }
    if (keeper_.mode() == ReloadMode::live) return;
    if (!widget.grants.empty() && entry.decided - widget.grants.back() < 15min)
        broken("two reloads were granted within 15 minutes");
    widget.grants.push_back(entry.decided);
    while (entry.decided - widget.grants.front() >= 24h) widget.grants.pop_front();
    if (widget.grants.size() > 60) broken("more than 60 reloads were granted in a day");
}

void Device::checkPicture(const host::WidgetState& state) {
    Watched& widget = widgets_[state.id];
    const bool hasContent = state.picture && !state.picture->widget.isRedacted;
    if (widget.hadContent && !hasContent) broken("widget " + std::to_string(state.id) + " lost its picture");
    widget.hadContent = hasContent;
    if (!hasContent || state.kind != "PortfolioWidget") return;
    for (const char* user : users) {
        if (state.picture->entryJson.find(markOf(user)) == std::string::npos) continue;
        ++marksSeen_;
        if (!allowedUsers_.contains(user)) broken("a picture shows a user who is gone");
    }
}

void Device::checkDay(int day) {
    if (executor_.waiting() > 200) broken("work piles up");
    const std::size_t bytes = mallinfo2().uordblks;
    findings_.bytesOnLastDay = bytes;
    if (day == 2) findings_.bytesOnDayTwo = bytes;
    if (day > 2 && bytes > findings_.bytesOnDayTwo + (4U << 20)) broken("memory grows");
}

void Device::checkEnd() {
    if (!running_.empty()) broken("a reload never ended");
    if (process_->unanswered() > 0) broken("a question was never answered");
    for (const host::WidgetState& state : keeper_.states(moment())) {
        if (!widgets_[state.id].hadContent)
            broken("widget " + std::to_string(state.id) + " has no picture in the end");
    }
}

}  // namespace

Findings live(std::uint64_t seed, int days, const std::filesystem::path& folder) {
    Device device(seed, folder);
    return device.live(days);
}

}  // namespace simulation
