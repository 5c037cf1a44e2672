#include "design/named_sequence.h"
#include "foundation/exception.h"
#include "literature/plate_project.h"
#include "project/records/algorithm_info.h"
#include "project/records/zel_information.h"
#include "solver/zel_solver.h"
#include "support/stub_surrogate.h"
#include "support/testing.h"

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>

#include <thread>

namespace corvath::zel {
namespace {

using namespace algorithm::datatypes;
using namespace literature;
using namespace support;
using namespace testing;
using utils::log::VectorLog;

constexpr auto kUnbounded = ExtrapolationType::kUnbounded;
constexpr auto kDataBounds = ExtrapolationType::kDataBounds;
constexpr auto kParameterLimits = ExtrapolationType::kParameterLimits;
const double kNaN = std::numeric_limits<double>::quiet_NaN();

/// A quadratic through 40 values of a polynomial of degree 2, with values up to 60.
constexpr double kFit = 1e-10;

class Pipeline : public testing::Test {
 protected:
  Pipeline() : project_(MakePlateProject()) { solver_.SetLogger(log_); }

  ZELSolver& Solver() {
    if (!is_open_) {
      solver_.GetProject() = project_;
      is_open_ = solver_.Initialize();
      EXPECT_TRUE(is_open_);
    }
    return solver_;
  }
  /// Whether a line of the log holds `text`.
  bool Logged(const std::wstring& text) const {
    for (const auto& line : log_->GetLines())
      if (line.second.find(text) != std::wstring::npos) return true;
    return false;
  }
  std::vector<double> Responses(const Eigen::MatrixXd& designs) {
    return Solver().ApproximateMatrix(designs, false, kUnbounded, true).responses;
  }

  VRDB project_;
  boost::shared_ptr<VectorLog> log_ = boost::make_shared<VectorLog>();
  ZELSolver solver_{false};
  bool is_open_ = false;
};

const Eigen::MatrixXd kDesigns{{0.0, 0.5, 12.0}, {1.5, -0.25, 18.0}};

TEST_F(Pipeline, GivesEachModelItsOwnOrderOfColumnsAndGradientsDesignByDesign) {
  // The model of "stress[2]" was trained with the inputs in another order; "mass" keeps its own.
  const std::vector<std::wstring> order{kPlateInputs[2], kPlateInputs[0], kPlateInputs[1]};
  const Eigen::MatrixXd points = literature::PlateDesigns();
  Eigen::MatrixXd reordered(points.rows(), 3);
  Eigen::VectorXd values(points.rows());
  for (Eigen::Index d = 0; d < points.rows(); ++d) {
    reordered.row(d) << points(d, 2), points(d, 0), points(d, 1);
    values(d) = PlateOutput(4, points(d, 0), points(d, 1), points(d, 2));
  }
  SurrogateInfo info = literature::MakeRegression(SurrogateInfo(L"stress", 2), reordered, values,
                                                  {true, true, true});
  info.SetParameters(order, {true, true, true});
  GetModels(project_).AddOrReplace(info);

  const auto responses = Responses(kDesigns);
  EXPECT_NEAR(responses[8], PlateOutput(4, 0.0, 0.5, 12.0), kFit);
  EXPECT_NEAR(responses[1], PlateOutput(0, 1.5, -0.25, 18.0), kFit);

  const auto gradients = Solver().GradientsPerResponse(L"stress[2]", kDesigns, kUnbounded, true);
  ASSERT_EQ(gradients.size(), 6u);
  for (Eigen::Index d = 0; d < 2; ++d)
    for (Eigen::Index i = 0; i < 3; ++i)
      EXPECT_NEAR(gradients[static_cast<std::size_t>(3 * d + i)],
                  literature::PlateGradient(4, kDesigns(d, 0), kDesigns(d, 1), kDesigns(d, 2))(i),
                  1e-6);  // central differences over 1e-4 of the range, values near 60
}

TEST_F(Pipeline, AFailingResponseCostsOnlyItsOwnValues) {
  struct Failure {
    const wchar_t* line;
    boost::shared_ptr<support::StubSurrogate> model;
  };
  const auto stub = [] { return boost::make_shared<support::StubSurrogate>(); };
  Failure throws{L"Approximation for response \"stress[1]\" failed: overflow", stub()};
  throws.model->approximate = [](const auto&) -> Eigen::VectorXd {
    throw std::runtime_error("overflow");
  };
  Failure short_result{
      L"Approximation for response \"stress[1]\" failed with incorrect result size.", stub()};
  short_result.model->approximate = [](const auto&) { return Eigen::VectorXd(1); };
  Failure unbuilt{L"Approximation impossible. Check failed.", stub()};
  unbuilt.model->is_built = false;
  const Failure missing{L"Approximation impossible. No metamodel initialized.", nullptr};

  for (const Failure& failure : {throws, short_result, unbuilt, missing}) {
    SetModel(project_, L"stress[1]", failure.model);
    is_open_ = false;
    const auto responses = Responses(kDesigns);
    ASSERT_EQ(responses.size(), 10u);
    for (std::size_t j = 0; j < 10; ++j) EXPECT_EQ(std::isnan(responses[j]), j / 2 == 3) << j;
    EXPECT_TRUE(Logged(failure.line));

    const auto designs = Solver().ApproximateDesigns({}, false, kUnbounded, true, kDesigns);
    EXPECT_TRUE(designs.empty()) << "no designs to fill";
  }
}

TEST_F(Pipeline, DesignsGetTheSameNumbersMergedByBaseName) {
  const auto stub = boost::make_shared<support::StubSurrogate>();
  stub->is_built = false;
  SetModel(project_, L"stress[1]", stub);
  DesignManager designs;
  for (Eigen::Index d = 0; d < 2; ++d) {
    EntrySequence parameters;  // y is taken from the reference design in the second
    parameters.Append(kPlateInputs[0], CDesignEntry(kDesigns(d, 0)));
    if (d == 0) parameters.Append(kPlateInputs[1], CDesignEntry(kDesigns(d, 1)));
    parameters.Append(kPlateInputs[2], CDesignEntry(kDesigns(d, 2)));
    Design design(parameters, DesignId(static_cast<std::uint64_t>(10 * d)));
    design.SetResponses({{L"mass", CDesignEntry(5.0)}, {L"other", CDesignEntry(6.0)}});
    designs.Add(design);
  }
  Eigen::MatrixXd expected_designs = kDesigns;
  expected_designs(1, 1) = 0.0;
  const auto expected = Responses(expected_designs);
  const auto result =
      Solver().ApproximateDesigns(designs, true, kDataBounds, true, Eigen::MatrixXd());
  ASSERT_EQ(result.size(), 2u);
  for (std::size_t d = 0; d < 2; ++d) {
    const auto& responses = result[d].GetResponses();
    EXPECT_EQ(result[d].GetId(), designs[d].GetId());
    EXPECT_EQ(responses.Get(L"mass").ToDouble(), expected[d]);
    EXPECT_TRUE(responses.Get(L"other").IsUninitialized());
    const auto& stress = responses.Get(L"stress").Peek<CDesignEntry::Variant>()->GetVector();
    ASSERT_EQ(stress.size(), 3u);
    EXPECT_EQ(stress[0].real(), expected[4 + d]);
    EXPECT_TRUE(std::isnan(stress[1].real())) << "its model is not built";
    EXPECT_EQ(stress[2].real(), expected[8 + d]);
    EXPECT_FALSE(responses.Has(L"stress[0]"));
    EXPECT_EQ(result[d].GetCriteria().Get(L"goal").GetValue().ToDouble(), expected[d]);
  }
}

TEST_F(Pipeline, ACriterionThatCannotBeEvaluatedIsNaNAlone) {
  SetModel(project_, L"mass", nullptr);
  const auto result = Solver().ApproximateMatrix(kDesigns, true, kUnbounded, true);
  for (std::size_t d = 0; d < 2; ++d) {
    EXPECT_TRUE(std::isnan(result.criteria[2 * d]));
    EXPECT_EQ(result.criteria[2 * d + 1], 3.0 - result.responses[4 + d]);
  }
  std::size_t lines = 0;
  for (const auto& line : log_->GetLines())
    lines += line.second == L"Error calculating criteria: goal: Object \"mass\" not known.";
  EXPECT_EQ(lines, 1u);  // not one for each design
}

TEST_F(Pipeline, CriteriaOfManyRowsAreThoseOfEachRow) {
  const auto model = boost::make_shared<support::StubSurrogate>();
  model->approximate = [](const auto& x) -> Eigen::VectorXd {
    return x.col(0).unaryExpr([](double number) { return std::log(number); });
  };
  SetModel(project_, L"mass", model);
  Eigen::MatrixXd designs = Eigen::MatrixXd::Random(200, 3);
  designs.col(0) = designs.col(0).array() + 0.7;  // some below 0, where there is no logarithm
  const auto all = Solver().ApproximateMatrix(designs, true, kUnbounded, true).criteria;
  for (Eigen::Index d = 0; d < designs.rows(); ++d) {
    ZELSolver other(false);
    other.GetProject() = project_;
    ASSERT_TRUE(other.Initialize());
    const auto one = other.ApproximateMatrix(designs.row(d), true, kUnbounded, true).criteria;
    for (std::size_t c = 0; c < 2; ++c)
      EXPECT_THAT(all[2 * static_cast<std::size_t>(d) + c],
                  std::isnan(one[c]) ? IsNan() : Matcher<double>(one[c]))
          << d;
  }
}

TEST_F(Pipeline, ACalculatorThatIsKeptTellsEachCallWhatANewOneWould) {
  const auto model = boost::make_shared<support::StubSurrogate>();
  model->approximate = [](const auto& x) -> Eigen::VectorXd {
    if (x(0, 0) > 1.0) throw std::runtime_error("overflow");
    return 2.0 * x.col(0);
  };
  SetModel(project_, L"mass", model);
  for (const double x : {0.5, 1.5, 0.25, 1.75, 1.25}) {
    Solver().SetLogger(log_ = boost::make_shared<VectorLog>());
    const auto result =
        Solver().ApproximateMatrix(Eigen::RowVector3d(x, 0.0, 12.0), true, kUnbounded, true);
    EXPECT_EQ(Logged(L"Error calculating criteria: goal: Object \"mass\" not known."), x > 1.0)
        << x;
    EXPECT_THAT(result.criteria[0], x > 1.0 ? IsNan() : Matcher<double>(2.0 * x)) << x;
    EXPECT_EQ(result.criteria[1], 3.0 - result.responses[2]) << x;
  }
}

TEST_F(Pipeline, ChecksBoundsWithATolerance) {
  const struct {
    int column;
    double value;
    const char* message;
  } cases[] = {
      {0, 0.0, ""},
      {0, -0.9e-8, ""},
      {0, -2e-8, "Value -2e-08 of Parameter x violates bounds: [0, 2]"},
      {1, 1.0 + 0.9e-8, ""},
      {1, 1.0 + 2e-8, "Value 1 of Parameter y violates bounds: [-1, 1]"},
      {1, -1234567.0, "Value -1.23457e+06 of Parameter y violates bounds: [-1, 1]"},
      {1, kNaN, ""},
      {0, HUGE_VAL, "Value inf of Parameter x violates bounds: [0, 2]"},
  };
  for (const auto& c : cases) {
    Eigen::MatrixXd designs{{0.0, -1.0, 10.0}, {2.0, 1.0, 20.0}};
    designs(1, c.column) = c.value;
    for (const auto type : {kDataBounds, kParameterLimits}) {
      EXPECT_EQ(support::MessageOf([&] { Solver().CheckBounds(designs, type, true); }), c.message);
      EXPECT_EQ(Solver().CheckBounds(designs, type, false), *c.message != '\0');
    }
    EXPECT_FALSE(Solver().CheckBounds(designs, kUnbounded, true));
  }
  EXPECT_TRUE(Logged(L"Value -2e-08 of Parameter x violates bounds: [0, 2]"));
  const Eigen::MatrixXd twice{{1.0, 0.0, 9.0}, {5.0, 5.0, 15.0}};  // told design by design
  EXPECT_THAT(support::MessageOf([&] { Solver().CheckBounds(twice, kDataBounds, true); }),
              HasSubstr("Value 9 of Parameter"));
  EXPECT_MESSAGE("Extrapolation type is not defined.",
                 Solver().CheckBounds(kDesigns, static_cast<ExtrapolationType>(3), true));
}

TEST_F(Pipeline, ParameterLimitsAreNotTheDataBounds) {
  // The data end at 2; the parameter itself may go up to 3.
  auto x = project_.GetParameterManager().GetParameter(L"x");
  x.SetDeterministicProperty(algorithm::datatypes::DeterministicProperties::Continuous(0.0, 3.0));
  project_.GetParameterManager().ReplaceParameter(x);
  const Eigen::MatrixXd designs{{2.5, 0.0, 15.0}};
  EXPECT_FALSE(Solver().CheckBounds(designs, kParameterLimits, false));
  EXPECT_TRUE(Solver().CheckBounds(designs, kDataBounds, false));
}

TEST_F(Pipeline, OutOfBoundsFailsAndIsLogged) {
  const Eigen::MatrixXd designs{{2.5, 0.0, 15.0}};
  const std::string message = "Value 2.5 of Parameter x violates bounds: [0, 2]";
  EXPECT_MESSAGE(message, Solver().ApproximateMatrix(designs, false, kDataBounds, true));
  EXPECT_TRUE(Logged(L"Error in approximation: Value 2.5 of Parameter x"));
  for (const double value :
       Solver().ApproximateMatrix(designs, false, kDataBounds, false).responses)
    EXPECT_TRUE(std::isnan(value));
  EXPECT_MESSAGE(message, Solver().ErrorsPerResponse(L"mass", designs, kDataBounds, true));
  EXPECT_THAT(Solver().ErrorsPerResponse(L"mass", designs, kDataBounds, false), IsEmpty());
  EXPECT_THAT(Solver().ErrorsAllResponses(designs, kDataBounds, false), IsEmpty());
}

TEST_F(Pipeline, RefusesAnotherNumberOfColumns) {
  const Eigen::MatrixXd designs = Eigen::MatrixXd::Zero(4, 2);
  EXPECT_ERROR(utils::out_of_range, "3 input columns expected.", Responses(designs));
  EXPECT_THAT(Solver().ApproximateMatrix(designs, false, kUnbounded, false).responses, IsEmpty());
}

TEST_F(Pipeline, BuildsErrorsWhenTheyAreAskedForOnceForAllThreads) {
  const auto model = GetModels(project_).GetSurrogateInfo(L"mass").GetSurrogate();
  const std::unique_ptr<math::metamodel::SurrogateBase> with_errors(model->Clone());
  with_errors->BuildErrors();
  ASSERT_GT(with_errors->GetResiduals().size(), 0);
  ZELSolver& solver = Solver();
  solver.ApproximateMatrix(kDesigns, true, kDataBounds, true);
  solver.GradientsPerResponse(L"mass", kDesigns, kDataBounds, true);
  EXPECT_EQ(model->GetResiduals().size(), 0) << "nobody asked";

  std::vector<std::vector<double>> results(4);
  std::vector<std::thread> callers;
  for (auto& result : results)
    callers.emplace_back(
        [&] { result = solver.ErrorsPerResponse(L"mass", kDesigns, kDataBounds, true); });
  for (auto& caller : callers) caller.join();
  EXPECT_EQ(results[0].size(), 10u);
  for (const auto& result : results) EXPECT_EQ(result, results[0]);
  EXPECT_EQ(model->GetResiduals(), with_errors->GetResiduals());
  EXPECT_EQ(model->GetWeightErrorRadius(), with_errors->GetWeightErrorRadius());
}

TEST_F(Pipeline, ErrorsLeaveOutIncompleteAndUnlistedResponses) {
  KeepModels(project_, {L"mass", L"flat", L"stress[0]", L"stress[2]"});
  auto& mapping = project_.GetAlgorithmInfo()->GetZELInformation()->response_to_cv_mapping_;
  mapping = {{L"a", L"flat"}, {L"b", L"stress"}};

  const auto all = Solver().ErrorsAllResponses(kDesigns, kDataBounds, true);
  ASSERT_EQ(all.size(), 4u * 10u) << "mass, flat, stress[0], stress[2]";
  for (std::size_t j = 0; j < all.size(); ++j) EXPECT_EQ(std::isnan(all[j]), j / 10 != 1) << j;

  mapping = {{L"a", L"stress"}};
  is_open_ = false;
  EXPECT_THAT(Solver().ErrorsAllResponses(kDesigns, kDataBounds, true), IsEmpty());
}

TEST_F(Pipeline, EvaluationOfAnUnknownResponseFails) {
  EXPECT_MESSAGE("Surrogate info with name \"none\" does not exist.",
                 Solver().GradientsPerResponse(L"none", kDesigns, kUnbounded, true));
  EXPECT_THAT(Solver().GradientsPerResponse(L"none", kDesigns, kUnbounded, false), IsEmpty());

  SetModel(project_, L"mass", nullptr);
  is_open_ = false;
  EXPECT_THAT(Solver().ErrorsPerResponse(L"mass", kDesigns, kUnbounded, true), IsEmpty());
  EXPECT_TRUE(Logged(L"Evaluation impossible. No metamodel initialized."));
}

}  // namespace
}  // namespace corvath::zel
