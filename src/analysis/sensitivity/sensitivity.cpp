#include "analysis/sensitivity/sensitivity.h"

#include "doe/scrambled_sobol.h"
#include "doe/sobol_table.h"
#include "foundation/constants.h"
#include "foundation/parallel.h"

#include <boost/random/mersenne_twister.hpp>
#include <boost/random/uniform_int_distribution.hpp>

#include <algorithm>
#include <cmath>
#include <utility>

namespace corvath::analysis {
namespace {

using Eigen::Index;

using math::kNaN;
constexpr Index kRowsAtOnce = 8192;
constexpr double kEvaluationShare = 0.9;     ///< of the progress; the bootstrap has the rest
constexpr double kMostModelValues = 2.5e8;   ///< 2 GB
constexpr double kConstantVariance = 1e-20;  ///< relative to the square of the largest value

void CheckSensitivity(const StudyModel& model, const InputSpace& space,
                      const SensitivitySettings& settings) {
  if (settings.num_base < 2) throw AnalysisError(L"The base samples need at least 2 rows.");
  if (!(settings.confidence > 0.0 && settings.confidence < 1.0))
    throw AnalysisError(L"The confidence must be between 0 and 1.");
  if (settings.num_resamples < 1 || settings.num_resamples > 100000)
    throw AnalysisError(L"The number of bootstrap samples must be between 1 and 100000.");
  if (2 * space.GetDim() > static_cast<Index>(math::kMaxSobolDimensions))
    throw AnalysisError(L"Too many inputs for the Sobol sequence.");
  const auto blocks = static_cast<double>(2 + (settings.second_order ? 2 : 1) * space.GetDim());
  const auto columns =
      static_cast<double>(std::max(model.GetNumQuantities(), model.GetNumInputs()));
  if (static_cast<double>(settings.num_base) * blocks * columns > kMostModelValues)
    throw AnalysisError(L"Base samples of " + std::to_wstring(settings.num_base) +
                        L" rows make more values than can be held.");
}

/// The values of all quantities at the blocks of rows A, B, AB_1, ..., AB_g and perhaps BA_1, ...,
/// BA_g.
class Blocks {
 public:
  Blocks(const StudyModel& model, const InputSpace& space, const SensitivitySettings& settings,
         const Progress& progress)
      : model_(model), space_(space), progress_(progress), groups_(space.GetGroups()) {
    const Index d = space.GetDim();
    const Eigen::MatrixXd points =
        math::ScrambledSobol(2 * d, settings.seed).GetPoints(0, settings.num_base);
    a_ = points.leftCols(d);
    b_ = points.rightCols(d);
    num_blocks_ = 2 + (settings.second_order ? 2 : 1) * static_cast<Index>(groups_.size());
    Add(a_);
    Add(b_);
    AddMixed(a_, b_);
    if (settings.second_order) AddMixed(b_, a_);
  }

  /// Of one quantity: n values of each block.
  Eigen::MatrixXd GetValues(Index quantity) const {
    Eigen::MatrixXd values(a_.rows(), num_blocks_);
    for (Index k = 0; k < num_blocks_; ++k)
      values.col(k) = blocks_[static_cast<std::size_t>(k)].col(quantity);
    return values;
  }
  Index GetNumEvaluations() const { return a_.rows() * num_blocks_; }

 private:
  void AddMixed(const Eigen::MatrixXd& base, const Eigen::MatrixXd& other) {
    for (const auto& group : groups_) {
      Eigen::MatrixXd mixed = base;
      for (const Index k : group) mixed.col(k) = other.col(k);
      Add(mixed);
    }
  }

  void Add(const Eigen::MatrixXd& points) {
    Eigen::MatrixXd values(points.rows(), model_.GetNumQuantities());
    for (Index first = 0; first < points.rows(); first += kRowsAtOnce) {
      const auto done = static_cast<double>(blocks_.size()) +
                        static_cast<double>(first) / static_cast<double>(points.rows());
      Report(progress_, kEvaluationShare * done / static_cast<double>(num_blocks_),
             L"evaluating the models");
      const Index count = std::min(kRowsAtOnce, points.rows() - first);
      values.middleRows(first, count) =
          model_.Evaluate(space_.FromUniform(points.middleRows(first, count)));
    }
    blocks_.push_back(std::move(values));
  }

  const StudyModel& model_;
  const InputSpace& space_;
  const Progress& progress_;
  std::vector<std::vector<Index>> groups_;
  Eigen::MatrixXd a_;
  Eigen::MatrixXd b_;
  Index num_blocks_ = 0;
  std::vector<Eigen::MatrixXd> blocks_;
};

/// The terms whose means make the indices, a row for each row of the base samples. Columns: f(A),
/// f(B), f(A)^2, f(B)^2, f(A) f(B); then of each group those of first and total order; then of each
/// pair that of the second.
class Terms {
 public:
  /// @param values  n x blocks, finite
  Terms(const Eigen::MatrixXd& values, Index num_groups, bool second_order)
      : num_groups_(num_groups), second_order_(second_order) {
    const double center = 0.5 * (values.col(0).mean() + values.col(1).mean());
    mean_ = center;
    const Eigen::ArrayXXd f = values.array() - center;
    const Index g = num_groups;
    columns_.resize(values.rows(), kFixed + 2 * g + (second_order ? g * (g - 1) / 2 : 0));
    const auto a = f.col(0);
    const auto b = f.col(1);
    columns_.col(0) = a;
    columns_.col(1) = b;
    columns_.col(2) = a.square();
    columns_.col(3) = b.square();
    columns_.col(4) = a * b;
    for (Index i = 0; i < g; ++i) {
      columns_.col(kFixed + i) = b * (f.col(2 + i) - a);
      columns_.col(kFixed + g + i) = 0.5 * (a - f.col(2 + i)).square();
    }
    if (!second_order) return;
    Index column = kFixed + 2 * g;
    for (Index i = 0; i < g; ++i)
      for (Index k = i + 1; k < g; ++k) columns_.col(column++) = f.col(2 + g + i) * f.col(2 + k);
  }

  const Eigen::MatrixXd& GetColumns() const { return columns_; }
  double GetMean() const { return mean_; }

  double Variance(const Eigen::RowVectorXd& means) const {
    const double mean = 0.5 * (means(0) + means(1));
    return 0.5 * (means(2) + means(3)) - mean * mean;
  }

  /// First orders, total orders, second orders.
  Eigen::RowVectorXd Indices(const Eigen::RowVectorXd& means) const {
    const double variance = Variance(means);
    Eigen::RowVectorXd indices = means.tail(means.size() - kFixed) / variance;
    if (!second_order_) return indices;
    Index column = 2 * num_groups_;
    for (Index i = 0; i < num_groups_; ++i)
      for (Index k = i + 1; k < num_groups_; ++k)
        indices(column++) -= means(4) / variance + indices(i) + indices(k);
    return indices;
  }

 private:
  static constexpr Index kFixed = 5;

  Index num_groups_;
  bool second_order_;
  double mean_ = 0.0;
  Eigen::MatrixXd columns_;
};

/// Means of the terms over `count` resamples of the rows.
Eigen::MatrixXd BootstrapMeans(const Eigen::MatrixXd& terms, Index count, std::uint32_t seed) {
  const Index n = terms.rows();
  Eigen::MatrixXd means(count, terms.cols());
  constexpr Index kResamples = 16;  // at a time, as one product
  const auto tasks = static_cast<std::size_t>((count + kResamples - 1) / kResamples);
  utils::ParallelTasks(tasks, [&](std::size_t task) {
    const Index first = static_cast<Index>(task) * kResamples;
    const Index rows = std::min(kResamples, count - first);
    boost::random::mt19937 engine(seed + static_cast<std::uint32_t>(task));
    boost::random::uniform_int_distribution<Index> draw(0, n - 1);
    Eigen::MatrixXd weights = Eigen::MatrixXd::Zero(rows, n);
    for (Index r = 0; r < rows; ++r)
      for (Index i = 0; i < n; ++i) weights(r, draw(engine)) += 1.0;
    means.middleRows(first, rows) = weights * terms / static_cast<double>(n);
  });
  return means;
}

/// The quantile p of each column, by linear interpolation between ordered values; NaN goes last.
Eigen::VectorXd ColumnQuantiles(const Eigen::MatrixXd& samples, double p) {
  Eigen::VectorXd quantiles(samples.cols());
  for (Index k = 0; k < samples.cols(); ++k) {
    std::vector<double> values(samples.col(k).data(), samples.col(k).data() + samples.rows());
    values.erase(
        std::remove_if(values.begin(), values.end(), [](double x) { return std::isnan(x); }),
        values.end());
    std::sort(values.begin(), values.end());
    if (values.empty()) {
      quantiles(k) = kNaN;
      continue;
    }
    const double place = p * static_cast<double>(values.size() - 1);
    const auto below = static_cast<std::size_t>(place);
    const std::size_t above = std::min(below + 1, values.size() - 1);
    quantiles(k) = values[below] + (place - std::floor(place)) * (values[above] - values[below]);
  }
  return quantiles;
}

Eigen::MatrixXd FiniteRows(const Eigen::MatrixXd& values) {
  Eigen::MatrixXd finite(values.rows(), values.cols());
  Index count = 0;
  for (Index i = 0; i < values.rows(); ++i)
    if (values.row(i).allFinite()) finite.row(count++) = values.row(i);
  finite.conservativeResize(count, Eigen::NoChange);
  return finite;
}

Estimates PartOf(const Estimates& all, Index first, Index count) {
  return {all.value.segment(first, count), all.low.segment(first, count),
          all.high.segment(first, count)};
}

QuantitySensitivity Analyse(const StudyQuantity& quantity, const Eigen::MatrixXd& values,
                            Index num_groups, const SensitivitySettings& settings) {
  QuantitySensitivity result;
  result.name = quantity.name;
  result.cop = quantity.cop;
  const Eigen::MatrixXd finite = FiniteRows(values);
  result.num_failed = values.rows() - finite.rows();
  const Index num_pairs = settings.second_order ? num_groups * (num_groups - 1) / 2 : 0;
  const Eigen::VectorXd none = Eigen::VectorXd::Constant(2 * num_groups + num_pairs, kNaN);
  Estimates all{none, none, none};
  result.mean = kNaN;
  result.variance = kNaN;
  if (finite.rows() >= 2) {
    const Terms terms(finite, num_groups, settings.second_order);
    const Eigen::RowVectorXd means = terms.GetColumns().colwise().mean();
    result.mean = terms.GetMean();
    result.variance = std::max(terms.Variance(means), 0.0);
    const double largest = finite.cwiseAbs().maxCoeff();
    result.is_constant = result.variance <= kConstantVariance * largest * largest;
    if (!result.is_constant) {
      all.value = terms.Indices(means);
      Eigen::MatrixXd resampled =
          BootstrapMeans(terms.GetColumns(), settings.num_resamples, settings.seed);
      Eigen::MatrixXd indices(resampled.rows(), none.size());
      for (Index i = 0; i < indices.rows(); ++i) indices.row(i) = terms.Indices(resampled.row(i));
      const double tail = 0.5 * (1.0 - settings.confidence);
      all.low = ColumnQuantiles(indices, tail);
      all.high = ColumnQuantiles(indices, 1.0 - tail);
    }
  }
  result.first = PartOf(all, 0, num_groups);
  result.total = PartOf(all, num_groups, num_groups);
  result.second = PartOf(all, 2 * num_groups, num_pairs);
  return result;
}

}  // namespace

Sensitivity AnalyseSensitivity(const StudyModel& model, const InputSpace& space,
                               const SensitivitySettings& settings, const Progress& progress) {
  CheckSensitivity(model, space, settings);
  Sensitivity result;
  for (const auto& group : space.GetGroups()) {
    result.groups.emplace_back();
    for (const Index k : group)
      result.groups.back().push_back(model
                                         .GetInputs()[static_cast<std::size_t>(
                                             space.GetColumns()[static_cast<std::size_t>(k)])]
                                         .name);
  }
  const Blocks blocks(model, space, settings, progress);
  result.num_evaluations = blocks.GetNumEvaluations();
  const auto num_groups = static_cast<Index>(result.groups.size());
  const auto num_quantities = static_cast<double>(model.GetNumQuantities());
  for (Index k = 0; k < model.GetNumQuantities(); ++k) {
    Report(progress,
           kEvaluationShare + (1.0 - kEvaluationShare) * static_cast<double>(k) / num_quantities,
           L"confidence intervals");
    result.quantities.push_back(Analyse(model.GetQuantities()[static_cast<std::size_t>(k)],
                                        blocks.GetValues(k), num_groups, settings));
  }
  return result;
}

}  // namespace corvath::analysis
