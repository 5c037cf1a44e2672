#include "calculator/number_table.h"

#include "support/values.h"
#include "variant/value/limits.h"

namespace {

using corvath::calculator::ParseNumberTable;
using corvath::math::Value;
using support::Mat, support::Scalar, support::Vec;

constexpr double kInf = std::numeric_limits<double>::infinity();

Value Parse(const std::string& text, std::uint64_t skipped_lines = 0) {
  return ParseNumberTable(text, skipped_lines);
}

// Other texts stand in texts.txt.
TEST(NumberTable, ReadsBytesThatAreNoText) {
  const Value expected = Mat({{2, 3}, {1, 4}});
  const char* const cases[] = {
      "\xEF\xBB\xBF"
      "2 3\n1 4",  // a byte order mark
      "d\xC3\xA4mpfung \xB0\n2 3\n1 4\n",
      "2\xC3\xA4"
      "3\n1\xB0"
      "4\n",
      "2 3\x01 9\n1 4\n",  // a control character ends the row
  };
  for (const char* text : cases) {
    const Value value = Parse(text);
    EXPECT_TRUE(value == expected) << text << "\n" << support::Text(value);
  }
}

TEST(NumberTable, NaNIsANumberThatAscendsNowhere) {
  EXPECT_TRUE(Parse("nan 1\n2 2\n").IsMatrix());
  EXPECT_TRUE(Parse("1 1\nnan 2\n3 3\n").IsMatrix());
  for (const char* text : {"nan", "-NaN", "nan(0x7)"}) {
    const Value value = Parse(text);
    EXPECT_TRUE(value.IsScalar() && std::isnan(value.GetScalar().real())) << text;
  }
}

TEST(NumberTable, LeavesOutLinesAtTheBegin) {
  const std::string text = "1 2 3\n4\r\n\r5 6\n";
  EXPECT_TRUE(Parse(text, 0) == Vec({1, 2, 3}));
  EXPECT_TRUE(Parse(text, 1) == Scalar(4));
  EXPECT_TRUE(Parse(text, 2) == Vec({5, 6}));  // an empty line in front
  EXPECT_TRUE(Parse(text, 3) == Vec({5, 6}));
  EXPECT_TRUE(Parse(text, 4).IsUninitialized());
  EXPECT_TRUE(Parse(text, std::numeric_limits<std::uint64_t>::max()).IsUninitialized());
}

TEST(NumberTable, LongNumbersSaturate) {
  const std::string digits(400, '7');
  EXPECT_EQ(Parse(digits).GetScalar().real(), kInf);
  EXPECT_EQ(Parse("0." + std::string(400, '0') + "1").GetScalar().real(), 0.0);
}

TEST(NumberTable, TakesAbsurdTexts) {
  constexpr std::size_t kMany = 1000000;
  std::string wide;
  for (std::size_t i = 0; i < kMany; ++i) wide += "7 ";
  EXPECT_EQ(Parse(wide).Size(), kMany);
  EXPECT_EQ(Parse("1 " + wide + "\n2 " + wide + "\n").Size1(), kMany);  // channels
  EXPECT_TRUE(Parse(std::string(kMany, '\0')).IsUninitialized());
  EXPECT_TRUE(Parse(std::string(kMany, '\n')).IsUninitialized());
  EXPECT_TRUE(Parse(std::string(kMany, '-')).IsUninitialized());
  // Each of the parentheses looks for its end.
  std::string open = "1";
  for (std::size_t i = 0; i < kMany; ++i) open += " nan(";
  EXPECT_TRUE(Parse(open) == Scalar(1));
}

}  // namespace
