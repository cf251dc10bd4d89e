#include "demo/market.h"
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>

namespace demo {
namespace {

using std::chrono::seconds;

// India has had one offset and no daylight saving for all dates that matter here.
constexpr seconds indiaOffset{5 * 3600 + 1800};
constexpr seconds day{86400};

std::uint64_t mixed(std::uint64_t value) {
    value += 0x9e3779b97f4a7c15;
    value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9;
    value = (value ^ (value >> 27)) * 0x94d049bb133111eb;
    return value ^ (value >> 31);
}

std::uint64_t hashOf(std::string_view text) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    return hash;
}

/// From -1 to 1, different for every step of every octave.
double jitter(std::uint64_t seed, std::int64_t step) {
    return static_cast<double>(mixed(seed ^ mixed(static_cast<std::uint64_t>(step))) >> 11) / 0x1p52 - 1.0;
}

double smoothNoise(std::uint64_t seed, double position) {
    const double step = std::floor(position);
    const double part = position - step;
    const double weight = part * part * (3.0 - 2.0 * part);
    const auto whole = static_cast<std::int64_t>(step);
    return std::lerp(jitter(seed, whole), jitter(seed, whole + 1), weight);
}

/// A sum of slow and quick waves, about -1 to 1. It looks like a random walk, but any moment can be computed.
double wander(std::uint64_t seed, double secondsSince1970) {
    constexpr struct {
        double period;
        double share;
    } octaves[] = {{400000, 0.9}, {26000, 0.45}, {3700, 0.2}, {490, 0.1}, {61, 0.05}, {7, 0.025}};
    double sum = 0.0;
    for (const auto& [period, share] : octaves)
        sum +=
            share * smoothNoise(mixed(seed + static_cast<std::uint64_t>(period)), secondsSince1970 / period);
    return sum;
}

double priceOf(const Instrument& instrument, seconds moment) {
    const double level =
        1.0 + 2.0 * instrument.liveliness *
                  wander(hashOf(instrument.priceIdentifier), static_cast<double>(moment.count()));
    return instrument.basePrice * std::max(level, 0.01);
}

}  // namespace

const std::vector<Instrument>& catalogue() {
    static const std::vector<Instrument> instruments{
        {"indices", "4", "SENSEX", "bse", "in;SEN", "in;SEN-II", 85231.92, 0.006},
        {"indices", "9", "NIFTY 50", "nse", "in;NSX", "in;NSX-II", 26068.15, 0.006},
        {"indices", "23", "NIFTY BANK", "nse", "in;nbx", "in;nbx-II", 58867.70, 0.008},
        {"indices", "31", "NIFTY IT", "nse", "in;nit", "in;nit-II", 36955.40, 0.010},
        {"indices", "38", "NIFTY MIDCAP 100", "nse", "in;nmc", "in;nmc-II", 60276.85, 0.008},
        {"stock", "KVT", "Kaveri Textiles", "nse", "KVT", "KVT-EQ", 1548.60, 0.015},
        {"stock", "SHP", "Sahyadri Power", "nse", "SHP", "SHP-EQ", 402.15, 0.018},
        {"stock", "MLB", "Malabar Bank", "nse", "MLB", "MLB-EQ", 998.45, 0.012},
        {"stock", "DCM", "Deccan Motors", "bse", "DCM", "DCM-EQ", 3684.20, 0.016},
        {"stock", "NLS", "Nilgiri Software Services", "nse", "NLS", "NLS-EQ", 3149.75, 0.014},
        {"stock", "GDP", "Godavari Pharma", "nse", "GDP", "GDP-EQ", 1782.30, 0.013},
        {"stock", "VDS", "Vindhya Steel", "bse", "VDS", "VDS-EQ", 168.05, 0.020},
        {"future", "F1", "NIFTY 50 Future", "nse", "in;NSX-F1", "in;NSX-F1-FUT", 26142.00, 0.007, "FUTIDX",
         "9"},
        {"future", "F2", "NIFTY BANK Future", "nse", "in;nbx-F1", "in;nbx-F1-FUT", 59011.00, 0.009, "FUTIDX",
         "23"},
        {"future", "F3", "Malabar Bank Future", "nse", "MLB-F1", "MLB-F1-FUT", 1003.10, 0.013, "FUTSTK",
         "MLB"},
        {"crypto", "BTC", "Bitcoin", "", "BTC", "BTC-INR", 7612450.00, 0.030},
        {"crypto", "ETH", "Ether", "", "ETH", "ETH-INR", 248310.00, 0.035},
        {"crypto", "DOGE", "Dogecoin", "", "DOGE", "DOGE-INR", 12.42, 0.050},
    };
    return instruments;
}

Instrument instrumentFor(std::string_view priceIdentifier) {
    const auto known = std::ranges::find(catalogue(), priceIdentifier, &Instrument::priceIdentifier);
    if (known != catalogue().end()) return *known;
    const double price = 20.0 + static_cast<double>(hashOf(priceIdentifier) % 400000) / 100.0;
    return {.type = "stock",
            .id = priceIdentifier.substr(0, priceIdentifier.rfind('-')),
            .title = priceIdentifier,
            .exchange = "nse",
            .symbol = priceIdentifier.substr(0, priceIdentifier.rfind('-')),
            .priceIdentifier = priceIdentifier,
            .basePrice = price,
            .liveliness = 0.015};
}

Price priceAt(const Instrument& instrument, platform::Instant moment) {
    const auto now = std::chrono::floor<seconds>(moment.time_since_epoch());
    const seconds midnight = (now + indiaOffset) / day * day - indiaOffset;
    Price price{.current = priceOf(instrument, now)};
    const double before = priceOf(instrument, midnight);
    price.change = price.current - before;
    price.percentChange = price.change / before * 100.0;
    return price;
}

std::string displayTime(platform::Instant moment) {
    const std::time_t shifted = std::chrono::system_clock::to_time_t(moment + indiaOffset);
    std::tm parts{};
    gmtime_r(&shifted, &parts);
    static constexpr std::array months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%02d %s, %02d:%02d:%02d", parts.tm_mday,
                  months.at(static_cast<std::size_t>(parts.tm_mon)), parts.tm_hour, parts.tm_min,
                  parts.tm_sec);
    return text.data();
}

std::string twoDecimals(double number) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.2f", number);
    return text.data();
}

std::string indianAmount(double amount) {
    std::string text = twoDecimals(std::abs(amount));
    // The last three whole digits form a group, those before them form groups of two.
    for (std::size_t point = text.find('.'), group = 3; point > group; group = 2) {
        point -= group;
        text.insert(point, ",");
    }
    return (amount < 0 ? "-" : "") + text;
}

}  // namespace demo
