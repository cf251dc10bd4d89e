#pragma once

// What became of every wish for a reload, and why.

#include <cstdint>
#include <deque>
#include <mutex>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>
#include "host/schedule/reload_plan.h"
#include "platform/view/screen.h"

namespace host {

struct LedgerEntry {
    enum class Result { held, running, shown, unchanged, dropped, failed };

    std::uint64_t number = 0;
    int widget = 0;
    std::string kind;
    platform::WidgetFamily family = platform::WidgetFamily::systemSmall;
    Requester requester = Requester::policy;
    /// When it was asked for, and when that was decided, on the widgets' clock.
    platform::Instant due;
    platform::Instant decided;
    Result result = Result::running;
    /// What went wrong, and why it was held; empty when there is nothing to say.
    std::string reason;
    double durationMs = 0.0;
    long peakRssKiB = 0;
};

/// The latest two thousand, oldest first. Any thread.
class Ledger {
public:
    /// Answers the entry's number, which counts from 1.
    std::uint64_t add(LedgerEntry entry);
    /// Tells how the reload of that number ended, and what went wrong; one that has been forgotten stays so.
    void finish(std::uint64_t number, LedgerEntry::Result result, std::string reason, double durationMs,
                long peakRssKiB);
    /// Those after `number`, of all kinds when `kind` is empty.
    std::vector<LedgerEntry> entries(std::uint64_t number = 0, std::string_view kind = {}) const;

private:
    static constexpr std::size_t longest = 2000;

    mutable std::mutex mutex_;
    std::deque<LedgerEntry> entries_;
    std::uint64_t last_ = 0;
};

nlohmann::ordered_json ledgerJson(const LedgerEntry& entry);
/// One line for people.
std::string ledgerLine(const LedgerEntry& entry);

}  // namespace host
