#include "training/soundness.h"

#include "doe/random_draws.h"
#include "metamodel/moving_least_squares/moving_least_squares_settings.h"

#include <algorithm>

namespace corvath::training {

using math::metamodel::BitVector;
using math::metamodel::MovingLeastSquaresSettings;
using math::metamodel::SurrogateBase;

ProbePoints::ProbePoints(const Eigen::MatrixXd& points)
    : lower_(points.colwise().minCoeff()), upper_(points.colwise().maxCoeff()) {
  constexpr Eigen::Index kNumber = 2000;
  math::Engine engine(1);
  inside_.resize(kNumber, points.cols());
  for (Eigen::Index j = 0; j < inside_.cols(); ++j)
    for (double& probe : inside_.col(j)) probe = math::DrawUniform(engine, lower_(j), upper_(j));
}

Eigen::MatrixXd ProbePoints::Of(const BitVector& subspace) const {
  constexpr std::uint64_t kMostCornered = 6;  // inputs
  const auto num_inputs = math::metamodel::CountBits(subspace);
  if (num_inputs > kMostCornered) return inside_;
  const Eigen::Index num_corners = Eigen::Index{1} << num_inputs;
  Eigen::MatrixXd probes(inside_.rows() + num_corners, inside_.cols());
  probes.topRows(inside_.rows()) = inside_;
  auto corners = probes.bottomRows(num_corners);
  corners.rowwise() = 0.5 * (lower_ + upper_);
  int bit = 0;
  for (std::size_t j = 0; j < subspace.size(); ++j) {
    if (!subspace[j]) continue;
    const auto column = static_cast<Eigen::Index>(j);
    for (Eigen::Index i = 0; i < num_corners; ++i)
      corners(i, column) = (i >> bit) & 1 ? upper_(column) : lower_(column);
    ++bit;
  }
  return probes;
}

bool IsSound(const SurrogateBase& model, const Eigen::MatrixXd& probes) {
  constexpr double kMargin = 2.0;  // of the range
  const double lower = model.GetValues().minCoeff();
  const double upper = model.GetValues().maxCoeff();
  const double margin = kMargin * (upper - lower);
  const Eigen::VectorXd predicted = model.Approximate(probes);
  return std::all_of(predicted.begin(), predicted.end(), [&](double value) {
    return value >= lower - margin && value <= upper + margin;  // false for NaN
  });
}

void CloseHoles(SurrogateBase& model, const Eigen::MatrixXd& probes) {
  constexpr double kWidening = 1.2;
  constexpr int kMostSteps = 12;
  for (int step = 0; step < kMostSteps && model.Approximate(probes).hasNaN(); ++step) {
    auto settings = dynamic_cast<const MovingLeastSquaresSettings&>(model.GetSettingsBase());
    settings.SetKernelParameter(kWidening * settings.GetKernelParameter());
    model.Initialize(settings);
    model.Build();
  }
}

}  // namespace corvath::training
