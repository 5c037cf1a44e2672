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
constexpr double kWide = 0.3;       ///< share about the design points with the larger spread
constexpr double kSpread = 1.5;     ///< of these, where a limit surface is long or bent
constexpr Index kPointsPerRound = 2048;
constexpr Index kFewestViolations = 100;  ///< below them the spread of the weights says little

/// A mixture of normal densities about several centres, each with one standard deviation.
class Mixture {
 public:
  explicit Mixture(const std::vector<DesignPoint>& points) {
    double sum = 0.0;
    for (const DesignPoint& point : points) sum += point.GetProbability();
    for (const DesignPoint& point : points) {
      const double share = point.GetProbability() / sum;
      parts_.push_back({point.u, 1.0, (1.0 - kWide - kDefensive) * share});
      parts_.push_back({point.u, kSpread, kWide * share});
    }
    parts_.push_back({Eigen::VectorXd::Zero(points.front().u.size()), 1.0, kDefensive});
  }

  /// @param p  n x (1 + D) uniform coordinates; the first chooses the part
  Eigen::MatrixXd Points(const Eigen::MatrixXd& p) const {
    Eigen::MatrixXd u = p.rightCols(p.cols() - 1).unaryExpr(&math::NormalQuantile);
    for (Index i = 0; i < u.rows(); ++i) {
      std::size_t k = 0;
      for (double left = p(i, 0) - parts_[0].weight; left > 0.0 && k + 1 < parts_.size();
           left -= parts_[k].weight)
        ++k;
      u.row(i) = parts_[k].deviation * u.row(i) + parts_[k].center.transpose();
    }
    return u;
  }

  /// Density of the standard normal distribution over that of the mixture; up to 1 / kDefensive.
  double Ratio(const Eigen::VectorXd& u) const {
    double sum = 0.0;
    for (const Part& part : parts_) {
      const double distance = (u - part.center).squaredNorm() / (part.deviation * part.deviation);
      sum += part.weight * std::exp(0.5 * (u.squaredNorm() - distance)) /
             std::pow(part.deviation, static_cast<double>(u.size()));
    }
    return 1.0 / sum;
  }

 private:
  struct Part {
    Eigen::VectorXd center;
    double deviation;
    double weight;
  };
  std::vector<Part> parts_;
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
    const Eigen::MatrixXd u = mixture.Points(
        sobol.GetPoints(static_cast<std::uint64_t>(result.num_points), kPointsPerRound));
    const Eigen::VectorXd g = scatter.Evaluate(u).col(limit);
    for (Index i = 0; i < kPointsPerRound; ++i) {
      if (!std::isfinite(g(i))) ++result.num_failed;
      if (!IsViolated(g(i))) continue;
      const double weight = mixture.Ratio(u.row(i).transpose());
      ++result.num_violations;
      sum += weight;
      squares += weight * weight;
    }
    result.num_points += kPointsPerRound;
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
