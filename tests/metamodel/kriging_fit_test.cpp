#include "foundation/constants.h"
#include "metamodel/families.h"
#include "metamodel/kriging/kernel_noise_fit.h"
#include "metamodel/plain_kriging.h"
#include "stochastics/normal_quantile.h"

#include <Eigen/Dense>

#include <numeric>

using namespace corvath::math::metamodel;
using corvath::math::kPi;
using corvath::utils::log::VectorLog;

namespace {

/// Functions of the literature, the inputs taken from the unit cube.
struct TestFunction {
  Eigen::Index num_inputs;
  Eigen::Index num_points;  ///< so many that the likelihood has its best value in one clear basin
  double (*value)(const Eigen::VectorXd&);
};

// F. H. Branin, "Widely convergent method for finding multiple solutions of simultaneous nonlinear
// equations", IBM Journal of Research and Development 16, 1972, pp. 504-522.
const TestFunction kBranin{
    2, 20, [](const Eigen::VectorXd& u) {
      const double a = 15.0 * u(0) - 5.0, b = 15.0 * u(1);
      const double root = b - 5.1 / (4.0 * kPi * kPi) * a * a + 5.0 / kPi * a - 6.0;
      return root * root + 10.0 * (1.0 - 1.0 / (8.0 * kPi)) * std::cos(a) + 10.0;
    }};
// J. H. Friedman, "Multivariate adaptive regression splines", Annals of Statistics 19, 1991, pp. 1-67.
const TestFunction kFriedman{5, 30, [](const Eigen::VectorXd& u) {
                               return 10.0 * std::sin(kPi * u(0) * u(1)) +
                                      20.0 * std::pow(u(2) - 0.5, 2) + 10.0 * u(3) + 5.0 * u(4);
                             }};

/// Points with values of a test function and, if wanted, noise of a fifth of their range.
struct Sample {
  Sample(const TestFunction& function, bool noisy)
      : points(support::UniformPoints(function.num_points, function.num_inputs, 11)),
        values(function.num_points) {
    const Eigen::VectorXd scatter = support::UniformVector(values.size(), 12).array() - 0.5;
    for (Eigen::Index i = 0; i < values.size(); ++i)
      values(i) = function.value(points.row(i).transpose());
    if (noisy) values += 0.2 * (values.maxCoeff() - values.minCoeff()) * scatter;
    points = Scaled(points, points);  // to coordinates from 0 to 1
  }
  Eigen::MatrixXd points;
  Eigen::VectorXd values;
};

using Objective = std::function<double(const Eigen::VectorXd&)>;

/// The least value on a grid of `steps` points per axis between these logarithms.
double Scan(const Objective& objective, const Eigen::VectorXd& lower, const Eigen::VectorXd& upper,
            int steps) {
  const Eigen::Index d = lower.size();
  Eigen::VectorXi at = Eigen::VectorXi::Zero(d);
  double best = std::numeric_limits<double>::infinity();
  for (Eigen::Index k = 0; k < d;) {
    const Eigen::VectorXd share = at.cast<double>() / (steps - 1);
    const Eigen::VectorXd x = lower + share.cwiseProduct(upper - lower);
    best = std::min(best, objective(x.unaryExpr([](double e) { return std::pow(10.0, e); })));
    for (k = 0; k < d && ++at(k) == steps; ++k) at(k) = 0;
  }
  return best;
}

OrdinaryKriging Unfitted(const Sample& sample, KernelType type) {
  OrdinaryKrigingSettings settings(static_cast<std::uint64_t>(sample.points.cols()));
  settings.SetKernelType(type);
  return OrdinaryKriging(sample.points, sample.values, settings);
}

constexpr KernelType kIsotropic = KernelType::kConstInflIsoExp;
constexpr KernelType kAnisotropic = KernelType::kConstInflExp;

double Nugget(const OrdinaryKriging& model) {
  return model.GetSettingsBase().GetNugget();
}
const Eigen::VectorXd& Radii(const OrdinaryKriging& model) {
  return model.GetSettingsBase().GetKernelParameter();
}

TEST(KrigingFit, ReachesTheBestLikelihoodOfADenseScan) {
  for (const TestFunction& function : {kBranin, kFriedman})
    for (const bool noisy : {false, true})
      for (const KernelType type : {kIsotropic, kAnisotropic}) {
        const Sample sample(function, noisy);
        OrdinaryKriging model = Unfitted(sample, type);
        ASSERT_TRUE(model.BuildOptimal());
        const bool isotropic = type == kIsotropic;
        const auto likelihood = [&](const Eigen::VectorXd& x) {
          const Eigen::VectorXd radii = x.tail(x.size() - 1);
          return support::PlainKriging(sample.points, sample.values, radii, x(0)).likelihood;
        };
        const Eigen::Index d = isotropic ? 2 : 1 + function.num_inputs;
        Eigen::VectorXd lower = Eigen::VectorXd::Constant(d, isotropic ? -1.0 : -0.59);
        Eigen::VectorXd upper = Eigen::VectorXd::Constant(d, isotropic ? 1.3 : 1.92);
        lower(0) = -6.0;
        upper(0) = 0.0;
        const double best = Scan(likelihood, lower, upper, d == 2 ? 50 : d == 3 ? 20 : 5);
        EXPECT_LT(model.GetLikelihood(), best + 1e-3) << function.num_inputs << noisy << isotropic;
        Eigen::VectorXd found(d);
        found << Nugget(model), Radii(model);
        EXPECT_NEAR(model.GetLikelihood(), likelihood(found), 1e-5);
        const Eigen::ArrayXd logarithms = found.array().log10();
        EXPECT_TRUE(isotropic || (logarithms > lower.array() - 1e-12).all());
        EXPECT_TRUE(isotropic || (logarithms < upper.array() + 1e-12).all());
      }
}

TEST(KrigingFit, CrossValidationErrorReachesTheBestOfADenseScan) {
  const Sample sample(kBranin, true);
  IndexVector groups(sample.values.size());
  for (Eigen::Index i = 0; i < groups.size(); ++i) groups(i) = static_cast<std::uint64_t>(i % 5);
  OrdinaryKrigingSettings settings(2);
  settings.SetUseLikelihood(false);
  OrdinaryKriging model(sample.points, sample.values, settings);
  ASSERT_TRUE(model.BuildOptimal(groups));
  const auto error = [&](const Eigen::VectorXd& x) {
    settings.SetNugget(x(0));
    settings.SetKernelParameter(x.tail(1));
    OrdinaryKriging other(sample.points, sample.values, settings);
    EXPECT_TRUE(other.Build());
    return (sample.values - other.ApproximateCrossValidationDirect(groups)).squaredNorm();
  };
  const double best = Scan(error, Eigen::Vector2d(-6.0, -0.5), Eigen::Vector2d(0.0, 1.1), 30);
  EXPECT_LT(error(Eigen::Vector2d(Nugget(model), Radii(model)(0))), best * 1.001);
}

TEST(KrigingFit, AConstantResponseIsFitted) {
  Sample sample(kBranin, false);
  for (const double constant : {0.0, 0.1, -7e8})
    for (const KernelType type : {kIsotropic, kAnisotropic})
      for (const bool use_likelihood : {true, false}) {
        sample.values.setConstant(constant);
        OrdinaryKriging model = Unfitted(sample, type);
        OrdinaryKrigingSettings settings = model.GetSettingsBase();
        settings.SetUseLikelihood(use_likelihood);
        model.SetSettings(settings);
        int trials = 0;
        model.SetInterruptionPoint([&trials] { ++trials; });
        ASSERT_TRUE(model.BuildOptimal());
        EXPECT_LT(trials, 200);  // a likelihood of mere rounding would be searched for long
        EXPECT_EQ(model.GetSigma2(), 0.0);
        EXPECT_EQ(model.Approximate(sample.points),
                  Eigen::VectorXd::Constant(sample.values.size(), constant));
      }
}

TEST(KrigingFit, ANodalKernelIsDefinedOnItsSupportPoints) {
  Sample sample(kBranin, true);
  OrdinaryKriging model = Unfitted(sample, KernelType::kNodalInflExp);
  ASSERT_TRUE(model.BuildOptimal());
  ASSERT_EQ(Radii(model).size(), 1);
  EXPECT_GE(Radii(model)(0), 2.0);  // the nearest of a support point is itself, at no distance
  EXPECT_TRUE(model.Approximate(sample.points).allFinite());
  EXPECT_LE(Radii(model)(0), std::pow(10.0, 1.92) * (1.0 + 1e-12));
  sample.points.row(4) = sample.points.row(2);  // no distance: the kernel has no value
  OrdinaryKriging coincident = Unfitted(sample, KernelType::kNodalInflExp);
  EXPECT_FALSE(coincident.BuildOptimal());
  EXPECT_EQ(Radii(coincident).size(), 0);
  for (const KernelType type : {kIsotropic, kAnisotropic}) {  // a matter of the nugget
    OrdinaryKriging other = Unfitted(sample, type);
    ASSERT_TRUE(other.BuildOptimal());
    EXPECT_TRUE(other.Approximate(sample.points).allFinite());
  }
}

TEST(KrigingFit, RefusesBadInputAndKeepsTheSettings) {
  const Sample good(kBranin, false);
  const auto log = boost::make_shared<VectorLog>();
  /// Whether the fit of these data fails, and changes nothing that counts.
  const auto fails = [&](const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                         KernelType type) {
    OrdinaryKriging model(points, values);
    OrdinaryKrigingSettings settings = model.GetSettingsBase();
    settings.SetKernelType(type);
    settings.SetKernelParameter(Eigen::VectorXd::Constant(type == kIsotropic ? 1 : 2, 0.75));
    model.SetSettings(settings);
    model.SetLogger(log);
    const bool failed = !model.BuildOptimal();
    EXPECT_EQ(Radii(model)(0), 0.75);
    EXPECT_EQ(model.GetSettingsBase().GetState(), SettingsState::kReplaced);
    return failed;
  };
  const auto logged = [&](const std::wstring& text) {
    return log->GetLines().back().second.find(text) != std::wstring::npos;
  };
  for (const KernelType type : {kIsotropic, kAnisotropic}) {
    for (const double bad : {std::nan(""), HUGE_VAL}) {
      Sample sample = good;
      sample.values(3) = sample.points(3, 1) = bad;
      EXPECT_TRUE(fails(good.points, sample.values, type));
      EXPECT_TRUE(fails(sample.points, good.values, type));
    }
    EXPECT_TRUE(logged(L"values that are not finite numbers."));
    EXPECT_TRUE(fails(Eigen::MatrixXd(0, 2), Eigen::VectorXd(), type));
    EXPECT_MESSAGE("At least two points are required.",
                   fails(good.points.topRows(1), good.values.head(1), type));
  }
  EXPECT_TRUE(fails(Eigen::MatrixXd::Ones(20, 2), good.values, kIsotropic));
  EXPECT_TRUE(logged(L"all support points coincide, no input is selected, or no trial"));
}

TEST(KrigingFit, AnInterruptionEndsItAndRestoresTheSettings) {
  const Sample sample(kBranin, false);
  for (const KernelType type : {kIsotropic, kAnisotropic})
    for (const int last : {1, 12, 35}) {  // in the grid or sample, and in the polish
      OrdinaryKriging model = Unfitted(sample, type);
      const OrdinaryKrigingSettings before = model.GetSettingsBase();
      int passed = 0;
      model.SetInterruptionPoint([&] {
        if (++passed == last) throw std::runtime_error("interrupted");
      });
      EXPECT_MESSAGE("interrupted", model.BuildOptimal());
      EXPECT_TRUE(model.GetSettingsBase().Equals(before));
      EXPECT_FALSE(model.IsBuilt());
    }
}

Eigen::VectorXd Noise(Eigen::Index n, std::uint64_t seed) {
  return support::UniformVector(n, seed).unaryExpr(
      [](double p) { return corvath::math::NormalQuantile(p); });
}

/// The objective by its formula: restricted likelihood and prior of the length scales. What these have
/// in common is searched on a grid.
double ObjectiveByFormula(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                          const Eigen::VectorXd& radii, double nugget) {
  const support::PlainKriging plain(points, values, radii, nugget);
  const auto n = static_cast<double>(points.rows());
  double objective = 0.5 * ((n - 1.0) * std::log(plain.sigma2 * n / (n - 1.0)) +
                            plain.log_determinant + std::log(plain.information));
  Eigen::VectorXd off(radii.size());
  Eigen::VectorXd ranges(points.cols());
  for (Eigen::Index j = 0; j < points.cols(); ++j) {
    const Eigen::ArrayXd column = points.col(j).array() - points.col(j).mean();
    ranges(j) = std::log(3.0 * std::sqrt(column.square().mean()));
  }
  for (Eigen::Index k = 0; k < radii.size(); ++k)
    off(k) = std::log(radii(k) / std::sqrt(-2.0 * std::log(0.001))) - std::sqrt(2.0) -
             0.5 * std::log(static_cast<double>(points.cols())) -
             (radii.size() > 1 ? ranges(k) : ranges.mean());
  double least = std::numeric_limits<double>::infinity();
  for (double common = -8.0; common < 8.0; common += 1e-4) {
    double prior = 0.5 * common * common / 3.0;
    for (const double x : off) prior += 2.0 * std::log(1.0 + (x - common) * (x - common) / 0.3);
    least = std::min(least, prior);
  }
  return objective + least;
}

TEST(KernelNoiseFit, FindsAMinimumOfTheObjective) {
  const Eigen::MatrixXd points = support::UniformPoints(60, 3, 1);
  const Eigen::VectorXd values = (5.0 * points.col(0)).array().sin() +
                                 points.col(1).array().square() + 0.2 * Noise(60, 2).array();
  for (const bool is_anisotropic : {false, true}) {
    const KernelWithNoise fit = FitKernelWithNoise(points, values, is_anisotropic, {});
    ASSERT_EQ(fit.radii.size(), is_anisotropic ? 3 : 1);
    EXPECT_NEAR(fit.objective, ObjectiveByFormula(points, values, fit.radii, fit.nugget), 1e-6);
    // No step of a tenth in any logarithm goes down by more than the accuracy of the search.
    for (Eigen::Index k = -1; k < fit.radii.size(); ++k)
      for (const double factor : {0.9, 1.1}) {
        Eigen::VectorXd radii = fit.radii;
        if (k >= 0) radii(k) *= factor;
        EXPECT_GT(ObjectiveByFormula(points, values, radii, fit.nugget * (k < 0 ? factor : 1.0)),
                  fit.objective - 0.01)
            << k << ", " << factor;
      }
  }
}

TEST(KernelNoiseFit, TheNuggetIsTheNoise) {
  // sigma^2 * nugget estimates the variance of the noise: of 300 normal numbers to 8 % (sd).
  constexpr double kDeviation = 0.3;
  const Eigen::MatrixXd points = support::UniformPoints(300, 2, 5);
  const Eigen::VectorXd values =
      (6.0 * points.col(0)).array().sin() + kDeviation * Noise(300, 6).array();
  OrdinaryKrigingSettings settings(2);
  settings.SetKernelType(KernelType::kConstInflExp);
  OrdinaryKriging model(points, values, settings);
  std::vector<Eigen::Index> rows(300);
  std::iota(rows.begin(), rows.end(), Eigen::Index{0});
  ASSERT_TRUE(model.BuildWithNoise(rows));
  EXPECT_NEAR(model.GetSigma2() * model.GetSettingsBase().GetNugget() / (kDeviation * kDeviation),
              1.0, 0.25);
  // The input that does nothing is far longer than the other.
  EXPECT_GT(model.GetSettingsBase().GetKernelParameter()(1),
            5.0 * model.GetSettingsBase().GetKernelParameter()(0));
}

}  // namespace
