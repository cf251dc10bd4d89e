#pragma once

// What the demo service trades: instruments with names, and prices that move with the clock.

#include <string>
#include <string_view>
#include <vector>
#include "platform/base/clock.h"

namespace demo {

/// Something that a user can choose, with the fields of the phone app's records.
struct Instrument {
    /// "indices", "stock", "future" or "crypto".
    std::string_view type;
    std::string_view id;
    std::string_view title;
    std::string_view exchange;
    std::string_view symbol;
    std::string_view priceIdentifier;
    double basePrice = 0.0;
    /// How far the price moves in a day, as a fraction of it.
    double liveliness = 0.01;
    /// Only for futures: "FUTIDX" or "FUTSTK", and the underlying's identifier.
    std::string_view instrument = {};
    std::string_view underlying = {};
};

const std::vector<Instrument>& catalogue();

/// The instrument with that price identifier. An identifier that is not in the catalogue gets a price that
/// depends on its letters.
Instrument instrumentFor(std::string_view priceIdentifier);

struct Price {
    double current = 0.0;
    /// Since midnight in India.
    double change = 0.0;
    double percentChange = 0.0;
};

/// Depends only on its arguments. Never below a hundredth of the base price.
Price priceAt(const Instrument& instrument, platform::Instant moment);

/// The moment as a clock in India shows it: "22 Nov, 15:30:05".
std::string displayTime(platform::Instant moment);

/// 1234567.891 as "12,34,567.89".
std::string indianAmount(double amount);

/// A decimal number with two digits after the point.
std::string twoDecimals(double number);

/// "1" for a gain, "-1" for a loss, otherwise "0".
inline std::string direction(double change) { return change > 0 ? "1" : change < 0 ? "-1" : "0"; }

}  // namespace demo
