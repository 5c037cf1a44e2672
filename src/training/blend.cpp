#include "training/blend.h"

#include "metamodel/kriging/ordinary_kriging.h"
#include "metamodel/kriging/ordinary_kriging_settings.h"
#include "training/form_choice.h"

#include <cmath>

namespace corvath::training {
namespace {

using math::metamodel::OrdinaryKriging;
using math::metamodel::OrdinaryKrigingSettings;
using math::metamodel::SurrogateBase;

/// Exponent of the likelihood: 1 would be Akaike's. On some 70 public tables of 13 to 200 rows, 0.05
/// to 0.2 do much the same.
constexpr double kTempered = 0.1;
/// Share from which the plane serves alone.
constexpr double kPlainly = 0.6;
/// Deviation from the mean that a model may have between the designs, of the root mean square error
/// that the kriging expects of itself.
constexpr double kFaithful = 0.5;
/// Factors of the radii that are tried: longer ones carry a plane further, shorter ones bends.
constexpr double kFactors[] = {1.0, 1.5, 2.5};

Eigen::VectorXd MeanOf(const Eigen::VectorXd& of_kriging, const Eigen::VectorXd& of_plane,
                       double share) {
  return (1.0 - share) * of_kriging + share * of_plane;
}

}  // namespace

boost::shared_ptr<SurrogateBase> Blend::Build(const CandidateTrials& trials,
                                              const ResponseData& data) const {
  const auto curved = trials.Build(*kriging);
  const auto flat = trials.Build(*plane);
  const auto mean_at = [&](const Eigen::MatrixXd& points) {
    return MeanOf(curved->Approximate(points), flat->Approximate(points), share);
  };
  const Eigen::MatrixXd probes = trials.GetProbes().Of(kriging->subspace);
  const Eigen::VectorXd wanted = mean_at(probes);
  const Eigen::VectorXd at_designs = mean_at(data.points);
  const auto& settings = dynamic_cast<const OrdinaryKrigingSettings&>(*kriging->results.settings);
  boost::shared_ptr<SurrogateBase> best;
  double least =
      kFaithful * kriging->results.predError * std::sqrt(static_cast<double>(probes.rows()));
  for (const double factor : kFactors) {
    OrdinaryKrigingSettings wider = settings;
    wider.SetKernelParameter(factor * settings.GetKernelParameter());
    const auto model = MakeModel(wider, data.points, data.values);
    if (!model->Build() || !dynamic_cast<OrdinaryKriging&>(*model).Reproduce(at_designs)) continue;
    const double off = (model->Approximate(probes) - wanted).norm();
    if (!(off <= least)) continue;
    least = off;
    best = model;
  }
  return best;
}

double ShareOfPlane(const Eigen::VectorXd& values, const Eigen::VectorXd& of_kriging,
                    const Eigen::VectorXd& of_plane) {
  const double kriging = SquaredErrors(values, of_kriging).sum();
  const double plane = SquaredErrors(values, of_plane).sum();
  if (!std::isfinite(kriging) || !std::isfinite(plane)) return std::isfinite(plane) ? 1.0 : 0.0;
  if (kriging == 0.0 || plane == 0.0) return plane <= kriging ? 1.0 : 0.0;
  const double exponent = 0.5 * kTempered * static_cast<double>(values.size());
  const double share = 1.0 / (1.0 + std::pow(plane / kriging, exponent));
  return share > kPlainly ? 1.0 : share;
}

Eigen::VectorXd PredictByBlend(const Eigen::VectorXd& values, const Eigen::VectorXd& of_kriging,
                               const Eigen::VectorXd& of_plane,
                               const std::vector<std::vector<Eigen::Index>>& groups) {
  Eigen::VectorXd predicted(values.size());
  for (const auto& group : groups) {
    const std::vector<Eigen::Index> others = RowsWithout(values.size(), group);
    const double share = ShareOfPlane(values(others), of_kriging(others), of_plane(others));
    predicted(group) = MeanOf(of_kriging(group), of_plane(group), share);
  }
  return predicted;
}

}  // namespace corvath::training
