#include "calculator/parser.h"

#include "support/testing.h"

namespace {

using corvath::calculator::DeleteBlanks, corvath::calculator::kMaxNesting,
    corvath::calculator::kMaxTextLength, corvath::calculator::Parse;

std::wstring Repeat(const std::wstring& text, std::size_t n) {
  std::wstring result;
  result.reserve(text.size() * n);
  for (std::size_t i = 0; i < n; ++i) result += text;
  return result;
}

// Trees of the grammar's forms stand in texts.txt.
TEST(Parser, TakesANameThroughAllRules) {
  const auto name = Parse(L"a");
  std::string rules;
  for (auto node = name.tree.GetRoot();; node = name.tree.Child(node, 0)) {
    rules += std::to_string(static_cast<int>(name.tree[node].rule)) + " ";
    if (name.tree.NumChildren(node) == 0) break;
  }
  EXPECT_EQ(rules, "1 8 9 10 11 7 12 13 6 14 ");
}

TEST(Parser, StopsAtNumbersBeyondDouble) {
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
