#pragma once

#include "analysis/interval.h"

#include <Eigen/Core>

namespace corvath::analysis {

/// Estimates from n independent values of one quantity, with intervals of the given confidence. Of
/// Latin hypercubes and Sobol points, which are more even than independent ones, the intervals are
/// rather too wide.
class SampleIntervals {
 public:
  /// @param values  finite, in any order
  SampleIntervals(Eigen::VectorXd values, double confidence);

  Eigen::Index GetCount() const { return sorted_.size(); }
  double GetSmallest() const;
  double GetLargest() const;
  Interval Mean() const;
  /// Standard deviation; the interval by its asymptotic variance, s^2 (kurtosis - 1) / (4 n).
  Interval Deviation() const;
  /// Standard deviation over magnitude of the mean, by the delta method.
  Interval Variation() const;
  /// The quantile p, by linear interpolation between ordered values; the interval lies between
  /// order statistics, whose probabilities are beta distributed. NaN for an end beyond the sample.
  Interval Quantile(double p) const;

 private:
  double At(double place) const;

  Eigen::VectorXd sorted_;
  double confidence_;
  double z_;  ///< of the two-sided normal interval
  double mean_;
  double deviation_;
  double skewness_ = 0.0;
  double kurtosis_ = 0.0;
};

/// A share of `count` of `total` independent trials: C. J. Clopper, E. S. Pearson, "The use of
/// confidence or fiducial limits illustrated in the case of the binomial", Biometrika 26, 1934, pp.
/// 404-413.
Interval ShareInterval(Eigen::Index count, Eigen::Index total, double confidence);

/// A linear correlation `r` of n pairs, by R. A. Fisher's transform artanh(r).
Interval CorrelationInterval(double r, Eigen::Index n, double confidence);

/// The z with the probability `confidence` between -z and z of a standard normal variable.
double TwoSidedNormal(double confidence);

}  // namespace corvath::analysis
