#include "number_range.h"

#include "study/describe/text_table.h"
#include "study/table/csv_cell.h"

#include <cmath>
#include <limits>
#include <string>

namespace cli {
namespace {

/// The number of a text; NaN without one.
double ToNumber(const std::string& text) {
  const auto number = corvath::study::ReadNumber(text);
  return number.kind == corvath::study::CsvNumber::Kind::kNumber
             ? number.value
             : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace

CLI::Validator WholeNumber(std::int64_t lowest, std::int64_t highest) {
  return CLI::Validator(
      [lowest, highest](std::string& text) {
        const double number = ToNumber(text);
        if (!(number >= static_cast<double>(lowest) && number <= static_cast<double>(highest)) ||
            number != std::floor(number))
          return corvath::study::Quoted(text) + " is no whole number from " +
                 std::to_string(lowest) + " to " + std::to_string(highest);
        text = std::to_string(static_cast<std::int64_t>(number));
        return std::string();
      },
      "");
}

CLI::Validator Number(double lowest, double highest) {
  return CLI::Validator(
      [lowest, highest](std::string& text) {
        const double number = ToNumber(text);
        if (number >= lowest && number <= highest) return std::string();
        return corvath::study::Quoted(text) + " is no number from " +
               corvath::study::Short(lowest) + " to " + corvath::study::Short(highest);
      },
      "");
}

CLI::Validator Seed() {
  return WholeNumber(0, std::numeric_limits<std::uint32_t>::max());
}

}  // namespace cli
