#include "calculator/builtin_macros.h"
#include "calculator/calculator_fixture.h"
#include "calculator/number_table.h"
#include "support/files.h"
#include "support/read_value.h"

#include <boost/algorithm/string/replace.hpp>

#include <regex>

namespace {

using corvath::math::Value;
using corvath::utils::FromUtf8, corvath::utils::ToUtf8;
using support::ReadValue;

/// To the bit.
void ExpectReads(const std::string& table, const Value& expected) {
  const Value value = corvath::calculator::ParseNumberTable(table, 0);
  ASSERT_EQ(value.GetKind(), expected.GetKind()) << support::Text(value);
  if (value.IsScalar())
    EXPECT_EQ(value.GetScalar(), expected.GetScalar());
  else
    EXPECT_TRUE(value.IsUninitialized() || value == expected) << support::Text(value);
}

class Texts : public support::CalculatorFixture {
 protected:
  void Check(const std::string& left, const std::string& relation, const std::string& right) {
    const std::wstring text = FromUtf8(left);
    if (relation == ":=") calculator_.SetObject(text, L"", ReadValue(right));
    if (relation == "=>") ExpectValue(text, ReadValue(right));
    if (relation == "reads") ExpectReads(left, ReadValue(right));
    if (relation == "!>") {
      EXPECT_EQ(Failure(text), right);
    }
    if (relation != "~>") return;
    const Value value = Evaluate(text);
    EXPECT_TRUE(IsClose(value, ReadValue(right), 1e-14)) << left << " = " << support::Text(value);
  }
};

TEST_F(Texts, ComeToWhatTheFileSays) {
  std::istringstream file(support::ReadFile(TEST_TEXTS));
  const std::regex form("(.*?) (:=|=>|~>|!>|reads) (.*)");
  std::smatch parts;
  int line_number = 0;
  for (std::string line; std::getline(file, line);) {
    SCOPED_TRACE(std::string(TEST_TEXTS) + ":" + std::to_string(++line_number));
    if (line.empty() || line.substr(0, 2) == "//") continue;
    ASSERT_TRUE(std::regex_match(line, parts, form)) << line;
    std::string text = parts[1];
    for (const auto& [escape, meant] : {std::pair{"\\n", "\n"}, {"\\r", "\r"}, {"\\t", "\t"}})
      boost::replace_all(text, escape, meant);
    Check(text, parts[2], parts[3]);
  }
  EXPECT_GT(line_number, 300);
}

TEST_F(Texts, CallEachMacro) {
  const std::string file = support::ReadFile(TEST_TEXTS);
  EXPECT_EQ(corvath::calculator::GetBuiltinMacros().size(), 49u);
  for (const auto& macro : corvath::calculator::GetBuiltinMacros())
    EXPECT_NE(file.find("\n$" + ToUtf8(macro.macro_id_) + "("), std::string::npos)
        << ToUtf8(macro.macro_id_);
}

}  // namespace
