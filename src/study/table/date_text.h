#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvath::study {

/// A date as days since 1970-01-01, 0 h; the time of day is their fraction. There are no time zones.
struct Date {
  double days = 0.0;
  /// Of a date with slashes, month/day/year, if that is another day; `days` counts it as
  /// day/month/year. NaN where the one reading or the other is no date.
  std::optional<double> month_first;
};

/// Reads 2024-01-31, 2024/01/31, 20240131, 31.01.2024, 31/01/2024 or 01/31/2024, each with or
/// without a time: 2024-01-31T13:45, 31.01.2024 13:45:10.5. A Z behind it is passed over.
/// Nothing for any other text, years of two digits among them.
std::optional<Date> ReadDate(std::string_view cell);

constexpr const char* kDateOrigin = "1970-01-01";

/// Why a cell is refused where a date is expected.
std::string DateRefusalText(std::string_view cell);

}  // namespace corvath::study
