#include "training/subspace_filters.h"

#include "stochastics/sample_statistics.h"
#include "stochastics/special_functions.h"
#include "training/forward_selection.h"
#include "training/regression_screening.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace corvath::training {
namespace {

using math::metamodel::BitVector;

/// Levels of one filter at most, whatever steps the settings ask for.
constexpr int kMostLevels = 100;

/// Ranks from 1, equal values sharing their mean rank.
Eigen::VectorXd Ranks(const Eigen::Ref<const Eigen::VectorXd>& values) {
  std::vector<Eigen::Index> order(static_cast<std::size_t>(values.size()));
  std::iota(order.begin(), order.end(), Eigen::Index{0});
  std::sort(order.begin(), order.end(),
            [&](Eigen::Index a, Eigen::Index b) { return values(a) < values(b); });
  Eigen::VectorXd ranks(values.size());
  for (std::size_t begin = 0; begin < order.size();) {
    std::size_t end = begin;
    while (end < order.size() && values(order[end]) == values(order[begin])) ++end;
    for (std::size_t k = begin; k < end; ++k)
      ranks(order[k]) = 0.5 * static_cast<double>(begin + end + 1);
    begin = end;
  }
  return ranks;
}

/// Magnitude of each input's correlation with the response.
Eigen::VectorXd Correlations(const ResponseData& data, bool ranks) {
  const Eigen::VectorXd values = ranks ? Ranks(data.values) : data.values;
  Eigen::VectorXd correlations = Eigen::VectorXd::Zero(data.points.cols());
  for (Eigen::Index j = 0; j < data.points.cols(); ++j) {
    if (data.num_levels[static_cast<std::size_t>(j)] < 2) continue;
    const Eigen::VectorXd column =
        ranks ? Ranks(data.points.col(j)) : Eigen::VectorXd(data.points.col(j));
    correlations(j) = std::abs(math::statistics::LinearCorrelation(column, values, false, false));
  }
  return correlations;
}

/// Probability that uncorrelated normal samples of size n correlate less: of |t| below
/// r sqrt((n - 2) / (1 - r^2)) with n - 2 degrees of freedom.
double CorrelationSignificance(double correlation, Eigen::Index n) {
  const double freedom = static_cast<double>(n) - 2.0;
  return math::IncompleteBeta(0.5, 0.5 * freedom, std::min(1.0, correlation * correlation));
}

BitVector NotBelow(const Eigen::VectorXd& measures, double limit) {
  BitVector bits(static_cast<std::size_t>(measures.size()));
  for (std::size_t j = 0; j < bits.size(); ++j)
    bits[j] = measures(static_cast<Eigen::Index>(j)) >= limit;
  return bits;
}

/// step, 2 step, ... up to `largest`; that alone for a step that makes no sense.
std::vector<double> LevelsOf(double step, double largest) {
  if (!(step > 0.0 && step < largest)) return {largest};
  std::vector<double> levels;
  constexpr double kRounding = 1e-9;
  for (int k = 1; k <= kMostLevels && k * step <= largest * (1.0 + kRounding); ++k)
    levels.push_back(k * step);
  return levels;
}

/// Subspaces in the order in which they come, each once.
class Proposals {
 public:
  Proposals(const ResponseData& data, const InputFilters& filters)
      : always_(data.num_levels.size(), false), never_(data.num_levels.size(), false) {
    for (const std::uint64_t input : filters.always)
      if (input < always_.size()) always_[input] = true;
    // An input may be constant in just those designs that have this response.
    for (std::size_t j = 0; j < never_.size(); ++j) never_[j] = data.num_levels[j] < 2;
  }

  void Add(BitVector subspace) {
    for (std::size_t j = 0; j < subspace.size(); ++j)
      subspace[j] = (subspace[j] || always_[j]) && !never_[j];
    if (std::find(subspace.begin(), subspace.end(), true) == subspace.end()) return;
    if (std::find(subspaces_.begin(), subspaces_.end(), subspace) == subspaces_.end())
      subspaces_.push_back(std::move(subspace));
  }

  std::vector<BitVector> Take() { return std::move(subspaces_); }

 private:
  BitVector always_;
  BitVector never_;
  std::vector<BitVector> subspaces_;
};

void FilterByCorrelation(const ResponseData& data, const InputFilters& filters, Proposals& found) {
  const Eigen::VectorXd correlations = Correlations(data, filters.rank_correlation);
  if (filters.by_significance) {
    const Eigen::VectorXd significances = correlations.unaryExpr([&](double correlation) {
      return CorrelationSignificance(correlation, data.values.size());
    });
    found.Add(NotBelow(significances, filters.min_significance));
    for (const double level : LevelsOf(filters.significance_step, 1.0 - filters.min_significance))
      if (filters.min_significance + level < 1.0 - 0.5 * filters.significance_step)
        found.Add(NotBelow(significances, filters.min_significance + level));
  }
  const auto steps =
      static_cast<int>(std::min<std::uint64_t>(filters.correlation_steps, kMostLevels));
  for (int k = 1; filters.by_correlation && k < steps; ++k)
    found.Add(NotBelow(correlations, correlations.maxCoeff() * k / steps));
}

/// Of subspaces of falling size the last that explain at most a tolerance less than the best.
void ProposeFewest(const std::vector<BitVector>& sequence, const std::vector<double>& shares,
                   const InputFilters& filters, Proposals& found) {
  const double best = *std::max_element(shares.begin(), shares.end());
  const auto fewest = [&](double tolerance) {
    std::size_t k = shares.size() - 1;
    while (k > 0 && shares[k] < best - tolerance) --k;
    return sequence[k];
  };
  found.Add(fewest(0.0));
  for (const double tolerance : LevelsOf(filters.quality.step, filters.quality.largest))
    found.Add(fewest(tolerance));
}

/// Leaves out the least important input again and again.
void FilterByQuality(RegressionScreening screening, const InputFilters& filters, Proposals& found) {
  std::vector<BitVector> sequence{screening.GetInputs()};
  std::vector<double> shares{screening.GetDetermination()};
  const auto num_inputs = std::count(sequence[0].begin(), sequence[0].end(), true);
  for (auto left = num_inputs; left > 1; --left) {
    const Eigen::VectorXd losses = screening.GetLosses();
    std::size_t least = losses.size();
    for (std::size_t j = 0; j < screening.GetInputs().size(); ++j)
      if (screening.GetInputs()[j] &&
          (least == static_cast<std::size_t>(losses.size()) ||
           losses(static_cast<Eigen::Index>(j)) < losses(static_cast<Eigen::Index>(least))))
        least = j;
    screening.Remove(least);
    sequence.push_back(screening.GetInputs());
    shares.push_back(screening.GetDetermination());
  }
  ProposeFewest(sequence, shares, filters, found);
}

/// Takes inputs in again and again.
void FilterForward(const ResponseData& data, const InputFilters& filters, Proposals& found) {
  std::vector<BitVector> sequence;
  std::vector<double> shares;
  for (ForwardStep& step :
       SelectForward(data, filters.adjusted_determination, filters.min_significance)) {
    sequence.insert(sequence.begin(), std::move(step.inputs));
    shares.insert(shares.begin(), step.determination);
  }
  if (!sequence.empty()) ProposeFewest(sequence, shares, filters, found);
}

}  // namespace

std::vector<BitVector> ProposeSubspaces(const ResponseData& data, const InputFilters& filters) {
  const auto m = static_cast<std::size_t>(data.points.cols());
  Proposals found(data, filters);
  found.Add(BitVector(m, true));
  FilterByCorrelation(data, filters, found);
  if (filters.by_importance || filters.by_quality) {
    const RegressionScreening screening(data, filters.adjusted_determination);
    if (filters.by_importance) {
      const Eigen::VectorXd importances = screening.GetLosses();
      for (const double level : LevelsOf(filters.importance.step, filters.importance.largest))
        found.Add(NotBelow(importances, level));
    }
    if (filters.by_quality) {
      FilterByQuality(screening, filters, found);
      FilterForward(data, filters, found);
    }
  }
  return found.Take();
}

}  // namespace corvath::training
