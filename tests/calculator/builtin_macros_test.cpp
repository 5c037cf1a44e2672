#include "calculator/builtin_macros.h"

#include "calculator/calculator.h"
#include "foundation/text.h"
#include "support/values.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <string>
#include <vector>

namespace {

using corvath::utils::ToUtf8;
using support::Scalar;
using support::Sig;
using support::Value;
using support::Vec;
using support::XY;

class BuiltinMacros : public testing::Test {
 protected:
  BuiltinMacros() {
    const std::vector<support::Complex> axis{0, 1, 3, 4};
    calculator_.SetObject(L"S", L"", XY(axis, {2, -1, 5, 1}));
    calculator_.SetObject(L"T", L"", XY(axis, {1, 1, 2, 0}));  // S - T is 1, -2, 3, 1
    calculator_.SetObject(L"R", L"", XY({0, 1, 3}, {1, 3, 7}));
    calculator_.SetObject(L"U", L"", XY({0.5, 1, 2}, {0, 0, 0}));
    calculator_.SetObject(L"M", L"", Sig({0, 1, 2}, {{1, 2, 3}, {10, 20, 30}}));
  }

  CCalculator calculator_;
};

/// The name in a call "$NAME(...)".
std::wstring NameOf(const std::wstring& call) {
  return call.substr(1, call.find(L'(') - 1);
}

TEST_F(BuiltinMacros, GiveTheMeasuresWorkedOutByHand) {
  const std::vector<support::Complex> axis{0, 1, 3, 4};
  const struct {
    std::wstring call;
    Value expected;
  } cases[] = {
      // The slot from 2 to 4 holds the points (3, 5) and (4, 1) of S, (3, 3) and (4, 1) of S - T.
      {L"$SIG_MIN_X(S)", Scalar(1)},
      {L"$SIG_MIN_X_SLOT(S, 2, 4)", Scalar(4)},
      {L"$SIG_MIN_Y(S)", Scalar(-1)},
      {L"$SIG_MIN_Y_SLOT(S, 2, 4)", Scalar(1)},
      {L"$SIG_MAX_X(S)", Scalar(3)},
      {L"$SIG_MAX_X_SLOT(S, 0, 2)", Scalar(0)},
      {L"$SIG_MAX_Y(S)", Scalar(5)},
      {L"$SIG_MAX_Y_SLOT(S, 0, 2)", Scalar(2)},
      {L"$SIG_Y_RANGE(S)", Scalar(6)},
      {L"$SIG_Y_RANGE_SLOT(S, 2, 4)", Scalar(4)},
      {L"$SIG_MEAN(S)", Scalar(1.75)},
      {L"$SIG_MEAN_SLOT(S, 2, 4)", Scalar(3)},
      {L"$SIG_STDDEV(S)", Scalar(2.5)},
      {L"$SIG_STDDEV_SLOT(S, 2, 4)", Scalar(std::sqrt(8.0))},
      // Squares weighted with the steps around a point: the whole one at the ends, half of two
      // inside, 1*4 + 1.5*1 + 1.5*25 + 1*1 = 44, over the span and half of its end steps, 5.
      {L"$SIG_RMS(S)", Scalar(std::sqrt(44.0 / 5.0))},
      {L"$SIG_RMS_SLOT(S, 2, 4)", Scalar(std::sqrt(26.0 / 2.0))},
      {L"$SIG_SUM(S)", Scalar(7)},
      {L"$SIG_SUM_SLOT(S, 2, 4)", Scalar(6)},
      {L"$SIG_EUCLID(S)", Scalar(std::sqrt(31.0))},
      {L"$SIG_EUCLID_SLOT(S, 2, 4)", Scalar(std::sqrt(26.0))},
      {L"$SIG_NORM(S, 3)", Scalar(std::cbrt(135.0))},
      {L"$SIG_NORM_SLOT(S, 2, 4, 3)", Scalar(std::cbrt(126.0))},
      {L"$SIG_DIFF_EUCLID(S, T)", Scalar(std::sqrt(15.0))},
      {L"$SIG_DIFF_EUCLID_SLOT(S, T, 2, 4)", Scalar(std::sqrt(10.0))},
      {L"$SIG_DIFF_NORM(S, T, 1)", Scalar(7)},
      {L"$SIG_DIFF_NORM_SLOT(S, T, 2, 4, 1)", Scalar(4)},
      {L"$SIG_INT(S)", Scalar(7.5)},
      {L"$SIG_INT_SLOT(S, 2, 4)", Scalar(6.5)},  // from (2, 2) on
      {L"$SIG_DIFF_INT(S, T)", Scalar(2.5)},
      {L"$SIG_DIFF_INT_SLOT(S, T, 2, 4)", Scalar(3.75)},  // from (2, 0.5) on
      {L"$SIG_VALUE_Y(S, 2)", Scalar(2)},
      {L"$SIG_VALUE_FIRST_Y(S)", Scalar(2)},
      {L"$SIG_VALUE_LAST_Y(S)", Scalar(1)},
      {L"$SIG_VALUE_X(R, 5)", Scalar(2)},
      {L"$SIG_VALUE_FIRST_X(U)", Scalar(0.5)},
      {L"$SIG_VALUE_LAST_X(S)", Scalar(4)},
      {L"$SIG_SIZE(S)", Scalar(4)},
      {L"$SIG_SLOT_SIZE(S, 2, 4)", Scalar(2)},
      {L"$SIG_DIFF_SIZE(S, T)", Scalar(4)},
      {L"$SIG_DIFF_SLOT_SIZE(S, T, 2, 4)", Scalar(2)},
      // Slopes -3, 3, -4 and 0, 0.5, -2.
      {L"$SIG_ABL_DIFF_NORM(S, T, 1)", Scalar(7.5)},
      {L"$SIG_ABL_DIFF_NORM_SLOT(S, T, 1, 4, 1)", Scalar(4.5)},
      {L"$RESAMPLING(S, 5)", XY({0, 1, 2, 3, 4}, {2, -1, 2, 5, 1})},
      {L"$ACCUMULATE_CHANNELS(M)", Vec({11, 22, 33})},
      {L"$APPEND_XYDATA(R, U)", XY({0, 1, 3, 0.5, 1, 2}, {1, 3, 7, 0, 0, 0})},
      {L"$SIG_MAP_2_SIGNALS(S, U)", XY({0.5, 1, 2}, {0.5, -1, 2})},
      {L"$ABSOLUTE_ERROR(S, T)", XY(axis, {1, 2, 3, 1})},
      {L"$RELATIVE_ERROR(S, T)", XY(axis, {0.5, 2, 0.6, 1})},
      {L"$PERCENT_ERROR(S, T)", XY(axis, {50, 200, 60, 100})},
  };
  std::set<std::wstring> names;
  for (const auto& [call, expected] : cases) {
    const Value value = calculator_.Evaluate(call);
    EXPECT_TRUE(IsClose(value, expected, 1e-14))  // a few ulp of roots and quotients
        << ToUtf8(call) << " = " << support::Text(value) << ", expected "
        << support::Text(expected);
    names.insert(NameOf(call));
  }
  std::set<std::wstring> all;
  for (const auto& macro : corvath::calculator::GetBuiltinMacros()) all.insert(macro.macro_id_);
  EXPECT_EQ(names, all);
  EXPECT_EQ(all.size(), 49u);
}

TEST_F(BuiltinMacros, TakeTheTextsOfTheirArguments) {
  EXPECT_EQ(calculator_.Evaluate(L"$PERCENT_ERROR(4, 5)"), Scalar(25));
  // euklidnorm(S-T+T)
  EXPECT_EQ(calculator_.Evaluate(L"$SIG_DIFF_EUCLID(S, T+T)"), Scalar(std::sqrt(31.0)));
}

TEST_F(BuiltinMacros, AFileCannotChangeThemButATextCan) {
  calculator_.AddMacros(
      {{L"SIG_SUM", {L"x"}, L"0", L"", L""}, {L"mine", {L"x"}, L"3*x", L"", L""}});
  EXPECT_EQ(calculator_.Evaluate(L"$SIG_SUM(S)"), Scalar(7));
  EXPECT_EQ(calculator_.Evaluate(L"$mine(2)"), Scalar(6));
  calculator_.Evaluate(L"$SIG_SUM(x) = 0*size2(x)");
  EXPECT_EQ(calculator_.Evaluate(L"$SIG_SUM(S)"), Scalar(0));
}

}  // namespace
