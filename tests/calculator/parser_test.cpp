#include "calculator/parser.h"

#include "foundation/text.h"
#include "support/testing.h"

namespace {

using corvath::calculator::DeleteBlanks, corvath::calculator::kMaxNesting,
    corvath::calculator::kMaxTextLength, corvath::calculator::Parse, corvath::calculator::Rule,
    corvath::calculator::SyntaxTree;
using corvath::utils::ToUtf8;

std::wstring Repeat(const std::wstring& text, std::size_t n) {
  std::wstring result;
  result.reserve(text.size() * n);
  for (std::size_t i = 0; i < n; ++i) result += text;
  return result;
}

/// The tree in one line, rule'text'(children), without the nodes that only pass a child on.
std::string Print(const SyntaxTree& tree, SyntaxTree::Index node, std::wstring_view text) {
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

// Some forms of the grammar. All of them stand in fuzz/corpus/parser, whose replay compares trees and
// stops with those of a second parser.
TEST(Parser, GivesTheTreesOfTheGrammar) {
  const std::pair<const wchar_t*, const char*> cases[] = {
      {L"1+2*3", "10'+'(2'1' 11'*'(2'2' 2'3'))"},
      {L"(a-b)-c", "10'-'(5'(a-b)'(10'-'(14'a' 14'b')) 14'c')"},
      {L"-2^2", "7'-'(12'^'(2'2' 2'2'))"},
      {L"2^-1*+3", "11'*'(12'^'(2'2' 2'-1') 2'+3')"},
      {L"a>=3.e-2<b>_c", "9'>'(9'<'(9'>='(14'a' 2'3.e-2') 14'b') 14'_c')"},
      {L"a_1.b'", "14'a_1.b''"},
      {L"f()", "3'f'(3'')"},
      {L"f(a,\"t,x\",b=1)", "3'f'(14'a' 19'\"t,x\"'(19't,x') 18'b=1'(14'b' 2'1'))"},
      {L"a[,1]", "13'a[,1]'(14'a' 13',' 2'1')"},
      {L"a[b:2:3]", "16'a[b:2:3]'(14'a' 14'b' 16':' 2'2' 16':' 2'3')"},
      {L"[[1],[2]]", "17'[[1],[2]]'(15'[1]'(2'1') 15'[2]'(2'2'))"},
      {L"$m()", "21'$m()'(4'm' 21'')"},
      {L"$m()=1", "20'$m()=1'(4'm' 20'' 20'=' 2'1')"},
      {L"#SWITCHa:#case1:b#Case2:c#DEFAULTd",
       "23'#SWITCHa:#case1:b#Case2:c#DEFAULTd'(14'a' 2'1' 14'b' 2'2' 14'c' 23'#DEFAULT' 14'd')"},
      {L"größe*2", "11'*'(14'größe' 2'2')"},
  };
  for (const auto& [text, expected] : cases) {
    const auto result = Parse(text);
    ASSERT_TRUE(result.full) << ToUtf8(text);
    EXPECT_EQ(Print(result.tree, result.tree.GetRoot(), text), expected);
  }
  // A name by itself comes through all rules.
  const auto name = Parse(L"a");
  std::string rules;
  for (auto node = name.tree.GetRoot();; node = name.tree.Child(node, 0)) {
    rules += std::to_string(static_cast<int>(name.tree[node].rule)) + " ";
    if (name.tree.NumChildren(node) == 0) break;
  }
  EXPECT_EQ(rules, "1 8 9 10 11 7 12 13 6 14 ");
}

TEST(Parser, StopsWhereASequenceOfRulesWentThrough) {
  const std::tuple<const wchar_t*, std::size_t, bool> cases[] = {
      {L"1+2", 3, true},        {L"2^-x", 1, true},  {L"--x", 1, false},  {L"a[1][2]", 4, true},
      {L"if", 2, false},        {L"(if)", 0, false}, {L"a\n+1", 1, true}, {L"", 0, false},
      {L"[v,[1,2]]", 0, false},  // an optional vector that was taken is not given back
      {L"f(\"\")", 1, true}};    // a quoted text is not empty
  for (const auto& [text, stop, match] : cases) {
    const auto result = Parse(text);
    EXPECT_EQ(result.stop, stop) << text;
    EXPECT_EQ(result.match, match) << text;
    EXPECT_EQ(result.full, match && stop == std::wstring(text).size()) << text;
  }
  // Digits that leave the range of double make no number, be they those of the exponent.
  const std::wstring digits(400, L'9');
  for (const auto& [text, stop] : {std::pair{std::wstring(308, L'9'), 308},
                                   {std::wstring(309, L'1'), 309},
                                   {std::wstring(309, L'2'), 0},
                                   {L"." + digits, 0},
                                   {L"1e" + digits, 0},
                                   {L"1e-" + digits, 0}})
    EXPECT_EQ(Parse(text).stop, static_cast<std::size_t>(stop)) << text;
}

TEST(Parser, DeletesBlanksAlone) {
  EXPECT_EQ(DeleteBlanks(L" a \t[ 1\n]\"b c\" "), L"a[1\n]\"bc\"");
}

TEST(Parser, TakesTimeAndSpaceInProportionToTheText) {
  // Each of these takes ages when an operand is parsed once for every rule that begins with one.
  const std::size_t n = 200;
  for (const auto& [open, close] : {std::pair{L"(", L")"},
                                    {L"[", L"]"},
                                    {L"a[", L"]"},
                                    {L"a[:", L"]"},
                                    {L"f(", L")"},
                                    {L"$m(", L")"},
                                    {L"#if a:", L"#else b"},
                                    {L"-(", L")"},
                                    {L"a^(", L")"},
                                    {L"[[1]", L"]"}}) {
    const std::wstring text = DeleteBlanks(Repeat(open, n) + L"x" + Repeat(close, n));
    const auto result = Parse(text);
    EXPECT_TRUE(result.full) << open;
    EXPECT_LT(result.tree.size(), 16 * text.size()) << open;
  }
  EXPECT_TRUE(Parse(L"1" + Repeat(L"+a", 500000)).full);
  EXPECT_TRUE(Parse(L"[1" + Repeat(L",a", 500000) + L"]").full);
}

TEST(Parser, NestingHasALimitAndItsPlaceIsReported) {
  const auto nested = [](std::size_t n) { return Repeat(L"(", n) + L"1" + Repeat(L")", n); };
  EXPECT_TRUE(Parse(nested(kMaxNesting / 2 - 2)).full);
  for (const std::size_t n : {kMaxNesting / 2 + 1, 500000}) {
    const auto result = Parse(nested(n));
    EXPECT_FALSE(result.match);
    EXPECT_NEAR(static_cast<double>(result.stop), kMaxNesting / 2, 1.0);
  }
  for (const wchar_t* open : {L"[", L"a[", L"f(", L"$m()=", L"a=f(", L"#if(", L"#switch a #case "})
    EXPECT_FALSE(Parse(DeleteBlanks(Repeat(open, 100000))).full) << open;
  EXPECT_THROW(Parse(std::wstring(kMaxTextLength + 1, L'1')), std::length_error);
}

}  // namespace
