#include "training/blend.h"

#include "doe/random_draws.h"
#include "metamodel/kriging/ordinary_kriging.h"
#include "metamodel/kriging/ordinary_kriging_settings.h"
#include "training/form_choice.h"

#include <algorithm>
#include <cmath>

namespace corvath::training {
namespace {

using math::metamodel::OrdinaryKriging;
using math::metamodel::OrdinaryKrigingSettings;
using math::metamodel::SurrogateBase;

/// Exponent of the likelihood: 1 would be Akaike's. On some 70 public tables of 13 to 200 rows, 0.05
/// to 0.15 do much the same.
constexpr double kTempered = 0.1;
/// Shares below are none.
constexpr double kNegligible = 0.02;
/// Deviation from the mean that a model may have, of the root mean square error that the kriging
/// expects of itself. Most deviate by a tenth of that.
constexpr double kFaithful = 0.4;
/// Factors of the radii that are tried: longer ones carry a plane further, shorter ones bends.
constexpr double kFactors[] = {1.0, 1.5, 2.5};
/// Points between designs, and as many in their bounds, at which the kriging is fitted to the mean.
constexpr Eigen::Index kNumPoints = 500;
/// Importance of the points in the bounds beside those of the designs: with many inputs most of them
/// are far from all designs, and from those to come.
constexpr double kOfBounds = 0.1;

/// Points on the ways between designs at random, the same on every machine: there, designs to come
/// are expected.
Eigen::MatrixXd PointsBetween(const Eigen::MatrixXd& designs) {
  math::Engine engine(1);
  const auto n = static_cast<double>(designs.rows());
  const auto draw = [&]() -> Eigen::Index {
    return std::min(designs.rows() - 1,
                    static_cast<Eigen::Index>(math::DrawUniform(engine, 0.0, n)));
  };
  Eigen::MatrixXd points(kNumPoints, designs.cols());
  for (auto point : points.rowwise()) {
    const Eigen::Index from = draw();
    const Eigen::Index to = draw();
    const double share = math::DrawUniform(engine, 0.0, 1.0);
    point = (1.0 - share) * designs.row(from) + share * designs.row(to);
  }
  return points;
}

double RootMeanSquare(const Eigen::Ref<const Eigen::VectorXd>& deviations) {
  return deviations.norm() / std::sqrt(static_cast<double>(deviations.size()));
}

}  // namespace

boost::shared_ptr<SurrogateBase> Blend::Build(const CandidateTrials& trials,
                                              const ResponseData& data) const {
  const Candidate& carrier = *members.front();
  const Eigen::Index n = data.points.rows();
  const Eigen::MatrixXd probes = trials.GetProbes().Of(carrier.subspace);
  Eigen::MatrixXd points(n + kNumPoints + probes.rows(), data.points.cols());
  points << data.points, PointsBetween(data.points), probes;
  Eigen::VectorXd mean = Eigen::VectorXd::Zero(points.rows());
  for (std::size_t k = 0; k < members.size(); ++k)
    if (const double share = shares(static_cast<Eigen::Index>(k)); share > 0.0)
      mean += share * trials.Build(*members[k])->Approximate(points);

  // Designs, points between them, and some of the probes; all the probes judge.
  const Eigen::Index num_fitted = n + 2 * kNumPoints;
  Eigen::VectorXd importances = Eigen::VectorXd::Ones(num_fitted);
  importances.tail(2 * kNumPoints) *= static_cast<double>(n) / static_cast<double>(kNumPoints);
  importances.tail(kNumPoints) *= kOfBounds;
  const auto& settings = dynamic_cast<const OrdinaryKrigingSettings&>(*carrier.results.settings);
  boost::shared_ptr<SurrogateBase> best;
  double least = kFaithful * carrier.results.predError;
  for (const double factor : kFactors) {
    OrdinaryKrigingSettings wider = settings;
    wider.SetKernelParameter(factor * settings.GetKernelParameter());
    const auto model = MakeModel(wider, data.points, data.values);
    if (!model->Build() || !dynamic_cast<OrdinaryKriging&>(*model).Follow(
                               points.topRows(num_fitted), mean.head(num_fitted), importances))
      continue;
    const Eigen::VectorXd off = model->Approximate(points) - mean;
    const double largest =
        std::max({RootMeanSquare(off.head(n)), RootMeanSquare(off.segment(n, kNumPoints)),
                  kOfBounds * RootMeanSquare(off.tail(probes.rows()))});
    if (!(largest <= least)) continue;
    least = largest;
    best = model;
  }
  return best;
}

double OddsOf(const CandidateForm& form) {
  return form.order > 1 ? 0.5 : 1.0;  // has many times the terms of a plane
}

Eigen::VectorXd SharesOf(const Eigen::VectorXd& values, const Eigen::MatrixXd& predicted,
                         const Eigen::VectorXd& odds) {
  const Eigen::ArrayXd errors = SquaredErrors(values, predicted).colwise().sum().transpose();
  Eigen::Index best = 0;
  const double least = errors.minCoeff(&best);
  if (!(least > 0.0 && std::isfinite(least))) return Eigen::VectorXd::Unit(errors.size(), best);
  const double exponent = 0.5 * kTempered * static_cast<double>(values.size());
  Eigen::ArrayXd shares = odds.array() * (least / errors).pow(exponent);
  shares /= shares.sum();
  shares = (shares < kNegligible).select(0.0, shares);
  return shares / shares.sum();
}

Eigen::VectorXd PredictByBlend(const Eigen::VectorXd& values, const Eigen::MatrixXd& predicted,
                               const Eigen::VectorXd& odds,
                               const std::vector<std::vector<Eigen::Index>>& groups) {
  Eigen::VectorXd mean = Eigen::VectorXd::Zero(values.size());
  for (const auto& group : groups) {
    const std::vector<Eigen::Index> others = RowsWithout(values.size(), group);
    const Eigen::VectorXd shares = SharesOf(values(others), predicted(others, Eigen::all), odds);
    for (Eigen::Index k = 0; k < shares.size(); ++k)  // what has no share may be NaN
      if (shares(k) > 0.0) mean(group) += shares(k) * predicted(group, k);
  }
  return mean;
}

}  // namespace corvath::training
