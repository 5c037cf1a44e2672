#include "calculator/number_table.h"

#include "support/values.h"
#include "variant/value/limits.h"

namespace {

using corvath::calculator::ParseNumberTable;
using corvath::math::Value;
using support::Mat, support::Scalar, support::Sig, support::Vec, support::XY;

constexpr double kInf = std::numeric_limits<double>::infinity();

Value Parse(const std::string& text, std::uint64_t skipped_lines = 0) {
  return ParseNumberTable(text, skipped_lines);
}

TEST(NumberTable, ShapesDecideTheKind) {
  const std::pair<const char*, Value> cases[] = {
      {"", Value()},
      {"5", Scalar(5)},
      {"5\n", Scalar(5)},
      {"1 2 3", Vec({1, 2, 3})},
      {"1\n2\n2\n", Vec({1, 2, 2})},
      {"1 2\n2 4\n3 8\n", XY({1, 2, 3}, {2, 4, 8})},
      {"1 2\n1 4\n3 8\n", Mat({{1, 2}, {1, 4}, {3, 8}})},
      {"3 2\n2 4\n", Mat({{3, 2}, {2, 4}})},
      {"1 5 7\n2 6 8\n", Sig({1, 2}, {{5, 6}, {7, 8}})},
      {"1 5 7\n-2 6 8\n", Mat({{1, 5, 7}, {-2, 6, 8}})},
      {"-inf 1\n0 2\ninf 3\n", XY({-kInf, 0, kInf}, {1, 2, 3})},
  };
  for (const auto& [text, expected] : cases) {
    const Value value = Parse(text);
    EXPECT_EQ(value.GetKind(), expected.GetKind()) << text;
    EXPECT_TRUE(value.IsUninitialized() || value == expected) << text << support::Text(value);
  }
  // NaN ascends nowhere.
  EXPECT_TRUE(Parse("nan 1\n2 2\n").IsMatrix());
  EXPECT_TRUE(Parse("1 1\nnan 2\n3 3\n").IsMatrix());
}

TEST(NumberTable, ReadsWhatProgramsWrite) {
  const Value expected = Mat({{2, 3}, {1, 4}});
  const char* const cases[] = {
      "2 3\n1 4",
      "2\t3\r\n1\t4\r\n",  // Windows
      "2 3\r1 4\r",        // a single CR
      "  2,3\n\t1;4\n",    // blanks in front, separators
      "\xEF\xBB\xBF"
      "2 3\n1 4",                                    // a byte order mark
      "x y\n2 3\n1 4\n",                             // a header
      "# x [m], y [s]\n\n-\n.\n+x\ne1\n2 3\n1 4\n",  // lines that begin with no number
      "d\xC3\xA4mpfung \xB0\n2 3\n1 4\n",
      "2 3 kg/m**x\n1 4 # remark\n",
      "2=a;b=3\n1 (4) !\n",      // separators are what no number begins with
      "2 3\n1 4\n5\n6 7\n",      // ends in front of a line of one number
      "2 3\n1 4\n5 6 7\n6 7\n",  // or of three
      "2 3\n1 4\n\n6 7\n",       // or of none
      "2 3\n1 4\nsum 6 7\n",
      "+2.0e0 .3E+1\n1. 0.04e2\n",
      "2e 3\n1e+ 4\n",  // no exponents
      "2,3\n1,4-5\n",   // no separator between 4 and -5: a remark
      "2,3.0.5\n1,4\n",
      "2n3\n1i4\n",  // letters that numbers begin with, but none does
      "2 -+3\n1 -+4\n",
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

TEST(NumberTable, LeavesOutLinesAtTheBegin) {
  const std::string text = "1 2 3\n4\r\n\r5 6\n";
  EXPECT_TRUE(Parse(text, 0) == Vec({1, 2, 3}));
  EXPECT_TRUE(Parse(text, 1) == Scalar(4));
  EXPECT_TRUE(Parse(text, 2) == Vec({5, 6}));  // an empty line in front
  EXPECT_TRUE(Parse(text, 3) == Vec({5, 6}));
  EXPECT_TRUE(Parse(text, 4).IsUninitialized());
  EXPECT_TRUE(Parse(text, std::numeric_limits<std::uint64_t>::max()).IsUninitialized());
}

TEST(NumberTable, RoundsNumbersCorrectlyAndSaturates) {
  // The double nearest to the text, as the compiler has it.
  const std::pair<const char*, double> cases[] = {
      {"0.1", 0.1},
      {"9007199254740993", 9007199254740992.0},
      {"1.7976931348623157e308", std::numeric_limits<double>::max()},
      {"2.2250738585072011e-308", 2.2250738585072011e-308},
      {"4.9406564584124654e-324", 5e-324},
      {"123456789012345678901234567890e-10", 12345678901234567890.1234567890},
      {"-0.30000000000000004", -0.30000000000000004},
      {"1e400", kInf},
      {"-1e400", -kInf},
      {"0.00001e400", kInf},
      {"1e-400", 0.0},
      {"100000e-400", 0.0},
      {"1e99999999999999999999999", kInf},
      {"1e-99999999999999999999999", 0.0},
      {"0e99999999999999999999999", 0.0},
      {"InF", kInf},
      {"-infinity", -kInf},
      {"+Infin", kInf},
  };
  for (const auto& [text, expected] : cases) {
    const Value value = Parse(text);
    ASSERT_TRUE(value.IsScalar()) << text;
    EXPECT_EQ(value.GetScalar().real(), expected) << text;
  }
  const std::string digits(400, '7');
  EXPECT_EQ(Parse(digits).GetScalar().real(), kInf);
  EXPECT_EQ(Parse("0." + std::string(400, '0') + "1").GetScalar().real(), 0.0);
  for (const char* text : {"nan", "-NaN", "nan(0x7)", "nan("}) {
    const Value value = Parse(text);
    if (std::string(text) == "nan(")
      EXPECT_TRUE(value.IsUninitialized());  // no number, so no row
    else
      EXPECT_TRUE(value.IsScalar() && std::isnan(value.GetScalar().real())) << text;
  }
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
