#include "analysis/optimisation/global_search.h"

#include "analysis/optimisation/population_search.h"
#include "doe/doe.h"
#include "foundation/constants.h"
#include "foundation/parallel.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

namespace corvath::analysis {
namespace {

using math::kInfinity;
/// Searches that run at once, whatever the number of threads.
constexpr std::size_t kBatch = 4;
/// Evaluations of the populations for each input and each local search that may be done.
constexpr Eigen::Index kEvaluations = 100;

Eigen::MatrixXd LatinHypercube(const NonlinearProgram& program, Eigen::Index n,
                               std::uint32_t seed) {
  math::StateLists states;
  if (program.HasDiscrete()) states = program.states;
  math::DOE doe(static_cast<std::uint64_t>(program.NumInputs()), seed, states);
  doe.Build(math::kLatinHypercube, static_cast<std::uint64_t>(n), false);
  Eigen::MatrixXd points = doe.GetMatrix();
  for (Eigen::Index i = 0; i < points.cols(); ++i)
    if (!program.IsDiscrete(i))
      points.col(i) = program.lower(i) +
                      0.5 * (points.col(i).array() + 1.0) * (program.upper(i) - program.lower(i));
  return points;
}

/// Points as shares of the ranges of the inputs.
Eigen::MatrixXd ToShares(const NonlinearProgram& program, const Eigen::MatrixXd& points) {
  const Eigen::RowVectorXd range =
      (program.upper - program.lower).transpose().unaryExpr([](double width) {
        return width > 0.0 ? width : 1.0;
      });
  return (points.rowwise() - program.lower.transpose()).array().rowwise() / range.array();
}

/// The distance within which a better point speaks against a start: that of the multi level method
/// with its factor 2, for n points in d dimensions.
double CriticalDistance(double n, double d) {
  const double volume = 2.0 * std::log(std::max(n, 2.0)) / n;
  return std::exp((std::log(volume) + std::lgamma(1.0 + 0.5 * d)) / d) /
         std::sqrt(3.14159265358979);
}

Eigen::VectorXd Objectives(const SqpForm& form, const Eigen::MatrixXd& values) {
  Eigen::VectorXd result(values.rows());
  for (Eigen::Index k = 0; k < values.rows(); ++k) result(k) = form.Objective(values.row(k));
  return result;
}

/// How large differences of the objective are.
double ObjectiveUnit(const SqpForm& form, const Screening& screening) {
  return ColumnScales(Objectives(form, screening.values))(0);
}

/// Objective and breach in one number: in units of their scales a breach weighs ten times. Infinite
/// where a value is NaN.
MeritFunction Merit(const NonlinearProgram& program, const SqpForm& form,
                    const Screening& screening) {
  return [&program, &screening, &form,
          unit = ObjectiveUnit(form, screening)](const Eigen::MatrixXd& values) {
    constexpr double kBreachWeight = 10.0;
    Eigen::VectorXd merits = Objectives(form, values) / unit;
    for (Eigen::Index k = 0; k < values.rows(); ++k)
      merits(k) =
          values.row(k).allFinite()
              ? merits(k) +
                    kBreachWeight * LargestBreach(program, screening.scales, values.row(k)).relative
              : kInfinity;
    return merits;
  };
}

std::vector<Eigen::Index> Ascending(const Eigen::VectorXd& merits) {
  std::vector<Eigen::Index> order(static_cast<std::size_t>(merits.size()));
  std::iota(order.begin(), order.end(), Eigen::Index{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](Eigen::Index a, Eigen::Index b) { return merits(a) < merits(b); });
  return order;
}

/// The best points of a sample from which to start: first those that no better point is near, then
/// those that no chosen one is near, then any.
std::vector<Evaluated> Starts(const NonlinearProgram& program, const MeritFunction& merit,
                              const Screening& screening, std::size_t count) {
  const Eigen::VectorXd merits = merit(screening.values);
  const std::vector<Eigen::Index> order = Ascending(merits);
  const Eigen::MatrixXd shares = ToShares(program, screening.points).transpose();
  const double critical =
      CriticalDistance(static_cast<double>(order.size()), static_cast<double>(program.NumInputs()));
  std::vector<Eigen::Index> rows;
  std::vector<bool> taken(order.size());
  for (const double distance : {critical, 0.5 * critical, 0.0})
    for (std::size_t k = 0; k < order.size() && rows.size() < count; ++k) {
      if (taken[k] || merits(order[k]) == kInfinity) continue;
      const auto is_near = [&](Eigen::Index other) {
        return (shares.col(order[k]) - shares.col(other)).squaredNorm() < distance * distance;
      };
      const bool is_covered =
          distance == critical
              ? std::any_of(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(k), is_near)
              : std::any_of(rows.begin(), rows.end(), is_near);
      if (is_covered) continue;
      taken[k] = true;
      rows.push_back(order[k]);
    }
  std::vector<Evaluated> starts;
  starts.reserve(rows.size());
  for (const Eigen::Index row : rows)
    starts.push_back({screening.points.row(row), screening.values.row(row)});
  return starts;
}

/// Different optima among the results of searches, or while none of them keeps the limits, different
/// points of the least breach. Optima as good as each other with a point between them that is as
/// good are places of one flat optimum.
class Optima {
 public:
  Optima(const NonlinearProgram& program, const SqpForm& form, const Screening& screening)
      : program_(program),
        form_(form),
        screening_(screening),
        rounding_(kEqual * ObjectiveUnit(form, screening)) {}

  void Add(const LocalOptimum& optimum) {
    const Eigen::RowVectorXd& x = optimum.point.x;
    const Eigen::RowVectorXd shares = ToShares(program_, x);
    if (!optimum.IsFeasible()) {
      if (optimum.breach.relative < kInfinity && !IsKnown(nearest_, shares))
        nearest_.push_back(shares);
      return;
    }
    for (Place& place : found_)
      if (IsSame(place.shares, shares) || IsOneFlat(place, optimum)) {
        place.lower = place.lower.cwiseMin(x);
        place.upper = place.upper.cwiseMax(x);
        return;
      }
    found_.push_back({shares, x, x, x, optimum.objective});
  }

  Eigen::Index Count() const { return static_cast<Eigen::Index>(found_.size()); }

  /// Whether `searches` of them make it likely that there are no others.
  bool IsComplete(Eigen::Index searches) const {
    const auto k = static_cast<double>(searches),
               w = static_cast<double>(found_.empty() ? nearest_.size() : found_.size());
    return w > 0.0 && k > w + 2.0 && w * (k - 1.0) / (k - w - 2.0) < w + 0.5;
  }

  /// Between which points optima lie that are one with that at `x`: two rows.
  Eigen::MatrixXd ExtentAround(const Eigen::RowVectorXd& x) const {
    const Eigen::RowVectorXd shares = ToShares(program_, x);
    Eigen::MatrixXd extent(2, x.size());
    extent << x, x;
    for (const Place& place : found_)
      if (((place.lower.array() <= x.array()) && (x.array() <= place.upper.array())).all() ||
          IsSame(place.shares, shares))
        extent << place.lower, place.upper;
    return extent;
  }

 private:
  static constexpr double kSame = 1e-3;   ///< shares of the ranges
  static constexpr double kEqual = 1e-7;  ///< share of what the objective differs by

  struct Place {
    Eigen::RowVectorXd shares;
    Eigen::RowVectorXd x, lower, upper;  ///< the first point; the box around all
    double objective;
  };

  static bool IsSame(const Eigen::RowVectorXd& a, const Eigen::RowVectorXd& b) {
    return (a - b).cwiseAbs().maxCoeff() < kSame;
  }
  static bool IsKnown(const std::vector<Eigen::RowVectorXd>& points, const Eigen::RowVectorXd& x) {
    return std::any_of(points.begin(), points.end(),
                       [&](const auto& other) { return IsSame(other, x); });
  }

  bool IsOneFlat(const Place& place, const LocalOptimum& optimum) const {
    if (!(std::abs(place.objective - optimum.objective) <= rounding_)) return false;
    const Eigen::RowVectorXd middle = 0.5 * (place.x + optimum.point.x);
    if (program_.Admit(middle) != middle) return false;
    const Eigen::RowVectorXd columns = program_.values(middle);
    return columns.allFinite() &&
           LargestBreach(program_, screening_.scales, columns).relative <= kRounding &&
           std::abs(form_.Objective(columns) - optimum.objective) <= rounding_;
  }

  const NonlinearProgram& program_;
  const SqpForm& form_;
  const Screening& screening_;
  double rounding_;
  std::vector<Place> found_;
  std::vector<Eigen::RowVectorXd> nearest_;
};

}  // namespace

Screening Screen(const NonlinearProgram& program, const Eigen::MatrixXd& given,
                 const SearchSettings& settings) {
  program.Check();
  const Eigen::Index n = program.NumInputs();
  const Eigen::Index count =
      settings.num_sample > 0 ? settings.num_sample : std::min<Eigen::Index>(2000, 200 + 100 * n);
  Screening screening;
  screening.points.resize(given.rows() + count, n);
  for (Eigen::Index k = 0; k < given.rows(); ++k)
    screening.points.row(k) = program.Admit(given.row(k));
  screening.points.bottomRows(count) = LatinHypercube(program, count, settings.seed);
  screening.values = program.values(screening.points);
  screening.scales = ColumnScales(screening.values);
  return screening;
}

GlobalOptimum SearchGlobally(const NonlinearProgram& program, const SqpForm& form,
                             const Screening& screening, const SearchSettings& settings) {
  GlobalOptimum result;
  for (Eigen::Index k = 0; k < screening.values.rows(); ++k)
    if (screening.values.row(k).allFinite()) ++result.num_finite;
  result.best.breach.relative = kInfinity;
  const auto max_searches = static_cast<std::size_t>(settings.max_searches);
  const MeritFunction merit = Merit(program, form, screening);
  const std::vector<Evaluated> starts = Starts(program, merit, screening, max_searches);
  Optima optima(program, form, screening);
  const auto search_from = [&](const std::vector<Evaluated>& batch) {
    std::vector<LocalOptimum> found(batch.size());
    utils::ParallelTasks(batch.size(), [&](std::size_t k) {
      found[k] = SearchMixed(program, form, screening.scales, batch[k]);
    });
    for (LocalOptimum& optimum : found) {
      optima.Add(optimum);
      if (result.num_searches == 0 || IsBetter(optimum, result.best))
        result.best = std::move(optimum);
      ++result.num_searches;
    }
  };
  const auto tell = [&](double share) {
    if (settings.progress) settings.progress(share);
  };
  bool is_complete = false;
  for (std::size_t first = 0; first < starts.size() && !is_complete;) {
    tell(0.5 * static_cast<double>(first) / static_cast<double>(starts.size()));
    const std::size_t last = std::min(first + kBatch, starts.size());
    search_from({starts.begin() + static_cast<std::ptrdiff_t>(first),
                 starts.begin() + static_cast<std::ptrdiff_t>(last)});
    is_complete = optima.IsComplete(result.num_searches);
    first = last;
  }
  if (!is_complete && optima.Count() != 1) {
    std::mt19937 random(settings.seed);
    PopulationSettings population;
    population.evaluations = kEvaluations * settings.max_searches * program.NumInputs();
    population.progress = [&](double share) { tell(0.5 + 0.5 * share); };
    // Where no point keeps the limits, a population that comes no closer than the searches did ends
    // the matter: two ways led to the same.
    if (optima.Count() == 0)
      population.is_enough = [&](const Evaluated& best) {
        return LargestBreach(program, screening.scales, best.columns).relative >=
               result.best.breach.relative;
      };
    search_from(SearchByPopulations(program, merit, starts, population, random));
  }
  result.num_optima = optima.Count();
  if (result.best.IsFeasible()) result.extent = optima.ExtentAround(result.best.point.x);
  return result;
}

}  // namespace corvath::analysis
