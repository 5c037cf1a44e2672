#pragma once

#include <vector>

namespace corvath::algorithm {

/// Quantiles of one beta distribution on [0, 1], for many values: a table over the standard normal
/// axis starts an iteration of Halley's, which mostly takes one step. As accurate as
/// math::IncompleteBetaInverse, which also makes the table (some hundred values) and answers where
/// the iteration does not settle.
class BetaQuantiles {
 public:
  /// @param alpha, beta  shape parameters, positive
  BetaQuantiles(double alpha, double beta);

  /// The quantile of p = math::NormalCdf(u), p clamped as math::ClampProbability has it.
  double FromGauss(double u) const;

 private:
  struct Node {
    double y;
    double slope;  ///< dy/du
    double bend;   ///< d2y/du2
    double inverse_density;
    double inverse_density_slope;  ///< of it, by u
  };

  static constexpr double kReach = 6.5;  ///< more than a clamped probability's 6.3613
  static constexpr int kIntervals = 512;
  static constexpr double kWidth = 2.0 * kReach / kIntervals;

  double LogDensity(double y) const;
  double LogDensitySlope(double y) const;

  double alpha_, beta_;
  double log_beta_function_;
  std::vector<Node> nodes_;  ///< none: every value by itself
};

}  // namespace corvath::algorithm
