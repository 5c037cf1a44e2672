#pragma once

#include <vector>

namespace corvath::algorithm {

/// Quantiles of one beta distribution on [0, 1], for many values: Taylor series along the standard
/// normal axis, whose nodes (some hundred) are math::IncompleteBetaInverse's. As accurate as that one,
/// which also answers where no series holds and Halley's iteration from there does not settle.
class BetaQuantiles {
 public:
  /// @param alpha, beta  shape parameters, positive
  BetaQuantiles(double alpha, double beta);

  /// The quantile of p = math::NormalCdf(u), p clamped as math::ClampProbability has it.
  double FromGauss(double u) const;

 private:
  /// Even: what two neighbours leave away has opposite signs half way between them.
  static constexpr int kDegree = 12;
  static constexpr int kIntervals = 256;

  struct Node {
    double coefficients[kDegree + 1];  ///< of the distance to the node
    double scale;   ///< what roundings of the value and of its probability are relative to
    bool is_exact;  ///< whether the series gives all digits up to half way to the next node

    double At(double distance) const;
  };

  Node MakeNode(double u) const;
  double LogDensity(double y) const;
  double LogDensitySlope(double y) const;
  /// Halley's step from y, which is `miss` too far on the axis of probabilities.
  double Step(double y, double miss) const;

  double alpha_, beta_;
  double log_beta_function_;
  double reach_;  ///< nodes from -reach_ to reach_: the quantiles of clamped probabilities
  double width_;  ///< between two
  std::vector<Node> nodes_;  ///< none: every value by itself
};

}  // namespace corvath::algorithm
