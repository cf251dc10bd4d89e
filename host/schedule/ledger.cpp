#include "host/schedule/ledger.h"
#include <algorithm>
#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace host {
namespace {

std::string_view description(LedgerEntry::Result result) {
    static constexpr std::array names{"held", "running", "shown", "unchanged", "dropped", "failed"};
    return names.at(static_cast<std::size_t>(result));
}

}  // namespace

std::uint64_t Ledger::add(LedgerEntry entry) {
    const std::lock_guard lock(mutex_);
    entry.number = ++last_;
    entries_.push_back(std::move(entry));
    if (entries_.size() > longest) entries_.pop_front();
    return last_;
}

void Ledger::finish(std::uint64_t number, LedgerEntry::Result result, std::string reason, double durationMs,
                    long peakRssKiB) {
    const std::lock_guard lock(mutex_);
    const auto found = std::ranges::find(entries_, number, &LedgerEntry::number);
    if (found == entries_.end()) return;
    found->result = result;
    if (!reason.empty() && !found->reason.empty()) reason += "; " + found->reason;
    if (!reason.empty()) found->reason = std::move(reason);
    found->durationMs = durationMs;
    found->peakRssKiB = peakRssKiB;
}

std::vector<LedgerEntry> Ledger::entries(std::uint64_t number, std::string_view kind) const {
    const std::lock_guard lock(mutex_);
    std::vector<LedgerEntry> chosen;
    for (const LedgerEntry& entry : entries_) {
        if (entry.number > number && (kind.empty() || entry.kind == kind)) chosen.push_back(entry);
    }
    return chosen;
}

nlohmann::ordered_json ledgerJson(const LedgerEntry& entry) {
    return {{"number", entry.number},
            {"widget", entry.widget},
            {"kind", entry.kind},
            {"family", platform::description(entry.family)},
            {"asker", description(entry.requester)},
            {"due", platform::formatInstant(entry.due)},
            {"decided", platform::formatInstant(entry.decided)},
            {"result", description(entry.result)},
            {"reason", entry.reason},
            {"durationMs", entry.durationMs},
            {"peakRssKiB", entry.peakRssKiB}};
}

std::string ledgerLine(const LedgerEntry& entry) {
    std::string line = platform::formatInstant(entry.decided) + "  " + entry.kind + " " +
                       std::string(platform::description(entry.family)) + "  asked by " +
                       std::string(description(entry.requester)) + " for " +
                       platform::formatInstant(entry.due) + ": " + std::string(description(entry.result));
    if (!entry.reason.empty()) line += " (" + entry.reason + ")";
    if (entry.durationMs > 0.0) {
        char figures[64];
        std::snprintf(figures, sizeof figures, ", %.0f ms, peak %.1f MB", entry.durationMs,
                      static_cast<double>(entry.peakRssKiB) / 1024.0);
        line += figures;
    }
    return line;
}

}  // namespace host
