#include "analysis/propagation/design_points.h"

#include "analysis/optimisation/local_search.h"
#include "doe/scrambled_sobol.h"
#include "doe/sobol_table.h"
#include "stochastics/normal_quantile.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace corvath::analysis {
namespace {

using Eigen::Index;

constexpr std::size_t kMostRuns = 12;    ///< of the SQP for one limit
constexpr Index kDirections = 256;       ///< besides the axes
constexpr double kGradientStep = 1e-3;   ///< errors of central differences are near 1e-7 then
constexpr double kSameDirection = 0.95;  ///< cosine: a start beside a known point adds nothing
constexpr double kSamePoint = 0.1;       ///< distance, relative to beta
constexpr double kNegligible = 3.0;      ///< beyond the smallest beta: thousand times less likely
constexpr double kOnSurface = 1e-4;      ///< of |g| at the origin

class Search {
 public:
  Search(const Scatter& scatter, Index limit, const Progress& progress)
      : scatter_(scatter), limit_(limit), progress_(progress) {
    at_origin_ = Values(Eigen::MatrixXd::Zero(1, scatter.GetDim()))(0);
  }

  bool HasOrigin() const { return std::isfinite(at_origin_); }
  bool IsViolatedAtOrigin() const { return IsViolated(at_origin_); }
  const std::vector<DesignPoint>& GetPoints() const { return points_; }

  /// Rows of `starts` in their order, those beside what is known left out.
  void RunFrom(const Eigen::MatrixXd& starts) {
    for (Index i = 0; i < starts.rows() && num_runs_ < kMostRuns; ++i) {
      const Eigen::VectorXd start = starts.row(i).transpose();
      if (IsKnownDirection(start)) continue;
      ++num_runs_;
      tried_.push_back(start);
      if (const auto u = Minimize(start)) Keep(*u);
    }
  }

  /// The first violation (or the first point that keeps the limit, if the origin violates it) on
  /// rays from the origin, nearest first.
  Eigen::MatrixXd FindOnRays(std::uint32_t seed) const {
    const Eigen::MatrixXd directions = Directions(seed);
    constexpr double kRadii[] = {1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0};
    std::vector<std::pair<double, Index>> found;
    std::vector<bool> is_found(static_cast<std::size_t>(directions.rows()));
    for (const double radius : kRadii) {
      const Eigen::VectorXd g = Values(radius * directions);
      for (Index i = 0; i < g.size(); ++i) {
        if (is_found[static_cast<std::size_t>(i)] || !IsBeyond(g(i))) continue;
        is_found[static_cast<std::size_t>(i)] = true;
        found.emplace_back(radius, i);
      }
    }
    Eigen::MatrixXd starts(static_cast<Index>(found.size()), directions.cols());
    for (std::size_t i = 0; i < found.size(); ++i)
      starts.row(static_cast<Index>(i)) = found[i].first * directions.row(found[i].second);
    return starts;
  }

 private:
  Eigen::VectorXd Values(const Eigen::MatrixXd& u) const {
    return scatter_.Evaluate(u).col(limit_);
  }
  bool IsBeyond(double g) const {
    return std::isfinite(g) && IsViolated(g) != IsViolatedAtOrigin();
  }

  /// Both ways of each axis, then directions of even spread; rows of length 1.
  Eigen::MatrixXd Directions(std::uint32_t seed) const {
    const Index d = scatter_.GetDim();
    const Index num_more = d > static_cast<Index>(math::kMaxSobolDimensions) ? 0 : kDirections;
    Eigen::MatrixXd directions = Eigen::MatrixXd::Zero(2 * d + num_more, d);
    directions.topRows(d).diagonal().setOnes();
    directions.middleRows(d, d).diagonal().setConstant(-1.0);
    if (num_more > 0)
      directions.bottomRows(num_more) = math::ScrambledSobol(d, seed)
                                            .GetPoints(0, num_more)
                                            .unaryExpr(&math::NormalQuantile)
                                            .rowwise()
                                            .normalized();
    return directions;
  }

  bool IsKnownDirection(const Eigen::VectorXd& start) const {
    const auto is_near = [&](const Eigen::VectorXd& other) {
      return start.dot(other) >= kSameDirection * start.norm() * other.norm();
    };
    if (start.norm() == 0.0) return !tried_.empty();
    return std::any_of(tried_.begin(), tried_.end(),
                       [&](const auto& u) { return u.norm() > 0.0 && is_near(u); }) ||
           std::any_of(points_.begin(), points_.end(),
                       [&](const DesignPoint& point) { return is_near(point.u); });
  }

  /// The nearest point of the limit surface that a run from `start` ends at; nothing if it does
  /// not.
  std::optional<Eigen::VectorXd> Minimize(const Eigen::VectorXd& start) const {
    const Index d = start.size();
    const double scale =
        (IsViolatedAtOrigin() ? 1.0 : -1.0) / std::max(std::abs(at_origin_), 1e-300);
    NonlinearProgram program;
    program.lower = Eigen::VectorXd::Constant(d, -kFarthest);
    program.upper = -program.lower;
    program.num_limits = 1;
    program.difference = kGradientStep / (2.0 * kFarthest);
    program.values = [&](const Eigen::MatrixXd& u) {
      Report(progress_, static_cast<double>(num_runs_) / static_cast<double>(kMostRuns + 1),
             L"searching design points");
      Eigen::MatrixXd columns(u.rows(), 2);
      columns << 0.5 * u.rowwise().squaredNorm(), scale * Values(u);
      return columns;
    };
    const Eigen::Vector2d scales = Eigen::Vector2d::Ones();
    const Evaluated from =
        EvaluateAt(program, start.transpose().cwiseMax(-kFarthest).cwiseMin(kFarthest));
    const Evaluated best =
        RunSqp(program, ObjectiveForm(program, scales), scales, HeldDiscrete(program), from, 0.0)
            .point;
    const Eigen::VectorXd u = best.x.transpose();
    // On the surface, not merely beyond it: elsewhere the run ended early.
    if (!(std::abs(best.columns(1)) <= kOnSurface) || u.cwiseAbs().maxCoeff() >= kFarthest)
      return std::nullopt;
    return u;
  }

  void Keep(const Eigen::VectorXd& u) {
    const double distance = u.norm();
    for (DesignPoint& known : points_) {
      if ((known.u - u).norm() > kSamePoint * std::max(distance, 1.0)) continue;
      if (distance < known.u.norm()) known = Describe(u);
      return Sort();
    }
    points_.push_back(Describe(u));
    Sort();
  }

  DesignPoint Describe(const Eigen::VectorXd& u) const {
    DesignPoint point;
    point.u = u;
    point.beta = IsViolatedAtOrigin() ? -u.norm() : u.norm();
    point.importances = u.cwiseAbs2() / std::max(u.squaredNorm(), 1e-300);
    return point;
  }

  void Sort() {
    std::sort(points_.begin(), points_.end(), [](const DesignPoint& a, const DesignPoint& b) {
      return std::abs(a.beta) < std::abs(b.beta);
    });
    const double most = std::abs(points_.front().beta) + kNegligible;
    points_.erase(std::find_if(points_.begin(), points_.end(),
                               [&](const DesignPoint& p) { return std::abs(p.beta) > most; }),
                  points_.end());
  }

  const Scatter& scatter_;
  Index limit_;
  const Progress& progress_;
  double at_origin_ = 0.0;
  std::size_t num_runs_ = 0;
  std::vector<Eigen::VectorXd> tried_;
  std::vector<DesignPoint> points_;
};

}  // namespace

double DesignPoint::GetProbability() const {
  return math::NormalCdf(-beta);
}

std::vector<DesignPoint> FindDesignPoints(const Scatter& scatter, Index limit,
                                          const Eigen::MatrixXd& starts, std::uint32_t seed,
                                          const Progress& progress) {
  if (scatter.HasDiscrete())
    throw AnalysisError(L"FORM needs continuous inputs, but a random input is discrete.");
  Search search(scatter, limit, progress);
  if (!search.HasOrigin()) return {};
  search.RunFrom(Eigen::MatrixXd::Zero(1, scatter.GetDim()));
  search.RunFrom(starts);
  search.RunFrom(search.FindOnRays(seed));
  return search.GetPoints();
}

}  // namespace corvath::analysis
