#include "analysis/optimisation/next_designs.h"

#include "analysis/optimisation/expected_errors.h"
#include "analysis/optimisation/optimum.h"
#include "foundation/constants.h"
#include "stochastics/normal_quantile.h"

#include <algorithm>
#include <cmath>

namespace corvath::analysis {
namespace {

using math::kInfinity;
using math::kNaN;

/// E max(best - F, 0) for a normal F.
double ExpectedImprovement(double best, double mean, double deviation) {
  if (!(deviation > 0.0)) return std::max(best - mean, 0.0);
  const double z = (best - mean) / deviation;
  return (best - mean) * math::NormalCdf(z) + deviation * math::NormalPdf(z);
}

/// The worth of designs, given those that are known.
class Worth {
 public:
  Worth(const DesignTask& task, NextBy by, const std::vector<Eigen::Index>& responses)
      : task_(task), by_(by), responses_(responses), known_(AnalysedStarts(task.GetModel())) {
    if (known_.rows() < 2)
      throw AnalysisError(
          L"The project has no analysed designs: the next ones have nothing to add to.");
    const NonlinearProgram& program = task.GetProgram();
    ranges_ = (program.upper - program.lower).transpose().unaryExpr([](double range) {
      return range > 0.0 ? range : kInfinity;  // an input that is held counts for nothing
    });
    std::vector<double> distances;
    for (Eigen::Index k = 0; k < known_.rows(); ++k) {
      double nearest = kInfinity;
      for (Eigen::Index other = 0; other < known_.rows(); ++other)
        if (other != k) nearest = std::min(nearest, Distance(known_.row(k), other));
      distances.push_back(nearest);
    }
    const auto middle = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
    std::nth_element(distances.begin(), middle, distances.end());
    length_ = *middle > 0.0 ? *middle : 1.0;
    FindBest();
    if (by == NextBy::kError) RequireErrors();
    const Eigen::MatrixXd& values = task.GetModel().GetDesigns().values;
    for (const Eigen::Index response : responses_)
      spreads_.push_back(ColumnScales(values.col(response))(0));
  }

  NextDesign At(const Eigen::RowVectorXd& x) const { return AtRows(x).front(); }

  std::vector<NextDesign> AtRows(const Eigen::MatrixXd& x) const {
    const StudyModel& model = task_.GetModel();
    const Eigen::MatrixXd response_errors = ResponseErrors(model, x);
    const Eigen::MatrixXd responses = model.Responses(x);
    const Eigen::MatrixXd columns = task_.Columns(x, responses);
    Eigen::MatrixXd errors;
    if (by_ == NextBy::kImprovement)
      errors = PropagateErrors(responses, response_errors,
                               [&](const Eigen::MatrixXd& at) { return task_.Columns(x, at); });
    std::vector<NextDesign> designs;
    for (Eigen::Index k = 0; k < x.rows(); ++k) {
      NextDesign design;
      design.inputs = x.row(k);
      const double share = Novelty(x.row(k));
      if (by_ == NextBy::kError) {
        design.prediction = kNaN;
        for (std::size_t r = 0; r < responses_.size(); ++r)
          if (const double error = response_errors(k, responses_[r]); !std::isnan(error))
            design.gain += share * error / spreads_[r];
      } else {
        SetImprovement(columns.row(k), share * errors.row(k), design);
        // To repeat a design improves nothing, whatever a smoothing model predicts there.
        constexpr double kRepeat = 0.05;
        design.gain *= std::min(1.0, share / kRepeat);
      }
      design.novelty = share;
      designs.push_back(std::move(design));
    }
    return designs;
  }

  /// Takes a design as analysed, with what is predicted for it: later ones must improve on that.
  void Learn(const Eigen::RowVectorXd& x) {
    const Eigen::MatrixXd columns = task_.Columns(x, task_.GetModel().Responses(x));
    const NonlinearProgram& program = task_.GetProgram();
    if (columns.allFinite() && (columns.row(0).tail(program.num_limits).array() >= 0.0).all())
      best_ = std::min(best_, program.Objectives(columns.row(0))(0));
    known_.conservativeResize(known_.rows() + 1, Eigen::NoChange);
    known_.row(known_.rows() - 1) = x;
  }

 private:
  double Distance(const Eigen::RowVectorXd& x, Eigen::Index known) const {
    return ((x - known_.row(known)).array() / ranges_.array()).matrix().norm();
  }

  double Novelty(const Eigen::RowVectorXd& x) const {
    double nearest = kInfinity;
    for (Eigen::Index k = 0; k < known_.rows(); ++k) nearest = std::min(nearest, Distance(x, k));
    const double relative = nearest / length_;
    return std::sqrt(-std::expm1(-relative * relative));
  }

  void RequireErrors() const {
    const Eigen::VectorXd errors = task_.GetModel().StandardErrors();
    for (const Eigen::Index response : responses_)
      if (!std::isnan(errors(response))) return;
    throw AnalysisError(L"The error of no model is known: there is none to make less.");
  }

  /// The best analysed design that keeps the limits, by its own responses.
  void FindBest() {
    const StudyDesigns& designs = task_.GetModel().GetDesigns();
    const Eigen::MatrixXd columns =
        task_.Columns(designs.inputs, designs.values.leftCols(task_.GetModel().GetNumResponses()));
    const NonlinearProgram& program = task_.GetProgram();
    for (Eigen::Index k = 0; k < columns.rows(); ++k)
      if (columns.row(k).allFinite() &&
          (columns.row(k).tail(program.num_limits).array() >= 0.0).all())
        best_ = std::min(best_, program.Objectives(columns.row(k))(0));
  }

  void SetImprovement(const Eigen::RowVectorXd& columns, const Eigen::RowVectorXd& errors,
                      NextDesign& design) const {
    const NonlinearProgram& program = task_.GetProgram();
    Eigen::Index largest = 0;
    const double mean = columns.head(program.num_terms[0]).maxCoeff(&largest);
    design.prediction = task_.ObjectiveValue(0, columns);
    for (Eigen::Index j = program.NumTerms(); j < program.NumColumns(); ++j)
      design.chance *= errors(j) > 0.0 ? math::NormalCdf(columns(j) / errors(j))
                                       : (columns(j) >= 0.0 ? 1.0 : 0.0);
    design.gain = std::isfinite(best_) ? ExpectedImprovement(best_, mean, errors(largest)) : 1.0;
  }

  const DesignTask& task_;
  NextBy by_;
  std::vector<Eigen::Index> responses_;
  std::vector<double> spreads_;
  Eigen::MatrixXd known_;
  Eigen::RowVectorXd ranges_;
  double length_ = 1.0;
  double best_ = kInfinity;
};

}  // namespace

std::vector<NextDesign> ProposeDesigns(const DesignTask& task, NextBy by,
                                       const std::vector<Eigen::Index>& responses,
                                       Eigen::Index count, const SearchSettings& wanted,
                                       const Progress& progress) {
  constexpr double kLeast = 1e-250;      // whose logarithm still counts
  constexpr double kNovelty = 1e-3;      // where nothing is to gain, designs at least spread
  constexpr Eigen::Index kSearches = 8;  // the worth has many maxima, and the best is not needed
  Worth worth(task, by, responses);
  NonlinearProgram program = task.GetProgram();
  program.num_terms = {1};
  program.num_limits = 0;
  program.values = [&](const Eigen::MatrixXd& x) {
    Eigen::MatrixXd values(x.rows(), 1);
    const auto designs = worth.AtRows(x);
    for (Eigen::Index k = 0; k < x.rows(); ++k) {
      const NextDesign& design = designs[static_cast<std::size_t>(k)];
      const double product = design.gain * design.chance;
      values(k, 0) = std::isnan(product)
                         ? kNaN
                         : -std::log(std::max(product, kLeast)) - kNovelty * design.novelty;
    }
    return values;
  };
  std::vector<NextDesign> next;
  for (Eigen::Index k = 0; k < count; ++k) {
    Report(progress, static_cast<double>(k) / static_cast<double>(count), L"choosing designs");
    SearchSettings settings = wanted;
    settings.max_searches = std::min(settings.max_searches, kSearches);
    settings.seed = wanted.seed + static_cast<std::uint32_t>(k);
    const Screening screening = Screen(program, Eigen::MatrixXd(0, program.NumInputs()), settings);
    const GlobalOptimum found =
        SearchGlobally(program, ObjectiveForm(program, screening.scales), screening, settings);
    if (found.num_finite == 0)
      throw AnalysisError(L"No design has a value for every objective and limit.");
    next.push_back(worth.At(found.best.point.x));
    worth.Learn(found.best.point.x);
  }
  return next;
}

}  // namespace corvath::analysis
