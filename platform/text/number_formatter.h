#pragma once

// Decimal numbers as the platform's number formatter writes them.

#include <memory>
#include <string>
#include <string_view>
#include "platform/base/locale.h"

namespace platform {

/// Two decimals, ties to even on the shortest decimal text of the double, "," between groups and
/// "." before the decimals; the grouping is the locale's, the digits are always 0 to 9. Built once for a
/// locale (a few milliseconds), then any thread may use it.
class NumberFormatter {
public:
    explicit NumberFormatter(const Locale& locale);
    ~NumberFormatter();
    NumberFormatter(const NumberFormatter&) = delete;
    NumberFormatter& operator=(const NumberFormatter&) = delete;

    /// Empty for what is not finite, or when the formatter gives nothing.
    std::string twoDecimals(double value) const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

/// Reads a text that is wholly a decimal number ("-12.5", "+5", "1e3", ".5", "5."): no blanks, no
/// groups, no hexadecimal, no "inf" or "nan". Overflow is nothing; underflow is zero.
bool parseDecimal(std::string_view text, double& value);

}  // namespace platform
