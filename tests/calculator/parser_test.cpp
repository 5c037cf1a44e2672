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

TEST(Parser, GivesTheTreesOfTheGrammar) {
  const std::pair<const wchar_t*, const char*> cases[] = {
      {L"1+2*3", "10'+'(2'1' 11'*'(2'2' 2'3'))"},
      {L"a-b-c", "10'-'(10'-'(14'a' 14'b') 14'c')"},
      {L"(a-b)-c", "10'-'(5'(a-b)'(10'-'(14'a' 14'b')) 14'c')"},
      {L"-2^2", "7'-'(12'^'(2'2' 2'2'))"},
      {L"2^-1*+3", "11'*'(12'^'(2'2' 2'-1') 2'+3')"},
      {L"2**3^-.5", "12'^'(12'**'(2'2' 2'3') 2'-.5')"},
      {L"!a&&b||c", "8'||'(8'&&'(7'!'(14'a') 14'b') 14'c')"},
      {L"a<=b==c!=1", "9'!='(9'=='(9'<='(14'a' 14'b') 14'c') 2'1')"},
      {L"a>=3.e-2<b>_c", "9'>'(9'<'(9'>='(14'a' 2'3.e-2') 14'b') 14'_c')"},
      {L"a%b/c", "11'/'(11'%'(14'a' 14'b') 14'c')"},
      {L"a_1.b'", "14'a_1.b''"},
      {L"ifx", "14'ifx'"},
      {L"f()", "3'f'(3'')"},
      {L"f(a,\"t,x\",b=1)", "3'f'(14'a' 19'\"t,x\"'(19't,x') 18'b=1'(14'b' 2'1'))"},
      {L"f(x)[1]", "13'f(x)[1]'(3'f'(14'x') 2'1')"},
      {L"a[1]", "13'a[1]'(14'a' 2'1')"},
      {L"a[,1]", "13'a[,1]'(14'a' 13',' 2'1')"},
      {L"a[1,]", "13'a[1,]'(14'a' 2'1' 13',')"},
      {L"a[1,2+b]", "13'a[1,2+b]'(14'a' 2'1' 13',' 10'+'(2'2' 14'b'))"},
      {L"a[,]", "13'a[,]'(14'a' 13',')"},
      {L"a[(1)(2)]", "13'a[(1)(2)]'(14'a' 5'(1)'(2'1') 5'(2)'(2'2'))"},
      {L"a[:]", "16'a[:]'(14'a' 16':')"},
      {L"a[b:2:3]", "16'a[b:2:3]'(14'a' 14'b' 16':' 2'2' 16':' 2'3')"},
      {L"a[::-1]", "16'a[::-1]'(14'a' 16':' 16':' 7'-'(2'1'))"},
      {L"(a[1])[2]", "13'(a[1])[2]'(5'(a[1])'(13'a[1]'(14'a' 2'1')) 2'2')"},
      {L"[1,-a]", "15'[1,-a]'(2'1' 7'-'(14'a'))"},
      {L"[[1,2][3,4]]", "15'[[1,2][3,4]]'(15'[1,2]'(2'1' 2'2') 15'[3,4]'(2'3' 2'4'))"},
      {L"[[1],[2]]", "17'[[1],[2]]'(15'[1]'(2'1') 15'[2]'(2'2'))"},
      {L"[[1]a,b=2]", "15'[[1]a,b=2]'(15'[1]'(2'1') 14'a' 18'b=2'(14'b' 2'2'))"},
      {L"a=b=1+c", "18'a=b=1+c'(14'a' 14'b' 10'+'(2'1' 14'c'))"},
      {L"$m()", "21'$m()'(4'm' 21'')"},
      {L"$m(\"s\")", "21'$m(\"s\")'(4'm' 19'\"s\"'(19's'))"},
      {L"$m(a,b+1)", "21'$m(a,b+1)'(4'm' 14'a' 10'+'(14'b' 2'1'))"},
      {L"$m()=1", "20'$m()=1'(4'm' 20'' 20'=' 2'1')"},
      {L"$m(x,y)=x*y", "20'$m(x,y)=x*y'(4'm' 4'x' 4'y' 20'=' 11'*'(14'x' 14'y'))"},
      {L"#IFa#Thenb#elsec", "22'#IFa#Thenb#elsec'(14'a' 14'b' 14'c')"},
      {L"1+#ifa:b#elsec", "10'+'(2'1' 22'#ifa:b#elsec'(14'a' 14'b' 14'c'))"},
      {L"#switcha#case1:b#default:c",
       "23'#switcha#case1:b#default:c'(14'a' 2'1' 14'b' 23'#default' 14'c')"},
      {L"#SWITCHa:#case1:b#Case2:c#DEFAULTd",
       "23'#SWITCHa:#case1:b#Case2:c#DEFAULTd'(14'a' 2'1' 14'b' 2'2' 14'c' 23'#DEFAULT' 14'd')"},
      {L"größe*2", "11'*'(14'größe' 2'2')"},
      {L"1e400", "2'1e400'"},
      {L"1.5e400", "2'1.5e400'"},
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
      {L"1+2", 3, true},        {L"2^-x", 1, true},      {L"2^-1", 4, true},
      {L"--x", 1, false},       {L"--1", 3, true},       {L"+x", 0, false},
      {L"+3", 2, true},         {L"a[]", 1, true},       {L"a[:]", 4, true},
      {L"a[,]", 4, true},       {L"(a[1])[2]", 9, true}, {L"a[1][2]", 4, true},
      {L"if", 2, false},        {L"iF+1", 2, false},     {L"ifx", 3, true},
      {L"1+if", 1, true},       {L"(if)", 0, false},     {L"@PI", 0, false},
      {L"a\n+1", 1, true},      {L"", 0, false},         {L"a=b==1", 1, true},
      {L"a=(b=1)", 1, true},    {L"2e", 0, false},       {L"f(1,)", 1, true},
      {L"\"s\"", 0, false},     {L"1..2", 2, true},      {L"$m(\"s\")", 7, true},
      {L"[v,[1,2]]", 0, false},  // an optional vector that was taken is not given back
      {L"f(\"\")", 1, true},     // a quoted text is not empty
      {L"$m(\"\")", 0, false},
  };
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
