#include "calculator/parser.h"

#include <gtest/gtest.h>

namespace {

using corvath::calculator::DeleteBlanks;
using corvath::calculator::kMaxNesting;
using corvath::calculator::kMaxTextLength;
using corvath::calculator::Parse;
using corvath::calculator::Rule;

std::wstring Repeat(const std::wstring& text, std::size_t n) {
  std::wstring result;
  result.reserve(text.size() * n);
  for (std::size_t i = 0; i < n; ++i) result += text;
  return result;
}

TEST(Parser, StopsWhereASequenceOfRulesWentThrough) {
  const struct {
    const wchar_t* text;
    std::size_t stop;
    bool match;
  } cases[] = {
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
  };
  for (const auto& [text, stop, match] : cases) {
    const auto result = Parse(text);
    EXPECT_EQ(result.stop, stop) << text;
    EXPECT_EQ(result.match, match) << text;
    EXPECT_EQ(result.full, match && stop == std::wstring(text).size()) << text;
  }
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
