#include "calculator/scalar_program.h"

#include "calculator/evaluator.h"
#include "foundation/text.h"
#include "support/testing.h"

namespace {

using corvath::calculator::Evaluator, corvath::calculator::ScalarProgram,
    corvath::calculator::Workspace;
using corvath::math::Value;
using corvath::utils::ToUtf8;
using Number = std::complex<double>;

bool SameBits(double a, double b) {
  return std::isnan(a) ? std::isnan(b) : a == b && std::signbit(a) == std::signbit(b);
}

std::optional<Value> Walk(Workspace& workspace, const std::wstring& text) {
  try {
    Value value;
    Evaluator(workspace).Evaluate(workspace.texts.Parse(text), value);
    return value;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

std::wstring Repeated(const std::wstring& text, int count) {
  std::wstring result;
  for (int i = 0; i < count; ++i) result += text;
  return result;
}

TEST(ScalarProgram, GivesWhatTheWalkOfTheTreeGives) {
  constexpr double kInf = std::numeric_limits<double>::infinity();
  const Number numbers[] = {0.0,    -0.0,         1e-9,       -1e-9,   0.3,
                            -2.5,   3.0,          1e200,      kInf,    -kInf,
                            {0, 1}, {-0.0, -0.0}, {-4, -0.0}, {2, -1}, std::nan("")};
  const wchar_t* const texts[] = {L"0.8*x + 150*abs(y - x)/(1 + sqrt(x^2 + 3*y)) - 0.1*(x - y)",
                                  L"-x - y - (x - y)",
                                  L"x / y / 3",
                                  L"2*x^y",
                                  L"-x^2",
                                  L"x^2^3 ** y",
                                  L"sqrt(x) + sqrt(-y)",
                                  L"sqrt(x*y)",
                                  L"abs(x*y) / abs(-x)",
                                  L"exp(x) - ln(y) * log(x)",
                                  L"sin(x)*cos(y)*tan(x)",
                                  L"tanh(x) + atan(y)",
                                  L"real(x) - imag(y) + imag(-x)",
                                  L"floor(x) - ceil(y)",
                                  L"pi*x - E",
                                  L"v[1]*x - v[0]"};
  for (const wchar_t* const text : texts) {
    SCOPED_TRACE(ToUtf8(text));
    Workspace workspace;
    auto& x = workspace.objects[L"x"];
    auto& y = workspace.objects[L"y"];
    const ScalarProgram program(workspace.texts.Parse(text), workspace.macros);
    ASSERT_FALSE(program.IsEmpty());
    EXPECT_FALSE(program.Run());  // names are not known yet
    workspace.objects.Define(workspace.objects[L"v"], L"", Value(Value::Vector(2, 1.5)));
    for (const Number& a : numbers)
      for (const Number& b : numbers) {
        workspace.objects.Define(x, L"", Value(a));
        workspace.objects.Define(y, L"", Value(b));
        const std::optional<Value> expected = Walk(workspace, text);
        const auto number = program.Run();
        ASSERT_EQ(number.has_value(), expected.has_value()) << a << b;
        if (!number) continue;
        EXPECT_TRUE(SameBits(number->real(), expected->GetScalar().real()) &&
                    SameBits(number->imag(), expected->GetScalar().imag()))
            << a << b << " gives " << *number << ", not " << expected->GetScalar();
      }
  }
}

TEST(ScalarProgram, RowsGiveTheRealNumbersThatRunsGive) {
  // Each with the least number of rows in which all is real and finite.
  const std::pair<const wchar_t*, int> texts[] = {
      {L"0.8*x + 150*abs(y - x)/(1 + sqrt(x^2 + 3*y)) - 0.1*(x - y)", 12},
      {L"-x^2 / y - x^y", 12},
      {L"x^2.5 ** y + sqrt(x*y)", 9},
      {L"exp(x)*tanh(y) - ln(y)*log(x) + atan(x)", 9},
      {L"v[1]*x - v[0]^2*y + pi + v[2]", 33}};
  for (const auto& [text, least] : texts) {
    SCOPED_TRACE(ToUtf8(text));
    Workspace workspace;
    auto& x = workspace.objects[L"x"];
    auto& v = workspace.objects[L"v"];
    const ScalarProgram program(workspace.texts.Parse(text), workspace.macros);
    ASSERT_FALSE(program.IsEmpty());
    constexpr std::size_t kRows = ScalarProgram::kMaxRows;
    double numbers[3][kRows];
    for (int i = 0; i < static_cast<int>(kRows); ++i) {
      numbers[0][i] = i < 49 ? i % 7 - 2.0 : std::pow(-10.0, 25 * (i - 56));
      numbers[1][i] = i < 49 ? i / 7 - 2.0 : 1e-17 * i;
      numbers[2][i] = 0.1 * i;
    }
    double work[ScalarProgram::kWorkSize], results[kRows], defects[kRows] = {};
    workspace.objects.Define(v, L"", Value(Value::Vector(3, 1.5)));
    ASSERT_TRUE(program.RunRows({{{&x, ScalarProgram::kWhole}, numbers[0]},
                                 {{&workspace.objects[L"y"], ScalarProgram::kWhole}, numbers[1]},
                                 {{&v, 1}, numbers[2]}},
                                kRows, work, results, defects));
    int real = 0;
    for (std::size_t i = 0; i < kRows; ++i) {
      workspace.objects.Define(x, L"", Value(numbers[0][i]));
      workspace.objects.Define(workspace.objects[L"y"], L"", Value(numbers[1][i]));
      Value::Vector elements(3, 1.5);
      elements(1) = numbers[2][i];
      workspace.objects.Define(v, L"", Value(elements));
      if (std::isnan(defects[i])) continue;
      ++real;
      EXPECT_EQ(program.Run(), Number(results[i])) << numbers[0][i] << ' ' << numbers[1][i];
    }
    EXPECT_GE(real, least);
  }
  Workspace workspace;
  double work[ScalarProgram::kWorkSize], result, defect = 0.0;
  EXPECT_FALSE(ScalarProgram(workspace.texts.Parse(L"x"), workspace.macros)
                   .RunRows({}, 1, work, &result, &defect));
}

TEST(ScalarProgram, LeavesEverythingElseToTheWalk) {
  for (const std::wstring& text :
       {std::wstring(L"x < 1"), std::wstring(L"[x,1]"), std::wstring(L"max(x,1)"),
        std::wstring(L"y = x"), std::wstring(L"x % 2"), std::wstring(L"!x"),
        std::wstring(L"#if x<1 #then x #else 2"), std::wstring(L"1e999"), std::wstring(L"$M(x)"),
        std::wstring(L"x[0.5]"), std::wstring(L"x[0,1]"), std::wstring(L"x[-1]"),
        std::wstring(L"nothing(x)"), Repeated(L"1+(", 100) + L"x" + Repeated(L")", 100),
        Repeated(L"-(", 100) + L"x" + Repeated(L")", 100), L"x" + Repeated(L"+x", 2000)}) {
    Workspace workspace;
    EXPECT_TRUE(ScalarProgram(workspace.texts.Parse(text), workspace.macros).IsEmpty())
        << ToUtf8(text);
  }
  // Objects as they are when it runs.
  Workspace workspace;
  auto& x = workspace.objects[L"x"];
  const ScalarProgram program(workspace.texts.Parse(L"x + 1"), workspace.macros);
  for (const Value& value : {Value(), Value(true), Value(Value::Vector(2, 1.0))}) {
    workspace.objects.Define(x, L"", value);
    EXPECT_FALSE(program.Run());
  }
  workspace.objects.Define(x, L"3", Value(2.0));
  EXPECT_FALSE(program.Run());
  workspace.objects.Define(x, L"", Value(2.0));
  EXPECT_EQ(program.Run(), Number(3.0));
}

}  // namespace
