#include "training/training_table.h"

#include "design/criterion.h"
#include "support/testing.h"
#include "training/train_study.h"

namespace corvath::training {
namespace {

TrainingTable SmallTable() {
  TrainingTable table;
  table.inputs = {L"a", L"b"};
  table.points.resize(4, 2);
  table.points << 1.0, 5.0, 2.0, 3.0, 3.0, 9.0, 4.0, 4.0;
  table.responses = {L"y"};
  table.values = Eigen::VectorXd::LinSpaced(4, 0.0, 1.0);
  return table;
}

TEST(TrainingTable, TellsWhatCannotBeTrainedOnAndWhere) {
  const auto refusal = [](auto change, const wchar_t* column = L"", Eigen::Index row = -1) {
    TrainingTable table = SmallTable();
    change(table);
    try {
      RequireTrainable(table);
    } catch (const TrainingError& error) {
      EXPECT_EQ(error.GetColumn(), column);
      EXPECT_EQ(error.GetRow().value_or(-1), row);
      return std::string(error.what());
    }
    return std::string("none");
  };
  EXPECT_EQ(refusal([](TrainingTable&) {}), "none");
  EXPECT_EQ(refusal([](TrainingTable& t) { t.values(1, 0) = std::nan(""); }), "none");
  EXPECT_EQ(refusal([](TrainingTable& t) { t.points *= 1e200; }), "none");  // squares overflow
  EXPECT_EQ(refusal([](TrainingTable& t) { t.points(2, 1) = std::nan(""); }, L"b", 2),
            "Input \"b\" of design 3 is not a number.");
  EXPECT_EQ(refusal([](TrainingTable& t) { t.inputs[1] = L"y"; }, L"y"),
            "The name \"y\" occurs twice.");
  EXPECT_EQ(refusal([](TrainingTable& t) { t.inputs[1] = L""; }), "A column has no name.");
  EXPECT_EQ(refusal([](TrainingTable& t) { t.inputs.pop_back(); }),
            "The table's sizes do not fit its names.");
  EXPECT_EQ(refusal([](TrainingTable& t) { t.responses.clear(); }), "The table has no responses.");
  EXPECT_EQ(refusal([](TrainingTable& t) { t.discrete = {L"c"}; }, L"c"),
            "The discrete input \"c\" is none of the inputs.");
  EXPECT_EQ(refusal([](TrainingTable& t) { t.points.setOnes(); }), "All inputs are constant.");
  EXPECT_EQ(refusal([](TrainingTable& t) { t.points.col(1) = 7.0 - 3.0 * t.points.col(0).array(); },
                    L"b"),
            "Input \"b\" repeats input \"a\": leave one of them out.");
}

TEST(TrainingTable, SeesConstantColumnsWhateverTheirScale) {
  const auto constant = [](double a, double b) {
    return IsConstantColumn(Eigen::Vector3d(a, b, std::nan("")));
  };
  EXPECT_TRUE(constant(3.0, 3.0));
  EXPECT_TRUE(constant(0.0, 0.0));
  EXPECT_TRUE(constant(1e6, 1e6 + 1e-8));
  EXPECT_FALSE(constant(1e6, 1e6 + 1e-3));
  EXPECT_FALSE(constant(0.0, 1e-30));
}

using algorithm::datatypes::CriterionDescription, algorithm::datatypes::CriterionSequence;

TEST(CriterionText, OneComparisonOutsideBracketsMakesALimit) {
  const struct {
    const wchar_t *text, *name;
    CriterionDescription::eType type;
    const wchar_t *lhs, *rhs;
  } cases[] = {
      {L"cost: 2*mass", L"cost", CriterionDescription::RHS_ANY, L"", L"2*mass"},
      {L" c : a <= 25 ", L"c", CriterionDescription::LIMIT_LHS_BELOW_RHS, L"a", L"25"},
      {L"c:max(abs(s))>=b[0]", L"c", CriterionDescription::LIMIT_LHS_ABOVE_RHS, L"max(abs(s))",
       L"b[0]"},
      {L"c: sum(s[0:1]) + (a<=b)", L"c", CriterionDescription::RHS_ANY, L"",
       L"sum(s[0:1]) + (a<=b)"},
      {L"side: #if x <= 0.5 #then 1 #else 2", L"side", CriterionDescription::RHS_ANY, L"",
       L"#if x <= 0.5 #then 1 #else 2"},
      {L"band: wave <= #if x <= 0.5 #then 1 #else 2", L"band",
       CriterionDescription::LIMIT_LHS_BELOW_RHS, L"wave", L"#if x <= 0.5 #then 1 #else 2"},
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

}  // namespace
}  // namespace corvath::training
