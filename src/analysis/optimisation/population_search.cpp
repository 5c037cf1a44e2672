#include "analysis/optimisation/population_search.h"

#include "foundation/constants.h"
#include "foundation/parallel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace corvath::analysis {
namespace {

/// Points evaluated at once, whatever the number of threads.
constexpr Eigen::Index kBlock = 16;
constexpr std::size_t kMemory = 5;  ///< of parameters that were successful

/// Distributions of our own: those of the standard library differ between its makers.
class Draws {
 public:
  explicit Draws(std::mt19937& random) : random_(random) {}
  double Uniform() { return (static_cast<double>(random_()) + 0.5) / 4294967296.0; }
  Eigen::Index Below(Eigen::Index count) {
    return static_cast<Eigen::Index>(Uniform() * static_cast<double>(count));
  }
  double Cauchy(double location, double scale) {
    return location + scale * std::tan(math::kPi * (Uniform() - 0.5));
  }
  double Normal(double mean, double deviation) {
    return mean + deviation * std::sqrt(-2.0 * std::log(Uniform())) *
                      std::cos(2.0 * math::kPi * Uniform());
  }

 private:
  std::mt19937& random_;
};

Eigen::MatrixXd Values(const NonlinearProgram& program, const Eigen::MatrixXd& points) {
  Eigen::MatrixXd values(points.rows(), program.NumColumns());
  const Eigen::Index blocks = (points.rows() + kBlock - 1) / kBlock;
  utils::ParallelTasks(static_cast<std::size_t>(blocks), [&](std::size_t block) {
    const Eigen::Index from = static_cast<Eigen::Index>(block) * kBlock;
    const Eigen::Index count = std::min(kBlock, points.rows() - from);
    values.middleRows(from, count) = program.values(points.middleRows(from, count));
  });
  return values;
}

class Population {
 public:
  Population(const NonlinearProgram& program, const MeritFunction& merit,
             const std::vector<Evaluated>& first, Eigen::Index size, std::mt19937& random)
      : program_(program), merit_(merit), draws_(random) {
    points_.resize(size, program.NumInputs());
    for (Eigen::Index k = 0; k < size; ++k) {
      if (k < static_cast<Eigen::Index>(first.size())) {
        points_.row(k) = first[static_cast<std::size_t>(k)].x;
        continue;
      }
      for (Eigen::Index i = 0; i < points_.cols(); ++i)
        points_(k, i) = program.lower(i) + draws_.Uniform() * (program.upper(i) - program.lower(i));
      points_.row(k) = program.Admit(points_.row(k));
    }
    values_ = Values(program, points_);
    merits_ = merit(values_);
    scales_.fill(0.5);
    rates_.fill(0.5);
  }

  Eigen::Index Size() const { return points_.rows(); }
  bool HasConverged() const {
    const double best = merits_.minCoeff(), worst = merits_.maxCoeff();
    return !std::isfinite(best) || worst - best <= 1e-7 * std::max(1.0, std::abs(best));
  }
  Evaluated Best() const {
    Eigen::Index best = 0;
    merits_.minCoeff(&best);
    return {points_.row(best), values_.row(best)};
  }

  void Advance() {
    const std::vector<Eigen::Index> order = Order();
    Eigen::MatrixXd trials = points_;
    Eigen::VectorXd scale(Size()), rate(Size());
    for (Eigen::Index k = 0; k < Size(); ++k) {
      const auto slot = static_cast<std::size_t>(draws_.Below(kMemory));
      rate(k) = std::clamp(draws_.Normal(rates_[slot], 0.1), 0.0, 1.0);
      do scale(k) = draws_.Cauchy(scales_[slot], 0.1);
      while (scale(k) <= 0.0);
      scale(k) = std::min(scale(k), 1.0);
      MakeTrial(k, scale(k), rate(k), order, trials);
    }
    const Eigen::MatrixXd values = Values(program_, trials);
    Select(trials, values, scale, rate);
  }

 private:
  std::vector<Eigen::Index> Order() const {
    std::vector<Eigen::Index> order(static_cast<std::size_t>(Size()));
    std::iota(order.begin(), order.end(), Eigen::Index{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](Eigen::Index a, Eigen::Index b) { return merits_(a) < merits_(b); });
    return order;
  }

  /// Towards one of the best, and along the difference of two others, the second of which may have
  /// been replaced before.
  void MakeTrial(Eigen::Index k, double scale, double rate, const std::vector<Eigen::Index>& order,
                 Eigen::MatrixXd& trials) {
    const auto size = static_cast<double>(Size());
    const Eigen::Index num_best =
        std::max<Eigen::Index>(2, static_cast<Eigen::Index>(0.2 * draws_.Uniform() * size));
    const Eigen::RowVectorXd best =
        points_.row(order[static_cast<std::size_t>(draws_.Below(num_best))]);
    Eigen::Index a = k;
    while (a == k) a = draws_.Below(Size());
    Eigen::Index b = k;
    while (b == k || b == a) b = draws_.Below(Size() + static_cast<Eigen::Index>(archive_.size()));
    const Eigen::RowVectorXd other = b < Size() ? Eigen::RowVectorXd(points_.row(b))
                                                : archive_[static_cast<std::size_t>(b - Size())];
    const Eigen::Index always = draws_.Below(points_.cols());
    for (Eigen::Index i = 0; i < points_.cols(); ++i) {
      if (i != always && draws_.Uniform() >= rate) continue;
      const double from = points_(k, i);
      // Between words there is no difference to go along.
      double to = program_.IsUnordered(i)
                      ? (draws_.Uniform() < 0.5 ? best(i) : points_(a, i))
                      : from + scale * (best(i) - from) + scale * (points_(a, i) - other(i));
      if (to < program_.lower(i)) to = 0.5 * (program_.lower(i) + from);
      if (to > program_.upper(i)) to = 0.5 * (program_.upper(i) + from);
      trials(k, i) = to;
    }
    trials.row(k) = program_.Admit(trials.row(k));
  }

  void Select(const Eigen::MatrixXd& trials, const Eigen::MatrixXd& values,
              const Eigen::VectorXd& scale, const Eigen::VectorXd& rate) {
    const Eigen::VectorXd merits = merit_(values);
    double sum = 0.0, sum_rate = 0.0, sum_scale = 0.0, sum_square = 0.0;
    for (Eigen::Index k = 0; k < Size(); ++k) {
      if (!(merits(k) <= merits_(k))) continue;
      if (merits(k) < merits_(k)) {
        const double gain = std::isfinite(merits_(k)) ? merits_(k) - merits(k) : 1.0;
        sum += gain;
        sum_rate += gain * rate(k);
        sum_scale += gain * scale(k);
        sum_square += gain * scale(k) * scale(k);
        if (archive_.size() < static_cast<std::size_t>(Size()))
          archive_.emplace_back(points_.row(k));
        else
          archive_[static_cast<std::size_t>(draws_.Below(Size()))] = points_.row(k);
      }
      points_.row(k) = trials.row(k);
      values_.row(k) = values.row(k);
      merits_(k) = merits(k);
    }
    if (!(sum > 0.0)) return;
    rates_[slot_] = sum_rate / sum;
    scales_[slot_] = sum_square / sum_scale;
    slot_ = (slot_ + 1) % kMemory;
  }

  const NonlinearProgram& program_;
  const MeritFunction& merit_;
  Draws draws_;
  Eigen::MatrixXd points_, values_;
  Eigen::VectorXd merits_;
  std::vector<Eigen::RowVectorXd> archive_;
  std::array<double, kMemory> scales_, rates_;
  std::size_t slot_ = 0;
};

}  // namespace

std::vector<Evaluated> SearchByPopulations(const NonlinearProgram& program,
                                           const MeritFunction& merit,
                                           const std::vector<Evaluated>& first,
                                           const PopulationSettings& settings,
                                           std::mt19937& random) {
  const Eigen::Index size = std::clamp<Eigen::Index>(20 + 4 * program.NumInputs(), 30, 100);
  std::vector<Evaluated> best;
  Eigen::Index used = 0;
  while (used + 10 * size <= settings.evaluations) {
    Population population(program, merit, best.empty() ? first : std::vector<Evaluated>(), size,
                          random);
    for (used += size; used + size <= settings.evaluations && !population.HasConverged();
         used += size) {
      if (settings.progress)
        settings.progress(static_cast<double>(used) / static_cast<double>(settings.evaluations));
      population.Advance();
    }
    best.push_back(population.Best());
    if (settings.is_enough && settings.is_enough(best.back())) break;
  }
  return best;
}

}  // namespace corvath::analysis
