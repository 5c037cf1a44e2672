#include "training/model_competition.h"

#include "foundation/parallel.h"
#include "literature/hindsight.h"
#include "literature/published_functions.h"
#include "stochastics/normal_quantile.h"
#include "support/points.h"
#include "support/testing.h"
#include "training/training_table.h"

namespace corvath::training {
namespace {

using math::metamodel::BitVector, math::metamodel::CountBits;

ChosenModel Compete(const ResponseData& data, const TrainSettings& settings = {}) {
  return RunCompetition(data, settings, [](const std::wstring&, double) {});
}

const literature::PublishedFunction& Function(const std::string& name) {
  const auto& functions = literature::PublishedFunctions();
  return *std::find_if(functions.begin(), functions.end(),
                       [&](const auto& function) { return function.name == name; });
}

ResponseData DataOf(const literature::Sample& sample) {
  const TrainSettings settings;
  return MakeResponseData(sample.points, sample.values, settings.num_groups, settings.seed);
}

TEST(ModelCompetition, ChoosesWellAndIsHonestOnPublishedFunctions) {
  // bench/train_report prints the whole table.
  int num_honest = 0;
  int num_well_chosen = 0;
  int num_all = 0;
  double sum_of_differences = 0.0;
  for (std::size_t k = 0; k < literature::kNumTested; ++k) {
    const literature::PublishedFunction& function = literature::PublishedFunctions()[k];
    const ResponseData data = DataOf(literature::LatinHypercubeSample(function, 100, 1));
    const ChosenModel chosen = Compete(data);
    const literature::Hindsight hindsight = literature::LookBack(function, chosen, data, 1001);
    ++num_all;
    num_well_chosen += literature::IsWellChosen(hindsight.ratio);
    const double difference = chosen.GetCoP() - hindsight.determination;
    num_honest += literature::IsHonest(difference);
    sum_of_differences += difference;
  }
  EXPECT_GE(num_all, 10);
  EXPECT_GE(10 * num_honest, 9 * num_all);
  EXPECT_NEAR(sum_of_differences / num_all, 0.0, 0.02);
  EXPECT_GE(10 * num_well_chosen, 8 * num_all);
}

TEST(ModelCompetition, FindsThreeInputsOfTwenty) {
  for (const char* name : {"Morris", "Curved"}) {
    const BitVector used = Compete(DataOf(literature::LatinHypercubeSample(Function(name), 100, 1)))
                               .model->GetVariableSelection();
    EXPECT_TRUE(used[0] && used[1] && used[2]) << name;
    // Curved keeps a fourth input, whose radius is long.
    EXPECT_LE(CountBits(used), name == std::string("Morris") ? 3u : 4u) << name;
  }
}

TEST(ModelCompetition, PureNoiseIsToldAsNothing) {
  // Of 20 inputs some explain a little by luck; models chosen without what they predict do not.
  double told = 0.0;
  constexpr int kSamples = 5;
  for (std::uint64_t seed = 1; seed <= kSamples; ++seed) {
    const ResponseData data = MakeResponseData(support::UniformPoints(100, 20, seed),
                                               support::UniformVector(100, 100 + seed), 20, 1);
    const ChosenModel chosen = Compete(data);
    EXPECT_GE(chosen.GetCoP(), 0.0);
    told += chosen.GetCoP() / kSamples;
  }
  EXPECT_LT(told, 0.02);
}

TEST(ModelCompetition, LocalErrorsAreThoseOfTheWholeChoice) {
  const ResponseData data = DataOf(literature::LatinHypercubeSample(Function("Friedman 1"), 60, 3));
  const ChosenModel chosen = Compete(data);
  const Eigen::VectorXd& residuals = chosen.model->GetResiduals();
  EXPECT_NEAR(chosen.GetCoP(), Determination(data.values, data.values - residuals), 1e-12);
  EXPECT_LT(chosen.GetCoP(), 1.0);
  EXPECT_GT(residuals.squaredNorm(),
            (data.values - chosen.model->ApproximateSupportPoints()).squaredNorm());
}

TEST(ModelCompetition, TheNumberOfThreadsChangesNothing) {
  const ResponseData data = DataOf(literature::LatinHypercubeSample(Function("Friedman 1"), 50, 2));
  const auto with = [&](int num_threads) {
    utils::SetNumThreads(num_threads);
    const ChosenModel chosen = Compete(data);
    utils::SetNumThreads(0);
    return chosen;
  };
  const ChosenModel one = with(1);
  const ChosenModel all = with(1024);
  EXPECT_TRUE(one.model->Equals(*all.model));
  EXPECT_EQ(one.GetCoP(), all.GetCoP());
}

TEST(ModelCompetition, MoreRowsThanKrigingBearsLoseNothing) {
  // The noise leaves 1 - 0.01 / var(y) to be explained.
  constexpr Eigen::Index kRows = 6000;
  const Eigen::MatrixXd points = support::UniformPoints(kRows, 5, 9);
  const Eigen::ArrayXd noise =
      support::UniformVector(kRows, 10).unaryExpr([](double p) { return math::NormalQuantile(p); });
  const Eigen::VectorXd values = (6.0 * points.col(0)).array().sin() * points.col(1).array() +
                                 points.col(2).array().square() + 0.1 * noise;
  const double most = 1.0 - 0.01 / ((values.array() - values.mean()).square().mean());
  const ChosenModel chosen = Compete(MakeResponseData(points, values, 20, 1));
  EXPECT_NEAR(chosen.GetCoP(), most, 0.01);
  EXPECT_EQ(chosen.text.find(L"Linear"), std::wstring::npos);
  EXPECT_LT(chosen.rows.size(), static_cast<std::size_t>(kRows));
  EXPECT_EQ(chosen.model->GetPoints(), Eigen::MatrixXd(points(chosen.rows, Eigen::all)));
  const Eigen::VectorXd& residuals = chosen.model->GetResiduals();
  EXPECT_NEAR(residuals.norm() / std::sqrt(static_cast<double>(residuals.size())), 0.1, 0.01);
  ASSERT_GE(chosen.limits.size(), 2u);
  EXPECT_NE(chosen.limits[0].find(L"of 6000 designs"), std::wstring::npos);
}

TEST(ModelCompetition, TheSimplerModelWinsWhereItIsAsGood) {
  // A plane: every polynomial is exact, and the plainest has two inputs.
  const Eigen::MatrixXd points = support::UniformPoints(60, 4, 3);
  const ResponseData plane = MakeResponseData(points, 2.0 * points.col(1) - points.col(3), 20, 1);
  const ChosenModel chosen = Compete(plane);
  EXPECT_EQ(chosen.text, L"Linear Regression of order 1");
  EXPECT_EQ(chosen.model->GetVariableSelection(), (BitVector{false, true, false, true}));
  EXPECT_EQ(chosen.results.CoP, 1.0);
  // Without input 3 the plane keeps the variance of 2 x1: 4 of 5 parts, less the sample's chance.
  EXPECT_NEAR(chosen.results.singleCoPs(3), 0.2, 0.1);
  EXPECT_EQ(chosen.results.singleCoPs(0), 0.0);

  // An exponential: with a transform of the response a plane is exact, without it nothing is.
  const Eigen::VectorXd powers = (6.0 * points.col(1) + 3.0 * points.col(3)).array().exp();
  EXPECT_NE(Compete(MakeResponseData(points, powers, 20, 1)).text.find(L"Box-Cox"),
            std::wstring::npos);
}

TEST(ModelCompetition, OnlyAllowedFamiliesCompete) {
  const ResponseData data = DataOf(literature::LatinHypercubeSample(Function("Branin"), 60, 1));
  const auto families = [&](auto allow) {
    TrainSettings settings;
    settings.models.polynomials = settings.models.moving_least_squares = false;
    settings.models.isotropic_kriging = settings.models.anisotropic_kriging = false;
    settings.models.box_cox = false;
    allow(settings.models);
    std::vector<std::wstring> names;
    for (const auto& tried : Compete(data, settings).tried) {
      EXPECT_FALSE(tried.settings->HasBoxCoxParameter());
      const std::wstring name =
          MakeModel(*tried.settings, data.points, data.values)->GetName(false);
      if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    }
    return names;
  };
  using Names = std::vector<std::wstring>;
  EXPECT_EQ(families([](ModelChoice& s) { s.polynomials = true; }),
            (Names{L"Linear Regression | 1", L"Linear Regression | 2"}));
  EXPECT_EQ(families([](ModelChoice& s) {
              s.moving_least_squares = true;
              s.max_moving_least_squares_order = 1;
            }),
            (Names{L"Linear Regression | 1", L"Moving Least Squares | 1"}))
      << "the constant competes always";
  EXPECT_EQ(families([](ModelChoice& s) { s.isotropic_kriging = true; }),
            (Names{L"Linear Regression | 1", L"Isotropic Kriging | 0"}));
  EXPECT_EQ(families([](ModelChoice& s) { s.anisotropic_kriging = true; }),
            (Names{L"Linear Regression | 1", L"Anisotropic Kriging | 0"}));
}

TEST(ModelCompetition, InputsOfFewValuesGetNoPowersThatTheyCannotTell) {
  Eigen::MatrixXd points = support::UniformPoints(60, 2, 4);
  points.col(0) = (2.0 * points.col(0).array()).floor();
  const Eigen::VectorXd values = 3.0 * points.col(0).array() + points.col(1).array().square();
  const ResponseData data = MakeResponseData(points, values, 20, 1);
  const ChosenModel chosen = Compete(data);
  EXPECT_EQ(chosen.text, L"Linear Regression of order 2");
  EXPECT_NEAR(chosen.results.CoP, 1.0, 1e-12);
  EXPECT_EQ(chosen.model->GetNumberCoefficients(), 4u) << "1, x0, x1, x1^2";
}

TEST(ModelCompetition, TheWinnerPredictsEverywhereInTheBounds) {
  // A gap in the middle: the best radius of a local model does not reach into it.
  Eigen::MatrixXd points = support::UniformPoints(60, 2, 5);
  for (double& x : points.col(0)) x = x < 0.5 ? 0.5 * x : 0.5 + 0.5 * x;
  const Eigen::VectorXd values =
      (20.0 * points.col(0)).array().sin() + (20.0 * points.col(1)).array().cos();
  TrainSettings settings;
  settings.models.polynomials = settings.models.isotropic_kriging = false;
  settings.models.anisotropic_kriging = false;
  const ChosenModel chosen = Compete(MakeResponseData(points, values, 20, 1), settings);
  Eigen::MatrixXd grid(101 * 101, 2);
  for (Eigen::Index i = 0; i < grid.rows(); ++i)
    grid.row(i) << 0.01 * static_cast<double>(i % 101), 0.01 * static_cast<double>(i / 101);
  grid.col(0) = points.col(0).minCoeff() +
                (points.col(0).maxCoeff() - points.col(0).minCoeff()) * grid.col(0).array();
  grid.col(1) = points.col(1).minCoeff() +
                (points.col(1).maxCoeff() - points.col(1).minCoeff()) * grid.col(1).array();
  EXPECT_TRUE(chosen.model->Approximate(grid).allFinite());
}

}  // namespace
}  // namespace corvath::training
