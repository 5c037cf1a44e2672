#include "analysis/propagation/propagation.h"

#include "analysis/propagation/sample_intervals.h"
#include "doe/latin_hypercube.h"
#include "doe/random_draws.h"
#include "doe/scrambled_sobol.h"
#include "doe/sobol.h"
#include "foundation/closeness.h"
#include "foundation/constants.h"
#include "stochastics/normal_quantile.h"
#include "stochastics/sample_statistics.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace corvath::analysis {
namespace {

using Eigen::Index;

using math::kNaN;
constexpr Index kRowsPerReport = 8192;
constexpr double kSampleShare = 0.5;     ///< of the progress, if limits follow
constexpr double kMostValues = 2.5e8;    ///< 2 GB
constexpr std::size_t kMostStarts = 32;  ///< of the search for design points, from the sample
constexpr double kPrecision = 0.1;       ///< of importance sampling, unless another is asked for
/// FORM is told to be wrong where it misses the interval and is off by this factor.
constexpr double kDisagreement = 1.25;

void CheckPropagation(const Scatter& scatter, const PropagationSettings& settings) {
  if (settings.num_designs < 2) throw AnalysisError(L"The sample needs at least 2 designs.");
  if (!(settings.confidence > 0.0 && settings.confidence < 1.0))
    throw AnalysisError(L"The confidence must be between 0 and 1.");
  if (!(settings.until == 0.0 || (settings.until >= 1e-6 && settings.until <= 1.0)))
    throw AnalysisError(L"The precision must be a number from 1e-6 to 1.");
  for (const double p : settings.quantiles)
    if (!(p > 0.0 && p < 1.0))
      throw AnalysisError(L"Quantiles are wanted of probabilities between 0 and 1.");
  if (scatter.GetDim() >= static_cast<Index>(math::kMaxSobolDimensions))
    throw AnalysisError(L"Too many inputs for the Sobol sequence.");
  const Index columns = std::max(scatter.GetModel().GetNumQuantities(), scatter.GetDim());
  const Index rows =
      settings.until > 0.0 ? std::max(settings.most, settings.num_designs) : settings.num_designs;
  if (static_cast<double>(rows) * static_cast<double>(columns) > kMostValues)
    throw AnalysisError(L"A sample of " + std::to_wstring(rows) +
                        L" designs makes more values than can be held.");
}

/// The points of a sample that grows by parts, in standard normal coordinates.
class Points {
 public:
  Points(SampleScheme scheme, Index dim, std::uint32_t seed)
      : scheme_(scheme), dim_(dim), engine_(seed), sobol_(dim, seed) {}

  Eigen::MatrixXd GetNext(Index n) {
    Eigen::MatrixXd p(n, dim_);
    if (scheme_ == SampleScheme::kSobol) {
      p = sobol_.GetPoints(num_before_, n);
      num_before_ += static_cast<std::uint64_t>(n);
    } else if (scheme_ == SampleScheme::kLatinHypercube) {
      p = 0.5 * (math::LatinHypercube(engine_, n, dim_, /*midpoints=*/false).array() + 1.0);
    } else {
      for (Index i = 0; i < n; ++i)
        for (Index k = 0; k < dim_; ++k) p(i, k) = math::DrawUniform(engine_, 0.0, 1.0);
    }
    return p.unaryExpr(&math::NormalQuantile);
  }

 private:
  SampleScheme scheme_;
  Index dim_;
  math::Engine engine_;
  math::ScrambledSobol sobol_;
  std::uint64_t num_before_ = 0;
};

/// What the sample tells of one limit.
struct LimitCount {
  Index column = 0;  ///< of the limit among the quantities
  Index num_violations = 0;
  Index num_finite = 0;
  bool varies = false;  ///< a limit that is always 0 has no surface
  double any = kNaN;    ///< one of its values
  Index num_violations_without_errors = 0;
  Index num_finite_without_errors = 0;
  /// Points beyond the limit and within it, by their distance from the origin: starts.
  std::vector<std::pair<double, Eigen::VectorXd>> violating;
  std::vector<std::pair<double, Eigen::VectorXd>> keeping;
};

void KeepNearest(const Eigen::MatrixXd& u, Index row,
                 std::vector<std::pair<double, Eigen::VectorXd>>& nearest) {
  const double distance = u.row(row).norm();
  if (nearest.size() == kMostStarts && distance >= nearest.back().first) return;
  const auto place =
      std::upper_bound(nearest.begin(), nearest.end(), distance,
                       [](double value, const auto& other) { return value < other.first; });
  nearest.emplace(place, distance, u.row(row).transpose());
  if (nearest.size() > kMostStarts) nearest.pop_back();
}

class Sample {
 public:
  Sample(const Scatter& scatter, const Scatter& without_errors, const PropagationSettings& settings)
      : scatter_(scatter),
        without_errors_(without_errors),
        settings_(settings),
        points_(settings.scheme, scatter.GetDim(), settings.seed) {
    const auto& quantities = scatter.GetModel().GetQuantities();
    for (std::size_t k = 0; k < quantities.size(); ++k) {
      if (!quantities[k].IsLimit()) continue;
      limits_.emplace_back();
      limits_.back().column = static_cast<Index>(k);
    }
  }

  /// @returns whether the precision is reached
  bool Run(const Progress& progress) {
    Add(settings_.num_designs, progress);
    if (settings_.until == 0.0) return true;
    while (!IsPrecise()) {
      if (2 * values_.rows() > settings_.most) return false;
      Add(values_.rows(), progress);
    }
    return true;
  }

  const Eigen::MatrixXd& GetValues() const { return values_; }
  const std::vector<LimitCount>& GetLimits() const { return limits_; }

  SampleIntervals IntervalsOf(Index quantity) const {
    const auto column = values_.col(quantity);
    Eigen::VectorXd finite(column.size());
    Index count = 0;
    for (const double value : column)
      if (std::isfinite(value)) finite(count++) = value;
    finite.conservativeResize(count);
    return SampleIntervals(std::move(finite), settings_.confidence);
  }

 private:
  void Add(Index n, const Progress& progress) {
    const Index before = values_.rows();
    values_.conservativeResize(before + n, scatter_.GetModel().GetNumQuantities());
    const Eigen::MatrixXd u = points_.GetNext(n);
    for (Index first = 0; first < n; first += kRowsPerReport) {
      const double most = static_cast<double>(
          settings_.until > 0.0 ? std::max(settings_.most, before + n) : before + n);
      Report(progress, static_cast<double>(before + first) / most, L"sampling");
      const Index count = std::min(kRowsPerReport, n - first);
      const auto rows = u.middleRows(first, count);
      values_.middleRows(before + first, count) = scatter_.Evaluate(rows);
      CountViolations(rows, values_.middleRows(before + first, count));
    }
  }

  void CountViolations(const Eigen::MatrixXd& u, const Eigen::MatrixXd& values) {
    if (limits_.empty()) return;
    Eigen::MatrixXd exact;
    if (settings_.with_errors)
      exact = without_errors_.Evaluate(u.leftCols(without_errors_.GetDim()));
    for (LimitCount& limit : limits_)
      for (Index i = 0; i < u.rows(); ++i) {
        const double g = values(i, limit.column);
        if (std::isfinite(g)) {
          ++limit.num_finite;
          if (limit.num_finite == 1) limit.any = g;
          limit.varies = limit.varies || !math::IsClose(g, limit.any);
          limit.num_violations += IsViolated(g);
          KeepNearest(u, i, g < 0.0 ? limit.violating : limit.keeping);
        }
        if (!settings_.with_errors || !std::isfinite(exact(i, limit.column))) continue;
        ++limit.num_finite_without_errors;
        limit.num_violations_without_errors += IsViolated(exact(i, limit.column));
      }
  }

  bool IsPrecise() const {
    const auto is_within = [&](const Interval& interval, double scale) {
      return !(interval.high - interval.low > 2.0 * settings_.until * scale);  // NaN is no reason
    };
    for (Index k = 0; k < values_.cols(); ++k) {
      const SampleIntervals intervals = IntervalsOf(k);
      const double sd = intervals.Deviation().value;
      if (!is_within(intervals.Mean(), std::max(std::abs(intervals.Mean().value), sd)) ||
          !is_within(intervals.Deviation(), sd))
        return false;
    }
    // Where there are design points, importance sampling reaches the precision by itself.
    if (settings_.with_form && !scatter_.HasDiscrete()) return true;
    return std::all_of(limits_.begin(), limits_.end(), [&](const LimitCount& limit) {
      const Interval share =
          ShareInterval(limit.num_violations, limit.num_finite, settings_.confidence);
      return is_within(share, share.value);
    });
  }

  const Scatter& scatter_;
  const Scatter& without_errors_;
  const PropagationSettings& settings_;
  Points points_;
  Eigen::MatrixXd values_;
  std::vector<LimitCount> limits_;
};

QuantityScatter DescribeQuantity(const std::wstring& name, const SampleIntervals& intervals,
                                 Index num_designs, const std::vector<double>& quantiles) {
  QuantityScatter result;
  result.name = name;
  result.mean = intervals.Mean();
  result.deviation = intervals.Deviation();
  result.variation = intervals.Variation();
  result.smallest = intervals.GetSmallest();
  result.largest = intervals.GetLargest();
  for (const double p : quantiles) result.quantiles.push_back(intervals.Quantile(p));
  result.num_failed = num_designs - intervals.GetCount();
  return result;
}

/// Correlations over the designs at which all quantities that have values have one.
void Correlate(const Eigen::MatrixXd& values, double confidence, Propagation& result) {
  const Index q = values.cols();
  std::vector<bool> varies(static_cast<std::size_t>(q));
  for (Index k = 0; k < q; ++k) {
    const double sd = result.quantities[static_cast<std::size_t>(k)].deviation.value;
    varies[static_cast<std::size_t>(k)] = sd > 0.0;
  }
  result.correlations = Eigen::MatrixXd::Constant(q, q, kNaN);
  result.correlations_low = result.correlations;
  result.correlations_high = result.correlations;
  for (Index i = 0; i < q; ++i)
    for (Index k = 0; k <= i; ++k) {
      if (!varies[static_cast<std::size_t>(i)] || !varies[static_cast<std::size_t>(k)]) continue;
      const Eigen::Array<bool, Eigen::Dynamic, 1> finite =
          values.col(i).array().isFinite() && values.col(k).array().isFinite();
      // NaN is a hole in sample statistics; an infinite value shall be one, too.
      const auto x = finite.select(values.col(i), kNaN);
      const auto y = finite.select(values.col(k), kNaN);
      const double r = i == k ? 1.0 : math::statistics::LinearCorrelation(x, y, true, true);
      const Interval interval = CorrelationInterval(r, finite.count(), confidence);
      result.correlations(i, k) = result.correlations(k, i) = interval.value;
      result.correlations_low(i, k) = result.correlations_low(k, i) = interval.low;
      result.correlations_high(i, k) = result.correlations_high(k, i) = interval.high;
    }
}

Eigen::MatrixXd StartsOf(const LimitCount& limit) {
  const auto& nearest =
      2 * limit.num_violations > limit.num_finite ? limit.keeping : limit.violating;
  Eigen::MatrixXd starts(static_cast<Index>(nearest.size()),
                         nearest.empty() ? 0 : nearest.front().second.size());
  for (Index i = 0; i < starts.rows(); ++i)
    starts.row(i) = nearest[static_cast<std::size_t>(i)].second.transpose();
  return starts;
}

double RelativeWidth(const Interval& interval) {
  return interval.value > 0.0 ? (interval.high - interval.low) / interval.value
                              : std::numeric_limits<double>::infinity();
}

/// Whether the sample has far more violations than importance sampling accounts for, which then has
/// missed some. Not the other way round: what it finds is there. That this happens by chance must
/// be rare, for the sample says nothing about rare violations.
bool HasMissed(const ImportanceSample& importance, const LimitRisk& risk, Index num_designs,
               double confidence) {
  constexpr double kSure = 0.9999;
  const Interval& told = importance.probability;
  const double standard_error = (told.high - told.value) / TwoSidedNormal(confidence);
  return ShareInterval(risk.num_violations, num_designs - risk.num_failed, kSure).low >
         told.value + TwoSidedNormal(kSure) * standard_error;
}

/// Decides which estimate counts, and says where estimates disagree.
void CompareEstimates(Index num_designs, double confidence, LimitRisk& risk) {
  risk.probability = risk.sampling;
  if (risk.importance) {
    const Interval& other = risk.importance->probability;
    if (HasMissed(*risk.importance, risk, num_designs, confidence)) {
      risk.warnings.push_back(
          L"importance sampling disagrees: a part of the violations is not around the design "
          L"points");
    } else if (RelativeWidth(other) < RelativeWidth(risk.sampling)) {
      risk.probability = other;
      risk.method = LimitRisk::Method::kImportanceSampling;
    }
  }
  if (risk.num_failed > 0)
    risk.warnings.push_back(std::to_wstring(risk.num_failed) +
                            L" designs of the sample have no value and are left out");
  if (risk.importance && risk.importance->num_failed > 0)
    risk.warnings.push_back(std::to_wstring(risk.importance->num_failed) +
                            L" points of the importance sampling have no value and count as kept");
  if (risk.design_points.empty()) return;
  const double form = risk.design_points.front().GetProbability();
  const Interval& p = risk.probability;
  const bool is_off = form > kDisagreement * p.value || form * kDisagreement < p.value;
  if (is_off && (form < p.low || form > p.high))
    risk.warnings.push_back(
        risk.design_points.size() > 1
            ? L"FORM disagrees: it counts one of " + std::to_wstring(risk.design_points.size()) +
                  L" design points"
            : L"FORM disagrees: the limit surface is not flat around its design point");
}

LimitRisk AnalyseLimit(const Scatter& scatter, const LimitCount& count, Index num_designs,
                       const PropagationSettings& settings, const Progress& progress) {
  LimitRisk risk;
  risk.name = scatter.GetModel().GetQuantities()[static_cast<std::size_t>(count.column)].name;
  risk.sampling = ShareInterval(count.num_violations, count.num_finite, settings.confidence);
  risk.num_violations = count.num_violations;
  risk.num_failed = num_designs - count.num_finite;
  if (settings.with_errors)
    risk.without_errors = ShareInterval(count.num_violations_without_errors,
                                        count.num_finite_without_errors, settings.confidence);
  if (settings.with_form && !scatter.HasDiscrete() && count.varies) {
    risk.is_searched = true;
    risk.design_points = FindDesignPoints(scatter, count.column, StartsOf(count), settings.seed,
                                          PartOf(progress, 0.0, 0.3));
    Eigen::MatrixXd u(static_cast<Index>(risk.design_points.size()), scatter.GetDim());
    for (Index i = 0; i < u.rows(); ++i)
      u.row(i) = risk.design_points[static_cast<std::size_t>(i)].u.transpose();
    risk.design_inputs = scatter.Inputs(u);
    // A violation at the origin is no rare event: the sample sees it.
    if (!risk.design_points.empty() && risk.design_points.front().beta > 0.0) {
      ImportanceSettings importance;
      if (settings.until > 0.0)
        importance.precision = settings.until;
      else
        importance.precision = kPrecision;
      importance.confidence = settings.confidence;
      importance.seed = settings.seed + 1;  // independent of the sample
      risk.importance = SampleAround(scatter, count.column, risk.design_points, importance,
                                     PartOf(progress, 0.3, 1.0));
    }
  }
  CompareEstimates(num_designs, settings.confidence, risk);
  return risk;
}

}  // namespace

Propagation Propagate(const StudyModel& model, const InputSpace& space,
                      const PropagationSettings& settings, const Progress& progress) {
  const Scatter scatter(model, space, settings.with_errors);
  const Scatter without_errors(model, space, false);
  CheckPropagation(scatter, settings);
  Sample sample(scatter, without_errors, settings);
  const auto& limits = sample.GetLimits();
  const double share = limits.empty() ? 1.0 : kSampleShare;
  Propagation result;
  if (!sample.Run(PartOf(progress, 0.0, share)))
    result.notes.push_back(L"The precision is not reached with " +
                           std::to_wstring(sample.GetValues().rows()) + L" designs.");
  result.num_designs = sample.GetValues().rows();
  result.quantiles = settings.quantiles;
  result.coordinates = scatter.GetNames();
  for (Index k = 0; k < model.GetNumQuantities(); ++k)
    result.quantities.push_back(
        DescribeQuantity(model.GetQuantities()[static_cast<std::size_t>(k)].name,
                         sample.IntervalsOf(k), result.num_designs, settings.quantiles));
  Correlate(sample.GetValues(), settings.confidence, result);
  for (std::size_t i = 0; i < limits.size(); ++i) {
    const auto part = [&](std::size_t number) {
      return share +
             (1.0 - share) * static_cast<double>(number) / static_cast<double>(limits.size());
    };
    result.limits.push_back(AnalyseLimit(scatter, limits[i], result.num_designs, settings,
                                         PartOf(progress, part(i), part(i + 1))));
  }
  if (!limits.empty() && settings.with_form && scatter.HasDiscrete())
    result.notes.push_back(
        L"FORM and importance sampling are left out: a random input is discrete.");
  for (const std::wstring& name : scatter.GetUnknownErrors())
    result.notes.push_back(L"The error of " + name + L" is not known; none is added.");
  return result;
}

}  // namespace corvath::analysis
