#include "study/table/date_text.h"

#include "study/table/csv_cell.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace corvath::study {
namespace {

/// Reads digits and marks from the front of a text.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  bool IsAtEnd() const { return text_.empty(); }
  bool Take(char c) {
    if (text_.empty() || text_.front() != c) return false;
    text_.remove_prefix(1);
    return true;
  }
  /// The number of the digits ahead; at least `least`, at most `most` of them.
  std::optional<int> TakeNumber(std::size_t least, std::size_t most) {
    const std::size_t digits = CountDigits();
    if (digits < least || digits > most) return std::nullopt;
    int value = 0;
    std::from_chars(text_.data(), text_.data() + digits, value);
    text_.remove_prefix(digits);
    return value;
  }
  std::size_t CountDigits() const {
    return std::min(text_.find_first_not_of("0123456789"), text_.size());
  }
  /// The digits behind a decimal mark, as a fraction.
  std::optional<double> TakeFraction() {
    const std::size_t digits = CountDigits();
    if (digits == 0 || digits > 9) return std::nullopt;
    const double value = *TakeNumber(1, 9);
    return value / std::pow(10.0, static_cast<double>(digits));
  }

 private:
  std::string_view text_;
};

bool IsLeapYear(int year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

/// Days since 1970-01-01 in the Gregorian calendar; NaN if there is no such day.
double CountDays(int year, int month, int day) {
  constexpr int kDaysBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  if (month < 1 || month > 12 || day < 1 || year < 1) return kNaN;
  const int leap = IsLeapYear(year) ? 1 : 0;
  if (day > kDaysBefore[month] - kDaysBefore[month - 1] + (month == 2 ? leap : 0)) return kNaN;
  const int before = year - 1;
  const int days = 365 * before + before / 4 - before / 100 + before / 400 +
                   kDaysBefore[month - 1] + (month > 2 ? leap : 0) + day - 1;
  constexpr int kOrigin = 719162;  // of 1970-01-01 by the same count
  return days - kOrigin;
}

/// The time behind a date as a part of a day; nothing if what follows is no time.
std::optional<double> ReadTime(Scanner& scanner) {
  if (scanner.IsAtEnd()) return 0.0;
  if (!scanner.Take('T') && !scanner.Take(' ')) return std::nullopt;
  const auto hour = scanner.TakeNumber(1, 2);
  if (!hour || !scanner.Take(':')) return std::nullopt;
  const auto minute = scanner.TakeNumber(2, 2);
  if (!minute) return std::nullopt;
  double seconds = 0.0;
  if (scanner.Take(':')) {
    const auto whole = scanner.TakeNumber(2, 2);
    if (!whole || *whole > 59) return std::nullopt;
    seconds = *whole;
    if (scanner.Take('.') || scanner.Take(',')) {
      const auto fraction = scanner.TakeFraction();
      if (!fraction) return std::nullopt;
      seconds += *fraction;
    }
  }
  scanner.Take('Z');
  if (!scanner.IsAtEnd() || *hour > 23 || *minute > 59) return std::nullopt;
  return (*hour * 3600.0 + *minute * 60.0 + seconds) / 86400.0;
}

std::optional<Date> Finish(double days, std::optional<double> month_first, Scanner& scanner) {
  const auto time = ReadTime(scanner);
  if (!time) return std::nullopt;
  if (std::isnan(days) && !(month_first && !std::isnan(*month_first))) return std::nullopt;
  Date date;
  date.days = days + *time;
  if (month_first) date.month_first = *month_first + *time;
  return date;
}

}  // namespace

std::optional<Date> ReadDate(std::string_view cell) {
  Scanner scanner(Trimmed(cell));
  const std::size_t digits = scanner.CountDigits();
  if (digits == 8) {
    const int number = *scanner.TakeNumber(8, 8);
    return Finish(CountDays(number / 10000, number / 100 % 100, number % 100), std::nullopt,
                  scanner);
  }
  if (digits == 4) {
    const int year = *scanner.TakeNumber(4, 4);
    const char mark = scanner.Take('-') ? '-' : '/';
    if (mark == '/' && !scanner.Take('/')) return std::nullopt;
    const auto month = scanner.TakeNumber(1, 2);
    if (!month || !scanner.Take(mark)) return std::nullopt;
    const auto day = scanner.TakeNumber(1, 2);
    if (!day) return std::nullopt;
    return Finish(CountDays(year, *month, *day), std::nullopt, scanner);
  }
  const auto first = scanner.TakeNumber(1, 2);
  if (!first) return std::nullopt;
  const char mark = scanner.Take('.') ? '.' : '/';
  if (mark == '/' && !scanner.Take('/')) return std::nullopt;
  const auto second = scanner.TakeNumber(1, 2);
  if (!second || !scanner.Take(mark)) return std::nullopt;
  const auto year = scanner.TakeNumber(4, 4);
  if (!year) return std::nullopt;
  std::optional<double> month_first;
  if (mark == '/' && *first != *second) month_first = CountDays(*year, *first, *second);
  return Finish(CountDays(*year, *second, *first), month_first, scanner);
}

std::string DateRefusalText(std::string_view cell) {
  return (Trimmed(cell).empty() ? "empty, not" : Quoted(cell) + " is not") +
         std::string(" a date such as 2024-01-31, 31.01.2024 or 2024-01-31 13:45");
}

}  // namespace corvath::study
