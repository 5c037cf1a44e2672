#include "calculator/grammar_rendering.h"
#include "calculator/parser.h"
#include "foundation/text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <iterator>
#include <random>

namespace {

using corvath::calculator::Parse;
using corvath::calculator::SyntaxTree;
using corvath::utils::ToUtf8;

std::string Print(const SyntaxTree& tree, SyntaxTree::Index node) {
  std::string out = std::to_string(static_cast<int>(tree[node].rule)) + ':' +
                    std::to_string(tree[node].first) + '-' + std::to_string(tree[node].last);
  for (std::size_t i = 0; i < tree.NumChildren(node); ++i)
    out += (i == 0 ? "(" : " ") + Print(tree, tree.Child(node, i));
  return tree.NumChildren(node) == 0 ? out : out + ')';
}

/// Random texts: by the rules, so that most are valid, then damaged.
class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  std::wstring Next() {
    depth_ = 0;
    std::wstring text = Expression();
    const int damages = Pick(3) == 0 ? 1 + Pick(2) : 0;
    for (int i = 0; i < damages && !text.empty(); ++i) Damage(text);
    return text.substr(0, 48);  // the second method takes exponential time
  }

 private:
  int Pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random_); }
  template <std::size_t N>
  const wchar_t* OneOf(const wchar_t* const (&texts)[N]) {
    return texts[Pick(static_cast<int>(N))];
  }
  void Damage(std::wstring& text) {
    static const wchar_t* const kPieces[] = {
        L"(", L")",  L"[",  L"]",   L",",     L":",     L"=",     L"+",        L"-",  L"!",
        L"^", L"**", L"&&", L"|",   L"<",     L"$",     L"\"",    L"#",        L".",  L"e",
        L"1", L"a",  L"if", L"#if", L"#then", L"#case", L"#else", L"#default", L"\n", L"ä"};
    const std::size_t at = static_cast<std::size_t>(Pick(static_cast<int>(text.size())));
    switch (Pick(3)) {
      case 0:
        text.erase(at, 1);
        break;
      case 1:
        text.insert(at, OneOf(kPieces));
        break;
      default:
        text.replace(at, 1, OneOf(kPieces));
    }
  }

  std::wstring Number() {
    static const wchar_t* const kNumbers[] = {L"0",   L"1",    L"12.5", L".5",     L"3.",
                                              L"1e3", L"2E-2", L"+4",   L"-7.e+1", L"1e400"};
    return OneOf(kNumbers);
  }
  std::wstring Name() {
    static const wchar_t* const kNames[] = {L"a",  L"_b", L"x.y",   L"c'", L"ifx",
                                            L"if", L"IF", L"größe", L"i",  L"e1"};
    return OneOf(kNames);
  }
  std::wstring Expression() {
    switch (Pick(12)) {
      case 0:
        return Name() + L"=" + (Pick(2) ? Name() + L"=" : L"") + Expression();
      case 1:
        return L"$m(" + (Pick(3) ? Name() + (Pick(2) ? L"," + Name() : L"") : L"") + L")=" +
               Binary();
      default:
        return Binary();
    }
  }
  std::wstring Binary() {
    static const wchar_t* const kOperators[] = {L"&&", L"||", L"<=", L">=", L"<",
                                                L">",  L"==", L"!=", L"+",  L"-",
                                                L"*",  L"/",  L"%",  L"^",  L"**"};
    std::wstring text = Operand();
    while (Pick(5) < 2) text += OneOf(kOperators) + Operand();
    return text;
  }
  std::wstring List(std::wstring (Generator::*part)(), const wchar_t* separator) {
    std::wstring text = (this->*part)();
    while (Pick(3) == 0) text += separator + (this->*part)();
    return text;
  }
  std::wstring Vector() { return L"[" + List(&Generator::Expression, L",") + L"]"; }
  std::wstring Prefixed() { return (Pick(3) == 0 ? Vector() : L"") + Vector(); }
  std::wstring Argument() { return Pick(6) == 0 ? L"\"t,x\"" : Expression(); }
  std::wstring Maybe() { return Pick(2) ? Binary() : L""; }
  std::wstring Operand() {
    std::wstring text = Pick(6) == 0 ? (Pick(2) ? L"-" : L"!") : L"";
    text += Bare();
    switch (Pick(8)) {
      case 0:
        return text + L"[" + Maybe() + (Pick(2) ? L"," : L"") + Maybe() + L"]";
      case 1:
        return text + L"[" + Maybe() + L":" + Maybe() + (Pick(2) ? L":" + Maybe() : L"") + L"]";
      default:
        return text;
    }
  }
  std::wstring Bare() {
    if (++depth_ > 6) return Pick(2) ? Number() : Name();
    switch (Pick(12)) {
      case 0:
        return L"(" + Binary() + L")";
      case 1:
        return L"#If" + Binary() + (Pick(2) ? L"#Then" : L":") + Binary() + L"#eLse" + Binary();
      case 2: {
        std::wstring text = L"#switch" + Binary() + (Pick(2) ? L":" : L"");
        do text += L"#Case" + Binary() + L":" + Binary();
        while (Pick(2));
        return text + L"#Default" + (Pick(2) ? L":" : L"") + Binary();
      }
      case 3:
        return Vector();
      case 4:
        return L"[" + List(&Generator::Prefixed, L",") + L"]";
      case 5:
        return L"$" + Name() + L"(" + (Pick(3) ? List(&Generator::Argument, L",") : L"") + L")";
      case 6:
        return Name() + L"(" + (Pick(3) ? List(&Generator::Argument, L",") : L"") + L")";
      case 7:
      case 8:
        return Name();
      default:
        return Number();
    }
  }

  std::mt19937 random_;
  int depth_ = 0;
};

void ExpectSame(const std::wstring& text) {
  const auto expected = support::RenderWithSpirit(text);
  const auto result = Parse(text);
  ASSERT_EQ(result.match, expected.match) << ToUtf8(text);
  ASSERT_EQ(result.full, expected.full) << ToUtf8(text);
  ASSERT_EQ(result.stop, expected.stop) << ToUtf8(text);
  if (!expected.match) return;
  ASSERT_EQ(Print(result.tree, result.tree.GetRoot()), expected.tree) << ToUtf8(text);
}

class Grammar : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(std::setlocale(LC_CTYPE, "C.UTF-8")); }
  void TearDown() override { std::setlocale(LC_CTYPE, "C"); }
};

TEST_F(Grammar, ParsesGeneratedTextsAsSpiritDoes) {
  Generator generator(20);
  std::size_t full = 0;
  constexpr std::size_t kTexts = 10000;
  for (std::size_t i = 0; i < kTexts; ++i) {
    const std::wstring text = generator.Next();
    ExpectSame(text);
    if (HasFatalFailure()) return;
    full += Parse(text).full;
  }
  EXPECT_GT(full, kTexts / 4);  // the texts are neither all broken nor all valid
  EXPECT_LT(full, kTexts * 3 / 4);
}

TEST_F(Grammar, ParsesTokenSoupAsSpiritDoes) {
  static const wchar_t* const kTokens[] = {
      L"a", L"1",     L"[",     L"]",       L"(",     L")",       L",",  L":",  L"=",
      L"+", L"-",     L"!",     L"^",       L"*",     L"**",      L"<",  L"==", L"&&",
      L"$", L"if",    L"\"",    L"#if",     L".",     L"e",       L"f(", L"[[", L"]]",
      L"]", L"#then", L"#else", L"#switch", L"#case", L"#default"};
  std::mt19937 random(7);
  for (int i = 0; i < 30000; ++i) {
    std::wstring text;
    for (auto n = random() % 9; n > 0; --n) text += kTokens[random() % std::size(kTokens)];
    ExpectSame(text);
    if (HasFatalFailure()) return;
  }
}

TEST_F(Grammar, ParsesNumbersThatLeaveTheRangeAsSpiritDoes) {
  const std::wstring long_digits(400, L'9');
  for (const std::wstring& text :
       {long_digits, L"1." + long_digits, L"." + long_digits, L"1e" + long_digits,
        L"1e-" + long_digits, std::wstring(L"1.5e400"), L"1." + long_digits + L"e1",
        std::wstring(308, L'9'), std::wstring(309, L'1'), std::wstring(309, L'2')})
    ExpectSame(text);
}

}  // namespace
