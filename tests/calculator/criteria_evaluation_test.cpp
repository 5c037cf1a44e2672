#include "calculator/criteria_evaluation.h"

#include "calculator/macro_file.h"
#include "calculator/reference_order.h"
#include "foundation/text.h"
#include "support/environment_variables.h"
#include "support/temporary_directory.h"
#include "support/testing.h"
#include "support/values.h"

namespace {

using corvath::algorithm::datatypes::CDesignEntry, corvath::algorithm::datatypes::Criterion,
    corvath::algorithm::datatypes::CriterionDescription, corvath::algorithm::datatypes::Design;
using corvath::calculator::CalculateCriteria, corvath::calculator::CriteriaEvaluation,
    corvath::calculator::CriteriaOptions;
using corvath::utils::ToUtf8;
using support::Scalar, support::Vec;

using Type = CriterionDescription;

Design MakeDesign(double x) {
  Design design({{L"x", CDesignEntry(x)}, {L"flag", CDesignEntry(true)}}, {});
  design.SetResponses(
      {{L"mass", CDesignEntry(Scalar(2.0 * x))}, {L"stress", CDesignEntry(Vec({-x, 3.0 * x, x}))}});
  return design;
}

void Add(Design& design, const wchar_t* name, Type::eType type, const wchar_t* lhs,
         const wchar_t* rhs) {
  design.GetCriteria().Append(name, Criterion(type, lhs, rhs));
}

double ValueOf(const Design& design, const wchar_t* name) {
  return design.GetCriteria().Get(name).GetValue().ToDouble();
}

/// "code name: message" of each problem.
std::vector<std::string> Problems(const Design& design) {
  std::vector<std::string> problems;
  for (const auto& info : design.GetStatus().GetMessages())
    problems.push_back(std::to_string(info.GetRunInfo()) + " " + ToUtf8(info.GetResponseName()) +
                       ": " + ToUtf8(info.GetMessage().front()));
  return problems;
}

TEST(CriteriaEvaluation, LastsWhileNothingOutsideTheDesignDecides) {
  const std::pair<const wchar_t*, bool> cases[] = {{L"x + max(stress)", true},
                                                   {L"missing + 1", true},
                                                   {L"rand(x, UNIFORM, [0, 1])", false},
                                                   {L"$user(x)", false},
                                                   {L"y = x", false}};
  for (const auto& [text, expected] : cases) {
    Design design = MakeDesign(0.5);
    Add(design, L"c", Type::RHS, L"", text);
    CriteriaEvaluation evaluation;
    EXPECT_FALSE(evaluation.IsLasting()) << "without a plan";
    evaluation.Calculate(design);
    EXPECT_EQ(evaluation.IsLasting(), expected) << ToUtf8(text);
  }
}

TEST(CriteriaEvaluation, EvaluatesEachTypeFromItsSides) {
  Design design = MakeDesign(1.5);
  // type, expected: of the sides mass = 3 and max(abs(stress)) = 4.5
  const std::pair<Type::eType, double> cases[] = {{Type::RHS_ANY, 4.5},
                                                  {Type::RHS, 4.5},
                                                  {Type::NEGATIVE_RHS, -4.5},
                                                  {Type::RHS_MINUS_LHS, 1.5},
                                                  {Type::LHS_MINUS_RHS_4, -1.5},
                                                  {Type::LHS_MINUS_RHS_5, -1.5},
                                                  {Type::LIMIT_LHS_BELOW_RHS, 1.5},
                                                  {Type::LIMIT_LHS_ABOVE_RHS, -1.5}};
  for (const auto& [type, expected] : cases)
    Add(design, (L"c" + std::to_wstring(type)).c_str(), type, L"mass", L"max(abs(stress))");
  const Design result = CalculateCriteria(design);
  for (const auto& [type, expected] : cases) {
    const Criterion& criterion =
        result.GetCriteria().Get(L"c" + std::to_wstring(static_cast<int>(type)));
    EXPECT_EQ(criterion.GetValue().ToDouble(), expected) << type;
    EXPECT_EQ(criterion.GetLhsValue().ToDouble(), 3.0);
    EXPECT_EQ(criterion.GetRhsValue().ToDouble(), 4.5);
    EXPECT_FALSE(criterion.NeedsEvaluation());
  }
  EXPECT_TRUE(Problems(result).empty());
  EXPECT_TRUE(design.GetCriteria()[0].second.NeedsEvaluation());  // the given design stays
}

TEST(CriteriaEvaluation, EvaluatesWhatACriterionDependsOnFirst) {
  Design design = MakeDesign(2.0);
  Add(design, L"third", Type::RHS, L"", L"second + first");
  Add(design, L"second", Type::LIMIT_LHS_BELOW_RHS, L"first", L"10");
  Add(design, L"first", Type::RHS, L"", L"#if flag #then mass*x #else 0");
  const Design result = CalculateCriteria(design);
  EXPECT_EQ(ValueOf(result, L"first"), 8.0);
  EXPECT_EQ(ValueOf(result, L"second"), 2.0);
  EXPECT_EQ(ValueOf(result, L"third"), 10.0);  // the value of second, not one of its sides
  EXPECT_TRUE(Problems(result).empty());
}

TEST(CriteriaEvaluation, ValuesDoNotDependOnTheOrderInWhichCriteriaStand) {
  // Each of the first 40 reads its successor twice: 2^40 reads if expressions were read. The others
  // read a later one through a macro, one that keeps its value, and one whose text is broken.
  const CalculatorTypeTraits::Macros macros{{L"plus", {L"a"}, L"a+called", L"", L""}};
  std::vector<std::pair<std::wstring, Criterion>> criteria;
  const auto add = [&](const std::wstring& name, const std::wstring& rhs) {
    criteria.emplace_back(name, Criterion(Type::RHS, L"", rhs));
  };
  for (int i = 0; i < 40; ++i) {
    const std::wstring next = i == 39 ? L"mass" : L"c" + std::to_wstring(i + 1);
    add(L"c" + std::to_wstring(i), L"(" + next + L"+" + next + L")/2 + 1");
  }
  add(L"calling", L"$plus(x)");
  add(L"called", L"10*x");
  add(L"reader", L"kept + 1");
  add(L"kept", L"nonsense(");
  criteria.back().second.SetValues({}, {}, CDesignEntry(42.0), false);
  add(L"lost", L"broken");
  add(L"broken", L"1 +");
  CriteriaEvaluation forward({}, macros);
  CriteriaEvaluation backward({}, macros);
  for (const double x : {1.0, 2.0, 3.0}) {
    for (const bool reversed : {false, true}) {
      Design design = MakeDesign(x);
      for (const auto& [name, criterion] : criteria) design.GetCriteria().Append(name, criterion);
      if (reversed) std::reverse(design.GetCriteria().begin(), design.GetCriteria().end());
      (reversed ? backward : forward).Calculate(design);
      EXPECT_EQ(ValueOf(design, L"c0"), 2 * x + 40);
      EXPECT_EQ(ValueOf(design, L"calling"), 11 * x);
      EXPECT_EQ(ValueOf(design, L"reader"), 43.0);
      EXPECT_TRUE(design.GetCriteria().Get(L"lost").GetValue().IsUninitialized());
      EXPECT_EQ(Problems(design),
                std::vector<std::string>{"209 broken: broken: Error while parsing\n1+\n ^"});
    }
  }
}

TEST(ReferenceOrder, PutsNumbersBehindThoseThatTheyReferTo) {
  using corvath::calculator::OrderByReferences;
  using Order = std::vector<std::size_t>;
  EXPECT_EQ(OrderByReferences({{}, {}, {}}), (Order{0, 1, 2}));
  EXPECT_EQ(OrderByReferences({{2}, {}, {3}, {}}), (Order{3, 2, 0, 1}));
  EXPECT_EQ(OrderByReferences({{1}, {2}, {0}}), (Order{0, 2, 1}));  // a cycle begins with its first
  // Random graphs, against the closure of their references by Warshall's algorithm.
  std::mt19937 random(3);
  for (int run = 0; run < 300; ++run) {
    const std::size_t n = 1 + random() % 12;
    std::vector<Order> references(n);
    std::vector<std::vector<bool>> reaches(n, std::vector<bool>(n));
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = 0; j < n; ++j) {
        reaches[i][j] = random() % 8 == 0;
        if (reaches[i][j]) references[i].push_back(j);
      }
    for (std::size_t k = 0; k < n; ++k)
      for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = 0; j < n; ++j)
          if (reaches[i][k] && reaches[k][j]) reaches[i][j] = true;
    Order place(n, n);
    const Order order = OrderByReferences(references);
    ASSERT_EQ(order.size(), n);
    for (std::size_t i = 0; i < n; ++i) place[order[i]] = i;
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = 0; j < n; ++j) {
        if (!reaches[i][j]) continue;
        const bool is_first = std::all_of(order.begin(), order.end(), [&](std::size_t k) {
          return k >= i || !reaches[k][i] || !reaches[i][k];
        });
        EXPECT_TRUE(reaches[j][i] || place[j] < place[i]) << i << " refers to " << j;
        EXPECT_TRUE(!reaches[j][i] || !is_first || place[i] <= place[j])
            << i << " is the first of a cycle with " << j;
      }
  }
}

TEST(CriteriaEvaluation, FailuresConcernOneCriterionAlone) {
  Design design = MakeDesign(2.0);
  Add(design, L"c1", Type::RHS, L"", L"c2");
  Add(design, L"c2", Type::RHS, L"", L"c1");
  Add(design, L"broken", Type::RHS, L"", L"1 +");
  Add(design, L"unknown", Type::RHS, L"", L"2*nothing");
  Add(design, L"vector", Type::RHS, L"", L"stress");
  Add(design, L"any", Type::RHS_ANY, L"", L"stress");
  Add(design, L"sides", Type::RHS_MINUS_LHS, L"true", L"1");
  Add(design, L"good", Type::RHS, L"", L"any[1]");
  const Design result = CalculateCriteria(design);
  for (const wchar_t* name : {L"c1", L"c2", L"broken", L"unknown", L"vector"})
    EXPECT_TRUE(result.GetCriteria().Get(name).GetValue().IsUninitialized()) << name;
  EXPECT_EQ(result.GetCriteria().Get(L"any").GetValue().GetVariant(), Vec({-2.0, 6.0, 2.0}));
  EXPECT_TRUE(result.GetCriteria().Get(L"sides").NeedsEvaluation());
  EXPECT_EQ(ValueOf(result, L"good"), 6.0);
  const auto problems = Problems(result);
  ASSERT_EQ(problems.size(), 3u);
  EXPECT_EQ(problems[0], "209 broken: broken: Error while parsing\n1+\n ^");
  EXPECT_EQ(problems[1], "209 unknown: unknown: Object \"nothing\" not known.");
  EXPECT_EQ(problems[2].substr(0, 18), "210 sides: sides: ");

  CriteriaOptions options;
  options.allow_all_kinds = true;
  const Design all = CalculateCriteria(design, options);
  EXPECT_EQ(all.GetCriteria().Get(L"vector").GetValue().GetVariant(), Vec({-2.0, 6.0, 2.0}));
}

TEST(CriteriaEvaluation, ReportsInputsThatAreNoObjects) {
  Design design({{L"pi", CDesignEntry(3.0)}, {L"text", CDesignEntry(L"steel")}}, {});
  design.SetResponses({{L"none", CDesignEntry()},
                       {L"nan", CDesignEntry(std::nan(""))},
                       {L"2nd", CDesignEntry(1.0)}});
  Add(design, L"c", Type::RHS, L"", L"pi");
  const Design result = CalculateCriteria(design);
  EXPECT_EQ(Problems(result),
            (std::vector<std::string>{
                "103 pi: Cannot use object for calculations: Can't overwrite immutable object "
                "\"pi\"",
                "103 text: " + Problems(result)[1].substr(10),
                "103 none: \"none\" is uninitialized", "103 nan: \"nan\" is not a number",
                "103 2nd: Cannot use object for calculations: Invalid identifier: \"2nd\""}));
  EXPECT_EQ(ValueOf(result, L"c"), 3.141592653589793);
}

TEST(CriteriaEvaluation, AMacroOfOneDesignIsUnknownToTheNext) {
  CriteriaEvaluation evaluation;
  for (const bool defines : {true, false, true, false}) {
    Design design = MakeDesign(2.0);
    if (defines) Add(design, L"definition", Type::RHS_ANY, L"", L"$m(y) = 3*y");
    Add(design, L"call", Type::RHS, L"", L"$m(x)");
    evaluation.Calculate(design);
    EXPECT_EQ(design.GetCriteria().Get(L"call").GetValue().IsUninitialized(), !defines);
    EXPECT_EQ(Problems(design).empty(), defines);
  }
}

TEST(CriteriaEvaluation, OneDesignLeavesNoTraceInTheNext) {
  // A text or macro that only reads lets a plan serve again; one that defines something, or reads a
  // criterion that comes later, does not.
  const CalculatorTypeTraits::Macros macros{
      {L"add_mass", {L"a"}, L"(a)+mass", L"", L""},
      {L"add_late", {L"a"}, L"$add_mass((a)+late)-mass", L"", L""},
      {L"helped", {L"a"}, L"max(a, helper = a)", L"", L""},
      {L"deep", {L"a"}, L"$helped(a)", L"", L""},
  };
  for (const wchar_t* probe :
       {L"x + mass", L"max(3*x, helper = x)", L"#if x > 2 #then late - 7*x #else 3*x",
        L"$add_mass(x)", L"#if x > 2 #then $deep(x) + mass #else 3*x",
        L"#if x > 2 #then $add_late(x) - 8*x #else 3*x"}) {
    CriteriaEvaluation evaluation({}, macros);
    for (const double x : {1.0, 3.0, 2.0, 4.0}) {
      Design design = MakeDesign(x);
      Add(design, L"before", Type::RHS, L"", L"helper");
      Add(design, L"probe", Type::RHS, L"", probe);
      Add(design, L"late", Type::RHS, L"", L"10*x");
      Add(design, L"sum", Type::RHS, L"", L"late + mass");
      Add(design, L"error", Type::RHS, L"", L"$PERCENT_ERROR(mass, x)");
      evaluation.Calculate(design);
      EXPECT_EQ(ValueOf(design, L"probe"), 3 * x) << ToUtf8(probe);
      EXPECT_EQ(ValueOf(design, L"sum"), 12 * x);
      EXPECT_EQ(ValueOf(design, L"error"), 50.0);
      EXPECT_EQ(Problems(design),
                std::vector<std::string>{"209 before: before: Object \"helper\" not known."});
    }
  }
}

TEST(CriteriaEvaluation, TextsCallTheUsersMacros) {
  const support::UserDirectoryVariables variables;
  const support::TemporaryDirectory home;
  setenv("HOME", home.GetPath().c_str(), 1);
  corvath::calculator::SaveMacros({}, {{L"twice", {L"a"}, L"2*(a)", L"", L""}});
  Design design = MakeDesign(1.5);
  Add(design, L"limit", Type::LIMIT_LHS_BELOW_RHS, L"$twice(x)",
      L"$SIG_MAX_Y(xydata([0,1],[x,9]))");
  Add(design, L"none", Type::RHS, L"", L"$thrice(x)");
  const Design result = CalculateCriteria(design);
  EXPECT_EQ(ValueOf(result, L"limit"), 6.0);
  EXPECT_EQ(Problems(result),
            std::vector<std::string>{"209 none: none: Unknown macro \"$thrice\" called"});
  EXPECT_EQ(Problems(CalculateCriteria(design, {}, CalculatorTypeTraits::Macros())).front(),
            "209 limit: limit: Unknown macro \"$twice\" called");
}

TEST(CriteriaEvaluation, APlanServesOnlyDesignsOfItsKind) {
  CriteriaEvaluation evaluation;
  Design first = MakeDesign(1.0);
  Add(first, L"c", Type::RHS, L"", L"mass");
  evaluation.Calculate(first);
  EXPECT_EQ(ValueOf(first, L"c"), 2.0);

  // The same names in another order, then others.
  for (const auto& [a, b] : {std::pair{L"a", L"b"}, {L"b", L"a"}, {L"u", L"v"}, {L"a", L"v"}}) {
    Design design = MakeDesign(1.0);
    design.SetResponses({{a, CDesignEntry(10.0)}, {b, CDesignEntry(20.0)}});
    Add(design, L"d", Type::RHS, L"", L"2*a");
    evaluation.Calculate(design);
    const bool has_a = a == std::wstring(L"a") || b == std::wstring(L"a");
    EXPECT_EQ(Problems(design).empty(), has_a);
    if (!has_a) continue;
    EXPECT_EQ(ValueOf(design, L"d"), a == std::wstring(L"a") ? 20.0 : 40.0);
  }

  Design other({{L"y", CDesignEntry(5.0)}}, {});
  other.SetResponses({{L"mass", CDesignEntry(7.0)}});
  Add(other, L"c", Type::RHS, L"", L"mass + y");
  Add(other, L"d", Type::RHS, L"", L"x");
  evaluation.Calculate(other);
  EXPECT_EQ(ValueOf(other, L"c"), 12.0);
  EXPECT_EQ(Problems(other), std::vector<std::string>{"209 d: d: Object \"x\" not known."});
}

TEST(CriteriaEvaluation, RowsGiveWhatDesignsGiveOneByOne) {
  Design design({{L"x", CDesignEntry(1.0)}, {L"mass", CDesignEntry(1.0)}}, {});
  design.SetResponses({{L"mass", CDesignEntry(1.0)}, {L"stress", CDesignEntry(Vec({1.0, 1.0}))}});
  for (const Type::eType type :
       {Type::RHS_ANY, Type::RHS, Type::NEGATIVE_RHS, Type::RHS_MINUS_LHS, Type::LHS_MINUS_RHS_4,
        Type::LHS_MINUS_RHS_5, Type::LIMIT_LHS_BELOW_RHS, Type::LIMIT_LHS_ABOVE_RHS})
    Add(design, (L"c" + std::to_wstring(type)).c_str(), type, L"mass", L"sqrt(stress[1]) + x");
  Add(design, L"x y", Type::RHS, L"", L"c7 - c6*last");  // a name that no text reads
  Add(design, L"last", Type::NEGATIVE_RHS, L"", L"stress[0] - mass");
  Add(design, L"macro", Type::LIMIT_LHS_BELOW_RHS, L"$PERCENT_ERROR(mass, x)", L"100");
  CriteriaEvaluation evaluation;
  evaluation.Calculate(design);
  ASSERT_TRUE(evaluation.TakesRows());

  constexpr std::size_t kRows = 5;
  const double x[kRows] = {1.0, -2.0, 0.5, 3.0, std::nan("")};
  const double mass[kRows] = {2.0, 0.1, 0.7, 4.0, 1.0};
  const double first[kRows] = {5.0, 4.0, 0.7, 1.5, 1.0};  // less mass it is 0 in the third row
  const double second[kRows] = {2.0, 9.0, 1.0, -1.0, 1.0};
  const std::size_t count = design.GetCriteria().size();
  std::vector<double> values(kRows * count);
  constexpr std::size_t kWhole = corvath::calculator::ScalarProgram::kWhole;
  evaluation.CalculateRows({x, first}, {{0, kWhole, mass}, {1, 0, first}, {1, 1, second}}, kRows,
                           values.data());
  for (std::size_t i = 0; i < kRows; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(std::isnan(values[i * count]), i >= 2);  // a zero, a root that is complex, a NaN
    if (i >= 2) continue;
    Design alone = design;
    alone.SetParameters({{L"x", CDesignEntry(x[i])}, {L"mass", CDesignEntry(first[i])}});
    alone.SetResponses(
        {{L"mass", CDesignEntry(mass[i])}, {L"stress", CDesignEntry(Vec({first[i], second[i]}))}});
    for (auto& criterion : alone.GetCriteria()) criterion.second.Invalidate();
    const Design expected = CalculateCriteria(alone);
    for (std::size_t c = 0; c < count; ++c)
      EXPECT_EQ(values[i * count + c], expected.GetCriteria()[c].second.GetValue().ToDouble());
  }
}

TEST(CriteriaEvaluation, RowsAreForProgramsAlone) {
  for (const wchar_t* const text : {L"max(stress)", L"", L"1 +", L"missing[", L"y = x"}) {
    Design design = MakeDesign(0.5);
    Add(design, L"fine", Type::RHS, L"", L"2*x");
    Add(design, L"c", Type::RHS_MINUS_LHS, text, L"x");
    CriteriaEvaluation evaluation;
    EXPECT_FALSE(evaluation.TakesRows());
    evaluation.Calculate(design);
    EXPECT_FALSE(evaluation.TakesRows()) << ToUtf8(text);
  }
}

}  // namespace
