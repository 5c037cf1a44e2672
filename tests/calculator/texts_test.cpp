#include "calculator/builtin_macros.h"
#include "calculator/calculator_fixture.h"
#include "calculator/number_table.h"
#include "calculator/parser.h"
#include "support/files.h"
#include "support/read_value.h"

#include <boost/algorithm/string/replace.hpp>

#include <regex>

namespace {

using corvath::math::Value;
using corvath::utils::FromUtf8, corvath::utils::ToUtf8;
using support::ReadValue;
namespace calculator = corvath::calculator;

/// To the bit.
void ExpectReads(const std::string& table, const Value& expected) {
  const Value value = calculator::ParseNumberTable(table, 0);
  ASSERT_EQ(value.GetKind(), expected.GetKind()) << support::Text(value);
  if (value.IsScalar())
    EXPECT_EQ(value.GetScalar(), expected.GetScalar());
  else
    EXPECT_TRUE(value.IsUninitialized() || value == expected) << support::Text(value);
}

/// The tree in one line, rule'text'(children), without the nodes that only pass a child on.
std::string Print(const calculator::SyntaxTree& tree, calculator::SyntaxTree::Index node,
                  std::wstring_view text) {
  using calculator::Rule;
  const auto own_text = [&] { return tree.Text(node, text); };
  while (tree.NumChildren(node) == 1 && own_text() != L"-" && own_text() != L"!" &&
         (tree[node].rule == Rule::kExpression || tree[node].rule == Rule::kOperand ||
          (tree[node].rule >= Rule::kUnary && tree[node].rule <= Rule::kIndex)))
    node = tree.Child(node, 0);
  std::string out =
      std::to_string(static_cast<int>(tree[node].rule)) + "'" + ToUtf8(own_text()) + "'";
  for (std::size_t i = 0; i < tree.NumChildren(node); ++i)
    out += (i == 0 ? "(" : " ") + Print(tree, tree.Child(node, i), text);
  return tree.NumChildren(node) == 0 ? out : out + ')';
}

class Texts : public support::CalculatorFixture {
 protected:
  void Check(const std::string& left, const std::string& relation, const std::string& right) {
    const std::wstring text = FromUtf8(left);
    if (relation == ":=") calculator_.SetObject(text, L"", ReadValue(right));
    if (relation == "=>") ExpectValue(text, ReadValue(right));
    if (relation == "reads") ExpectReads(left, ReadValue(right));
    if (relation == "::=") calculator_.SetObject(text, FromUtf8(right), Value());
    if (relation == "depends") {
      std::string names;
      for (const std::wstring& name : calculator_.GetDependencies(text))
        names += (names.empty() ? "" : " ") + ToUtf8(name);
      EXPECT_EQ(names, right);
    }
    if (relation == "parses" || relation == "stops" || relation == "fails") {
      const auto result = calculator::Parse(text);
      const std::string stop = std::to_string(result.stop);
      EXPECT_EQ(result.match, relation != "fails");
      EXPECT_EQ(result.full, result.match && result.stop == text.size());
      EXPECT_EQ(relation == "parses" ? Print(result.tree, result.tree.GetRoot(), text) : stop,
                right);
    }
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
  const std::regex form("(.*?) (:=|::=|=>|~>|!>|reads|depends|parses|stops|fails) (.*)");
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
  EXPECT_EQ(calculator::GetBuiltinMacros().size(), 49u);
  for (const auto& macro : calculator::GetBuiltinMacros())
    EXPECT_NE(file.find("\n$" + ToUtf8(macro.macro_id_) + "("), std::string::npos)
        << ToUtf8(macro.macro_id_);
}

}  // namespace
