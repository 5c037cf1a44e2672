#include "analysis/propagation/importance_sampling.h"

#include "analysis/propagation/sample_intervals.h"
#include "doe/scrambled_sobol.h"
#include "stochastics/normal_quantile.h"

#include <algorithm>
#include <cmath>

namespace corvath::analysis {
namespace {

using Eigen::Index;

constexpr double kDefensive = 0.1;  ///< share about the origin
constexpr Index kBatch = 2048;
constexpr Index kFewestViolations = 100;  ///< below them the spread of the weights says little

/// A mixture of normal densities with unit covariance about several centres.
class Mixture {
 public:
  explicit Mixture(const std::vector<DesignPoint>& points) {
    double sum = 0.0;
    for (const DesignPoint& point : points) sum += point.GetProbability();
    for (const DesignPoint& point : points) {
      centers_.push_back(point.u);
      weights_.push_back((1.0 - kDefensive) * point.GetProbability() / sum);
    }
    centers_.push_back(Eigen::VectorXd::Zero(points.front().u.size()));
    weights_.push_back(kDefensive);
  }

  /// @param p  n x (1 + D) uniform coordinates; the first chooses the centre
  Eigen::MatrixXd Points(const Eigen::MatrixXd& p) const {
    Eigen::MatrixXd u = p.rightCols(p.cols() - 1).unaryExpr(&math::NormalQuantile);
    for (Index i = 0; i < u.rows(); ++i) {
      std::size_t k = 0;
      for (double left = p(i, 0) - weights_[0]; left > 0.0 && k + 1 < weights_.size();
           left -= weights_[k])
        ++k;
      u.row(i) += centers_[k].transpose();
    }
    return u;
  }

  /// Density of the standard normal distribution over that of the mixture.
  double Ratio(const Eigen::VectorXd& u) const {
    double sum = 0.0;
    for (std::size_t k = 0; k < centers_.size(); ++k)
      sum += weights_[k] * std::exp(centers_[k].dot(u) - 0.5 * centers_[k].squaredNorm());
    return 1.0 / sum;
  }

 private:
  std::vector<Eigen::VectorXd> centers_;
  std::vector<double> weights_;
};

}  // namespace

ImportanceSample SampleAround(const Scatter& scatter, Index limit,
                              const std::vector<DesignPoint>& points,
                              const ImportanceSettings& settings, const Progress& progress) {
  const Mixture mixture(points);
  const math::ScrambledSobol sobol(1 + scatter.GetDim(), settings.seed);
  const double z = TwoSidedNormal(settings.confidence);
  ImportanceSample result;
  double sum = 0.0;
  double squares = 0.0;
  while (result.num_points < settings.most) {
    Report(progress, static_cast<double>(result.num_points) / static_cast<double>(settings.most),
           L"importance sampling");
    const Eigen::MatrixXd u =
        mixture.Points(sobol.GetPoints(static_cast<std::uint64_t>(result.num_points), kBatch));
    const Eigen::VectorXd g = scatter.Evaluate(u).col(limit);
    for (Index i = 0; i < kBatch; ++i) {
      if (!std::isfinite(g(i))) ++result.num_failed;
      if (!(g(i) < 0.0)) continue;
      const double weight = mixture.Ratio(u.row(i).transpose());
      ++result.num_violations;
      sum += weight;
      squares += weight * weight;
    }
    result.num_points += kBatch;
    const auto n = static_cast<double>(result.num_points);
    const double mean = sum / n;
    const double half_width = z * std::sqrt(std::max(squares / n - mean * mean, 0.0) / n);
    result.probability = {mean, std::max(mean - half_width, 0.0), std::min(mean + half_width, 1.0)};
    if (result.num_violations >= kFewestViolations && half_width <= settings.precision * mean)
      break;
  }
  return result;
}

}  // namespace corvath::analysis
