#include "doe/doe.h"
#include "foundation/log_line.h"
#include "metamodel/factories.h"
#include "metamodel/kernels/kernel_block.h"
#include "metamodel/kriging/definite_factor.h"
#include "metamodel/kriging/kernel_noise_fit.h"
#include "metamodel/kriging/ordinary_kriging.h"
#include "metamodel/moving_least_squares/radius_range.h"
#include "optimizer/nlpqlp_interface.h"
#include "optimizer/optimizer_nlpqlp.h"
#include "stochastics/sample_statistics.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

// The search for the kernel parameters and the nugget of a kriging model, by their decimal
// logarithms.

namespace corvath::math::metamodel {

namespace {

/// From 1e-6, which keeps the systems of smooth kernels regular, to 1, all noise.
constexpr double kLowestLogNugget = -6.0;
constexpr double kHighestLogNugget = 0.0;

/// Where a trial has no objective. A constant, so that there is no slope either.
constexpr double kNoObjective = std::numeric_limits<float>::max();

/// A point of a search, by logarithms, with what was found there.
struct Candidate {
  Eigen::VectorXd x;
  double objective;
};

}  // namespace

/// Solves the model for one set of parameters after another, in the same memory.
class OrdinaryKriging::Trials {
 public:
  /// The support data of `model` are transformed.
  /// @param squared  their squared distances, where the kernel needs no more than them
  explicit Trials(OrdinaryKriging& model, Eigen::MatrixXd squared = {})
      : model_(model), squared_(std::move(squared)) {}

  /// @param x  logarithms of the nugget and of the kernel parameters
  /// @returns false where the model cannot be solved; the last solution stands then
  bool Solve(const Eigen::VectorXd& x) {
    if (x_.size() == x.size() && x_ == x) return solved_;
    x_ = x;
    const auto power = [](double exponent) { return std::pow(10.0, exponent); };
    model_.settings_.SetNugget(power(x(0)));
    model_.settings_.SetKernelParameter(x.tail(x.size() - 1).unaryExpr(power));
    model_.need_build_ = true;
    if (squared_.size() > 0)
      model_.BuildCorrelationOfDistances(squared_, correlation_);
    else
      model_.BuildCorrelation(model_.points_trans_reduced_, correlation_);
    solved_ = model_.Solve(correlation_, factor_);
    return solved_;
  }

  /// What SQP with the gradient of the likelihood makes of `start`, whatever ends its run.
  Candidate Polish(const Candidate& start, const Eigen::VectorXd& lower,
                   const Eigen::VectorXd& upper);

 private:
  OrdinaryKriging& model_;
  Eigen::VectorXd x_;  ///< of the last trial
  bool solved_ = false;
  Eigen::MatrixXd squared_;
  Eigen::MatrixXd correlation_;
  DefiniteFactor factor_;
};

Candidate OrdinaryKriging::Trials::Polish(const Candidate& start, const Eigen::VectorXd& lower,
                                          const Eigen::VectorXd& upper) {
  const Eigen::Index d = start.x.size();
  algorithm::optimizer::NLPQLPInterface core(static_cast<std::int32_t>(d), 0, 0, 1);
  core.MAXFUN = 50;
  core.MAXIT = 200;
  core.SetLowerBounds(lower);
  core.SetUpperBounds(upper);
  core.X.col(0).head(d) = start.x;
  do {
    model_.PassInterruptionPoint();
    const bool wants_value = core.IFAIL == -1;
    if (!Solve(core.GetColumn(core.X, 0)) && !wants_value) return start;
    core.F(0) = model_.likelihood_;  // after a failure, the value from before
    if (!wants_value) core.DF.head(d) = model_.LikelihoodGradient(correlation_, factor_);
    core.Step();
  } while (core.IFAIL == -1 || core.IFAIL == -2);
  return {core.GetColumn(core.X, 0), core.F(0)};
}

bool OrdinaryKriging::BuildOptimal(const IndexVector& subsets) {
  residuals_.resize(0);
  RequireSupportData();
  if (GetNumberPoints() == 0) return false;
  if (!points_->allFinite() || !values_.allFinite()) {
    utils::log::LogLine(logger_, utils::log::kError)
        << L"Kriging: no parameters can be chosen for support points or values that are not finite "
           L"numbers.";
    return false;
  }
  need_build_ = true;
  OrdinaryKriging trial(*this);  // a search that fails or is interrupted leaves no trace
  if (trial.Fit(subsets)) {
    *this = std::move(trial);
    return true;
  }
  utils::log::LogLine(logger_, utils::log::kError)
      << L"Kriging: no parameters can be chosen; all support points coincide, no input is "
         L"selected, or no trial can be solved.";
  return false;
}

bool OrdinaryKriging::BuildWithNoise(const std::vector<Eigen::Index>& rows) {
  RequireSupportData();
  if (rows.size() < 2 || CountBits(GetVariableSelection()) == 0) return false;
  if (trans_value_) ChooseValueTransform();
  TransformSupportData();
  const bool is_anisotropic = settings_.GetKernelType() == KernelType::kConstInflExp;
  if (!is_anisotropic && settings_.GetKernelType() != KernelType::kConstInflIsoExp)
    throw std::logic_error("BuildWithNoise: a kernel without radii");
  const KernelWithNoise fit =
      FitKernelWithNoise(points_trans_reduced_(rows, Eigen::all), values_trans_(rows),
                         is_anisotropic, interruption_point_);
  if (!std::isfinite(fit.objective)) return false;
  settings_.SetKernelParameter(fit.radii);
  settings_.SetNugget(fit.nugget);
  settings_.SetState(SettingsState::kOptimized);
  need_build_ = true;
  return Build();
}

bool OrdinaryKriging::Follow(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                             const Eigen::VectorXd& importances) {
  // Of the curvature, against the mean square deviation: small enough not to be seen beside it, large
  // enough for the weights of nearly equal rows to stay finite. The share on the diagonal is for equal
  // ones.
  constexpr double kPenalty = 1e-9;
  constexpr double kOfDiagonal = 1e-3;
  if (!IsBuilt() || values.size() != points.rows() || importances.size() != points.rows())
    throw std::logic_error("Follow: a model that is not built, or another number of values");
  Eigen::VectorXd wanted = trans_value_ ? Eigen::VectorXd(trans_value_->Forward(values)) : values;
  const double mean = wanted.dot(importances) / importances.sum();
  wanted = (wanted.array() - mean) * importances.array().sqrt();
  const auto kernel = MakeKernel(settings_.GetKernelType(), settings_.GetKernelParameter());
  Eigen::MatrixXd influences(points_trans_reduced_.rows(), points.rows());
  KernelBlock(*kernel, points_trans_reduced_)
      .Weights(ReduceColumns(trans_coord_ ? trans_coord_->Forward(points) : points,
                             GetVariableSelection()),
               influences);
  influences *= importances.cwiseSqrt().asDiagonal();
  Eigen::MatrixXd system;
  BuildCorrelation(points_trans_reduced_, system);
  system.diagonal().setConstant(1.0 + kOfDiagonal);
  system *= kPenalty * importances.sum();
  system.selfadjointView<Eigen::Lower>().rankUpdate(influences);
  DefiniteFactor factor;
  if (!factor.Compute(system)) return false;
  mean_ = mean;
  kernel_weights_ = factor.Solve(influences * wanted);
  return true;
}

bool OrdinaryKriging::Fit(const IndexVector& subsets) {
  if (trans_value_) {
    PassInterruptionPoint();
    ChooseValueTransform();
  }
  TransformSupportData();
  if (points_trans_reduced_.cols() == 0 || !FitKernel(subsets)) return false;
  WriteTransformParameters(settings_);
  settings_.SetState(SettingsState::kOptimized);
  return true;
}

bool OrdinaryKriging::FitKernel(const IndexVector& subsets) {
  switch (settings_.GetKernelType()) {
    case KernelType::kConstInflExp:
    case KernelType::kNodalInflExp:
      return FitAnisotropic();
    case KernelType::kConstInflIsoExp:
    case KernelType::kConstInflIsoReg:
      return FitIsotropic(subsets);
  }
  throw std::logic_error("Unknown kernel type.");
}

namespace {

/// Of the logarithms of radius and nugget.
using RadiusObjective = std::function<double(double, double)>;

/// The best of three radii, from `lowest` to `highest`, with three nuggets each; the first of
/// equals, and the first at all where there is no objective.
Candidate ScanRadius(const RadiusObjective& objective, double lowest, double highest) {
  Candidate best{Eigen::Vector2d(lowest, kLowestLogNugget), kNoObjective};
  for (int i = 0; i < 3; ++i)
    for (int k = 0; k < 3; ++k) {
      const Eigen::Vector2d x(lowest + (highest - lowest) * 0.5 * i,
                              kLowestLogNugget + (kHighestLogNugget - kLowestLogNugget) * 0.5 * k);
      const double value = objective(x(0), x(1));
      if (value < best.objective) best = {x, value};
    }
  return best;
}

/// What SQP with numerical differences makes of `start`, if that is better.
Candidate PolishRadius(const RadiusObjective& objective, const Candidate& start, double lowest,
                       double highest, double accuracy) {
  using algorithm::optimizer::NumericalDifferences;
  algorithm::optimizer::OptimizerSettingsNLPQLP<double> settings(2);
  settings.SetLowerBounds(Eigen::Vector2d(lowest, kLowestLogNugget));
  settings.SetUpperBounds(Eigen::Vector2d(highest, kHighestLogNugget));
  settings.SetStartDesigns(start.x.transpose());
  settings.SetAccuracy(accuracy);
  settings.SetGradientDx(1e-4);
  settings.SetNumericalDifferences(NumericalDifferences::kForward);
  algorithm::optimizer::OptimizerNLPQLP<double> optimizer;
  optimizer.Initialize(settings);
  while (!optimizer.IsTerminated()) {
    const Eigen::MatrixXd designs = optimizer.GetNextDesigns();
    Eigen::MatrixXd objectives(designs.rows(), 1);
    for (Eigen::Index i = 0; i < designs.rows(); ++i)
      objectives(i, 0) = objective(designs(i, 0), designs(i, 1));
    optimizer.SetInputs(designs);
    optimizer.SetCriteriaSuccessInfo(
        std::vector<bool>(static_cast<std::size_t>(designs.rows()), true));
    optimizer.SetObjectives(objectives);
    optimizer.Appraise();
    optimizer.Adapt();
  }
  optimizer.Finalize();
  const Eigen::MatrixXd best = optimizer.GetBestObjectives();
  if (best.rows() == 0 || !(best(0, 0) < start.objective)) return start;
  return {optimizer.GetBestInputs().row(0).transpose(), best(0, 0)};
}

}  // namespace

bool OrdinaryKriging::FitIsotropic(const IndexVector& subsets) {
  Eigen::MatrixXd squared = statistics::SquaredDistances(points_trans_reduced_);
  const auto range = FindRadiusRange(points_trans_reduced_, squared);
  if (!range) return false;
  Trials trials(*this, std::move(squared));
  const bool use_likelihood = settings_.UsesLikelihood();
  const double total = (values_.array() - values_.mean()).square().sum();
  const RadiusObjective objective = [&](double radius, double nugget) {
    PassInterruptionPoint();
    if (!trials.Solve(Eigen::Vector2d(nugget, radius))) return kNoObjective;
    const double value =
        use_likelihood
            ? likelihood_
            : 1000.0 * (values_ - ApproximateCrossValidation(subsets)).squaredNorm() / total;
    return std::isfinite(value) ? value : kNoObjective;
  };
  const double lowest = std::log10(2.0 * range->smallest);
  const double highest = std::log10(10.0 * range->diameter);
  const double beyond = std::log10(10.0 * range->diameter * 1.0001);  // the grid ends inside
  const Candidate start = ScanRadius(objective, lowest, highest);
  const Candidate best =
      PolishRadius(objective, start, lowest, beyond, use_likelihood ? 1e-3 : 1e-6);
  return trials.Solve(best.x.reverse());
}

namespace {

/// The best candidates of a sample, best first.
class BestFew {
 public:
  static constexpr std::size_t kNumber = 5;

  /// A candidate that is as good as one of them comes after it.
  void Insert(const Candidate& candidate) {
    const auto at = std::find_if(rows_.begin(), rows_.end(), [&](const Candidate& row) {
      return row.objective > candidate.objective;
    });
    if (at == rows_.end() && rows_.size() == kNumber) return;
    rows_.insert(at, candidate);
    if (rows_.size() > kNumber) rows_.pop_back();
  }

  const std::vector<Candidate>& GetRows() const { return rows_; }

 private:
  std::vector<Candidate> rows_;
};

}  // namespace

bool OrdinaryKriging::FitAnisotropic() {
  // Radii from 0.26 to 83, in coordinates where the inputs reach from 0 to 1. A nodal kernel has one
  // parameter, a number of neighbours: from 2, because a support point is its own nearest, and the
  // distance 0 to the first of them leaves its prediction undefined. The half keeps rounding away.
  const bool is_nodal = settings_.GetKernelType() == KernelType::kNodalInflExp;
  if (is_nodal && points_trans_reduced_.rows() < 2) return false;
  const Eigen::Index d = 1 + (is_nodal ? 1 : points_trans_reduced_.cols());
  Eigen::VectorXd lower = Eigen::VectorXd::Constant(d, is_nodal ? std::log10(2.5) : -0.59);
  Eigen::VectorXd upper = Eigen::VectorXd::Constant(d, 1.92);
  lower(0) = kLowestLogNugget;
  upper(0) = kHighestLogNugget;

  Trials trials(*this);
  constexpr std::uint32_t kSeed = 5489;
  DOE sample(static_cast<std::uint64_t>(d), kSeed);
  sample.Build(kLatinHypercube, static_cast<std::uint64_t>(10 * d), /*append=*/false);
  const Eigen::MatrixXd unit = sample.GetMatrix();
  BestFew starts;
  bool solved = false;
  for (Eigen::Index i = 0; i < unit.rows(); ++i) {
    PassInterruptionPoint();
    const Eigen::VectorXd share = 0.5 * (unit.row(i).transpose().array() + 1.0);
    const Eigen::VectorXd x = (lower + share.cwiseProduct(upper - lower)).cwiseMin(upper);
    solved = trials.Solve(x) || solved;
    if (solved) starts.Insert({x, likelihood_});  // after a failure, the value from before
  }
  if (!solved) return false;

  Candidate best{{}, std::numeric_limits<double>::infinity()};
  for (const Candidate& start : starts.GetRows()) {
    PassInterruptionPoint();
    const Candidate polished = trials.Polish(start, lower, upper);
    if (best.x.size() == 0 || polished.objective < best.objective) best = polished;
  }
  return trials.Solve(best.x);
}

}  // namespace corvath::math::metamodel
