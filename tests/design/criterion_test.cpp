#include "design/criterion.h"

#include "support/message_of.h"
#include "support/values.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace corvath::algorithm::datatypes;
using support::Scalar;
using support::Vec;

Criterion Make(int type, const std::wstring& lhs, const std::wstring& rhs) {
  return Criterion(static_cast<CriterionDescription::eType>(type), lhs, rhs);
}

/// A criterion of `type` whose value is `value`.
Criterion WithValue(int type, const CDesignEntry& value) {
  Criterion criterion = Make(type, L"", L"");
  criterion.SetValues(CDesignEntry(), CDesignEntry(), value, /*combine=*/false);
  return criterion;
}

}  // namespace

TEST(Criterion, ExpressionAndValueFollowTheType) {
  const struct {
    const wchar_t* expression;
    double value;  // with 10 on the left and 3 on the right
  } types[] = {{L"(b)", 3.0},     {L"(b)", 3.0},     {L"-(b)", -3.0},    {L"(b)-(a)", -7.0},
               {L"(a)-(b)", 7.0}, {L"(a)-(b)", 7.0}, {L"(b)-(a)", -7.0}, {L"(a)-(b)", 7.0}};
  for (int type = 0; type < 8; ++type) {
    Criterion criterion = Make(type, L"a", L"b");
    EXPECT_EQ(criterion.GetExpression(), types[type].expression) << type;
    criterion.SetValues(CDesignEntry(Scalar(10.0)), CDesignEntry(Scalar(3.0)), CDesignEntry(0.5),
                        /*combine=*/true);
    EXPECT_EQ(criterion.GetValue(), CDesignEntry(types[type].value)) << type;
    EXPECT_FALSE(criterion.NeedsEvaluation());
    criterion.SetValues(CDesignEntry(), CDesignEntry(), CDesignEntry(0.5), /*combine=*/false);
    EXPECT_EQ(criterion.GetValue(), CDesignEntry(0.5)) << type;
  }
  EXPECT_EQ(Make(1, L"", L"").GetExpression(), L"(0)");
  EXPECT_EQ(Make(3, L"", L"%1% x").GetExpression(), L"(%1% x)-(0)");
  for (const int type : {-1, 8})
    EXPECT_EQ(support::MessageOfExactly<std::logic_error>(
                  [type] { Make(type, L"a", L"b").GetExpression(); }),
              "Unhandled type to get expression");
}

TEST(Criterion, KeepsItsValuesWhenTheSidesDoNotCombine) {
  Criterion criterion = Make(4, L"a", L"b");
  criterion.SetValues(CDesignEntry(1.0), CDesignEntry(2.0), CDesignEntry(), true);
  const Criterion before = criterion;
  EXPECT_THROW(criterion.SetValues(CDesignEntry(Vec({1.0})), CDesignEntry(Vec({1.0, 2.0})),
                                   CDesignEntry(), true),
               std::exception);
  EXPECT_EQ(criterion, before);
  Criterion negative = Make(2, L"", L"b");
  negative.SetValues(CDesignEntry(), CDesignEntry(), CDesignEntry(1.0), true);
  EXPECT_TRUE(negative.GetValue().IsUninitialized());
  negative.Invalidate();
  EXPECT_TRUE(negative.NeedsEvaluation());
  EXPECT_EQ(negative.GetRhs(), L"b");
}

TEST(Criterion, JudgesEvaluatedValuesOnly) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    CDesignEntry value;
    bool is_invalid;
    bool is_violated;  // as a limit
  } cases[] = {{CDesignEntry(), true, false},
               {CDesignEntry(Scalar(nan)), true, false},
               {CDesignEntry(-HUGE_VAL), true, true},
               {CDesignEntry(L"text"), true, false},
               {CDesignEntry(-1), false, true},
               {CDesignEntry(Scalar(-1.0)), false, true},
               {CDesignEntry(-1e-16), false, false},
               {CDesignEntry(0.5), false, false},
               {CDesignEntry(Vec({-1.0, -2.0})), false, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    EXPECT_EQ(WithValue(0, c.value).IsValueInvalid(), c.is_invalid);
    for (int type = 0; type < 8; ++type)
      EXPECT_EQ(WithValue(type, c.value).IsViolated(), type >= 6 && c.is_violated);
    Criterion stale = WithValue(6, c.value);
    stale.Invalidate();
    EXPECT_FALSE(stale.IsValueInvalid());
    EXPECT_FALSE(stale.IsViolated());
  }
}
