#include "design/criterion.h"
#include "support/message_of.h"
#include "training/train_study.h"

#include <gtest/gtest.h>

namespace corvath::training {
namespace {

using algorithm::datatypes::Criterion;
using algorithm::datatypes::CriterionDescription;
using algorithm::datatypes::CriterionSequence;

TEST(CriterionText, OneComparisonOutsideBracketsMakesALimit) {
  const struct {
    const wchar_t* text;
    const wchar_t* name;
    CriterionDescription::eType type;
    const wchar_t* lhs;
    const wchar_t* rhs;
  } cases[] = {
      {L"cost: 2*mass", L"cost", CriterionDescription::RHS_ANY, L"", L"2*mass"},
      {L" c : a <= 25 ", L"c", CriterionDescription::LIMIT_LHS_BELOW_RHS, L"a", L"25"},
      {L"c:max(abs(s))>=b[0]", L"c", CriterionDescription::LIMIT_LHS_ABOVE_RHS, L"max(abs(s))",
       L"b[0]"},
      {L"c: sum(s[0:1]) + (a<=b)", L"c", CriterionDescription::RHS_ANY, L"",
       L"sum(s[0:1]) + (a<=b)"},
  };
  for (const auto& expected : cases) {
    CriterionSequence criteria;
    ParseCriterion(expected.text, criteria);
    ASSERT_EQ(criteria.size(), 1u);
    EXPECT_EQ(criteria[0].first, expected.name);
    const CriterionDescription& description = criteria[0].second.GetDescription();
    EXPECT_EQ(description.type_, expected.type);
    EXPECT_EQ(description.lhs_, expected.lhs);
    EXPECT_EQ(description.rhs_, expected.rhs);
  }
}

TEST(CriterionText, RefusesWhatIsNoCriterion) {
  const auto refusal = [](const wchar_t* text) {
    CriterionSequence criteria;
    ParseCriterion(L"known: 1", criteria);
    const std::string message =
        support::MessageOfExactly<TrainingError>([&] { ParseCriterion(text, criteria); });
    EXPECT_EQ(criteria.size(), 1u);
    return message;
  };
  EXPECT_EQ(refusal(L"a+b"), "Criterion \"a+b\" has no name; write \"name: expression\".");
  EXPECT_EQ(refusal(L": a"), "Criterion \": a\" has no name; write \"name: expression\".");
  EXPECT_EQ(refusal(L"known: a"), "There are two criteria \"known\".");
  EXPECT_EQ(refusal(L"c:"), "Criterion \"c\" lacks an expression.");
  EXPECT_EQ(refusal(L"c: <= 3"), "Criterion \"c\" lacks an expression.");
  EXPECT_EQ(refusal(L"c: 1 <= a <= 3"), "Criterion \"c\" compares more than once.");
  EXPECT_EQ(refusal(L"c: a + * b"), "Criterion \"c\": \"a+*b\" is no expression from \"+*b\" on.");
}

}  // namespace
}  // namespace corvath::training
