#include "stochastics/marginal_transform.h"

#include "stochastics/distributions/beta_quantiles.h"
#include "stochastics/normal_quantile.h"

#include <cmath>

namespace corvath::algorithm {

namespace {

namespace types = enums::RandomVariable;

/// Probability below the stored state nearest to x, and half of its own.
double MiddleOfNearestState(const RV& variable, double x) {
  const Eigen::VectorXd& table = variable.GetParameters();  // value, probability, value, ...
  double nearest = std::abs(x - table(0));
  double middle = 0.5 * table(1);
  double below = table(1);
  for (Eigen::Index i = 2; i + 1 < table.size(); i += 2) {
    const double distance = std::abs(x - table(i));
    if (distance < nearest) {
      nearest = distance;
      middle = below + 0.5 * table(i + 1);
    }
    below += table(i + 1);
  }
  return middle;
}

}  // namespace

double MarginalToGauss(const RV& variable, double x) {
  if (std::isnan(x)) return x;
  const Eigen::VectorXd& parameters = variable.GetParameters();
  switch (variable.GetTypeId()) {
    case types::NORMAL:
      return (x - parameters(0)) / parameters(1);
    case types::LOGNORMAL:
      return (std::log(x) - parameters(0)) / parameters(1);
    case types::BERNOULLI:
      return math::NormalQuantile(0.5 * (x >= 0.5 ? 2.0 - parameters(0) : 1.0 - parameters(0)));
    case types::DISCRETE:
      return math::NormalQuantile(MiddleOfNearestState(variable, x));
    default:
      return math::NormalQuantile(variable.CDF(x));
  }
}

double MarginalFromGauss(const RV& variable, double u) {
  const Eigen::VectorXd& parameters = variable.GetParameters();
  switch (variable.GetTypeId()) {
    case types::NORMAL:
      return u * parameters(1) + parameters(0);
    case types::LOGNORMAL:
      return std::exp(u * parameters(1) + parameters(0));
    default:
      return variable.InverseCDF(math::NormalCdf(u));
  }
}

void MarginalsFromGauss(const RV& variable, Eigen::Index i, const Eigen::MatrixXd& samples,
                        Eigen::MatrixXd& result) {
  if (variable.GetTypeId() == types::BETA && samples.cols() >= kManyValues) {
    const Eigen::VectorXd& parameters = variable.GetParameters();  // bounds, shapes
    const BetaQuantiles quantiles(parameters(2), parameters(3));
    const double length = parameters(1) - parameters(0);
    for (Eigen::Index sample = 0; sample < samples.cols(); ++sample)
      result(i, sample) = parameters(0) + length * quantiles.FromGauss(samples(i, sample));
    return;
  }
  for (Eigen::Index sample = 0; sample < samples.cols(); ++sample)
    result(i, sample) = MarginalFromGauss(variable, samples(i, sample));
}

}  // namespace corvath::algorithm
