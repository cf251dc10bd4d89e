#pragma once

// Decimal numbers as the platform's number formatter writes them.

#include <memory>
#include <string>
#include <string_view>
#include "platform/base/locale.h"

namespace platform {

/// Two decimals, ties to even on the shortest decimal text of the double, "," between groups and
/// "." before the decimals; groups follow the locale, digits are always 0 to 9. Built once for a
/// locale (a few milliseconds), then any thread may use it.
class NumberFormatter {
public:
    explicit NumberFormatter(const Locale& locale);
    ~NumberFormatter();

    /// Empty when the number is not finite or the formatter fails.
    std::string twoDecimals(double value) const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

/// Reads a text that is a decimal number as a whole ("-12.5", "+5", "1e3", ".5", "5."): no blanks, no
/// groups, no hexadecimal, no "inf" or "nan". Overflow gives nothing; underflow gives zero.
bool parseDecimal(std::string_view text, double& value);

}  // namespace platform
