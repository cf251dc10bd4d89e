#pragma once

// What the demo service trades: instruments with names, and prices that move with the clock.

#include <string>
#include <string_view>
#include <vector>
#include "platform/base/clock.h"

namespace demo {

/// One thing that can be chosen, in the fields of the phone app's records.
struct Instrument {
    /// "indices", "stock", "future" or "crypto".
    std::string_view type;
    std::string_view id;
    std::string_view title;
    std::string_view exchange;
    std::string_view symbol;
    std::string_view priceIdentifier;
    double basePrice = 0.0;
    /// How far a price strays in a day, as a fraction of it.
    double liveliness = 0.01;
    /// Of futures: "FUTIDX" or "FUTSTK", and the underlying's identifier.
    std::string_view instrument = {};
    std::string_view underlying = {};
};

const std::vector<Instrument>& catalogue();

/// The instrument of that price identifier. Whatever is asked for is traded: an identifier that is not
/// in the catalogue gets a price that follows from its letters.
Instrument instrumentFor(std::string_view priceIdentifier);

struct Price {
    double current = 0.0;
    /// Since the day's beginning in India.
    double change = 0.0;
    double percentChange = 0.0;
};

/// A function of its arguments alone. Never below a hundredth of the base price.
Price priceAt(const Instrument& instrument, platform::Instant moment);

/// The moment as a clock in India shows it: "22 Nov, 15:30:05".
std::string displayTime(platform::Instant moment);

/// 1234567.891 as "12,34,567.89".
std::string indianAmount(double amount);

/// A plain decimal with two digits behind the point.
std::string twoDecimals(double number);

}  // namespace demo
