#include "analysis/optimisation/optimum.h"

#include "foundation/constants.h"
#include "foundation/text.h"
#include "foundation/text_stream.h"
#include "metamodel/local_errors.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace corvath::analysis {
namespace {

using math::metamodel::ErrorColumn;

using math::kNaN;
using utils::Quoted;

constexpr Eigen::Index kMaxStarts = 5000;  // of analysed designs
constexpr std::size_t kNearest = 3;
/// A limit with no more left than this share of its scale holds the optimum back, if it has a
/// multiplier or not.
constexpr double kActive = 1e-6;

/// Ranges of the inputs that distances are measured in.
Eigen::RowVectorXd Ranges(const StudyModel& model) {
  Eigen::RowVectorXd ranges(model.GetNumInputs());
  const Eigen::MatrixXd& designs = model.GetDesigns().inputs;
  for (Eigen::Index i = 0; i < ranges.size(); ++i) {
    const StudyInput& input = model.GetInputs()[static_cast<std::size_t>(i)];
    ranges(i) = designs.rows() > 1 ? designs.col(i).maxCoeff() - designs.col(i).minCoeff()
                                   : input.upper - input.lower;
    if (!(ranges(i) > 0.0 && std::isfinite(ranges(i)))) ranges(i) = 1.0;
  }
  return ranges;
}

std::vector<DesignReport::Neighbour> Nearest(const StudyModel& model, const Eigen::RowVectorXd& x) {
  const Eigen::MatrixXd& designs = model.GetDesigns().inputs;
  const Eigen::RowVectorXd ranges = Ranges(model);
  std::vector<DesignReport::Neighbour> all;
  for (Eigen::Index d = 0; d < designs.rows(); ++d) {
    const double square = ((designs.row(d) - x).array() / ranges.array()).square().mean();
    if (std::isfinite(square)) all.push_back({d, std::sqrt(square)});
  }
  const std::size_t count = std::min(all.size(), kNearest);
  std::partial_sort(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count), all.end(),
                    [](const auto& a, const auto& b) { return a.distance < b.distance; });
  all.resize(count);
  return all;
}

PredictionTrust TrustOf(const StudyModel& model, Eigen::Index response,
                        const Eigen::RowVectorXd& x) {
  const Eigen::RowVectorXd here = model.LocalErrors(response, x);
  PredictionTrust trust{response, here(ErrorColumn::kLocalCoP), here(ErrorColumn::kDensity), kNaN};
  const Eigen::MatrixXd& designs = model.GetDesigns().inputs;
  if (designs.rows() == 0 || !std::isfinite(trust.density)) return trust;
  const Eigen::VectorXd densities = model.LocalErrors(response, designs).col(ErrorColumn::kDensity);
  trust.density_rank = (densities.array() < trust.density).cast<double>().mean();
  return trust;
}

/// The inputs that differ between designs as good as each other, and how far.
std::wstring FlatInputs(const DesignTask& task, const Eigen::MatrixXd& extent) {
  constexpr double kWide = 0.01;  // of the range
  const NonlinearProgram& program = task.GetProgram();
  utils::WideTextStream text;
  for (Eigen::Index i = 0; i < extent.cols(); ++i) {
    if (!(extent(1, i) - extent(0, i) > kWide * (program.upper(i) - program.lower(i)))) continue;
    text << (text.tellp() > 0 ? L", " : L"")
         << task.GetModel().GetInputs()[static_cast<std::size_t>(i)].name << L" from "
         << extent(0, i) << L" to " << extent(1, i);
  }
  return text.str();
}

}  // namespace

DesignReport ReportDesign(const StudyModel& model, const Eigen::RowVectorXd& x,
                          const std::vector<Eigen::Index>& used) {
  DesignReport report;
  report.inputs = x;
  report.quantities = model.Evaluate(x);
  report.errors = QuantityErrors(model, x);
  for (const Eigen::Index response : used) report.trust.push_back(TrustOf(model, response, x));
  report.nearest = Nearest(model, x);
  return report;
}

Eigen::MatrixXd AnalysedStarts(const StudyModel& model) {
  const Eigen::MatrixXd& designs = model.GetDesigns().inputs;
  std::vector<Eigen::Index> rows;
  for (Eigen::Index d = 0; d < std::min(kMaxStarts, designs.rows()); ++d)
    if (designs.row(d).allFinite()) rows.push_back(d);
  Eigen::MatrixXd starts(static_cast<Eigen::Index>(rows.size()), model.GetNumInputs());
  for (std::size_t k = 0; k < rows.size(); ++k)
    starts.row(static_cast<Eigen::Index>(k)) = designs.row(rows[k]);
  return starts;
}

std::wstring DescribeFailure(const DesignTask& task, const Screening& screening) {
  const auto fails = [&](Eigen::Index first, Eigen::Index count) {
    return (screening.values.middleCols(first, count).array().isFinite().rowwise().all() == false)
        .all();
  };
  const std::wstring where =
      L" has no value at any of " + std::to_wstring(screening.values.rows()) + L" designs: ";
  Eigen::Index first = 0;
  for (std::size_t i = 0; i < task.GetObjectives().size(); ++i) {
    const Eigen::Index count = task.GetProgram().num_terms[i];
    if (fails(first, count))
      return L"The objective " + Quoted(task.GetObjectives()[i].name) + where +
             L"a model or the expression fails.";
    first += count;
  }
  for (const auto& limit : task.GetLimits())
    if (fails(first + limit.first, limit.num_columns))
      return L"The limit " + Quoted(limit.name) + where + L"a model or the expression fails.";
  return screening.values.array().isFinite().rowwise().all().any()
             ? L""
             : L"No design has a value for every objective and limit.";
}

Optimum FindOptimum(const DesignTask& task, const SearchSettings& wanted,
                    const Progress& progress) {
  const NonlinearProgram& program = task.GetProgram();
  Report(progress, 0.0, L"screening");
  SearchSettings settings = wanted;
  settings.progress = [&](double share) { Report(progress, share, L"searching"); };
  const Screening screening = Screen(program, AnalysedStarts(task.GetModel()), settings);
  Optimum optimum;
  if (const std::wstring failure = DescribeFailure(task, screening); !failure.empty()) {
    optimum.notes.push_back(failure);
    return optimum;
  }
  const SqpForm form = ObjectiveForm(program, screening.scales);
  const GlobalOptimum found = SearchGlobally(program, form, screening, settings);
  if (found.num_finite < screening.values.rows())
    optimum.notes.push_back(
        std::to_wstring(screening.values.rows() - found.num_finite) + L" of " +
        std::to_wstring(screening.values.rows()) +
        L" designs have no value for an objective or a limit; they are avoided.");
  const LocalOptimum& best = found.best;
  if (const auto flat = FlatInputs(task, found.extent); !flat.empty())
    optimum.notes.push_back(L"The optimum is flat: other designs are as good, with " + flat + L".");
  optimum.num_searches = found.num_searches;
  optimum.num_optima = found.num_optima;
  optimum.status = !best.IsFeasible() ? OptimumStatus::kInfeasible
                   : best.converged   ? OptimumStatus::kOptimal
                                      : OptimumStatus::kFeasible;
  Report(progress, 0.95, L"looking around the optimum");
  const Eigen::RowVectorXd& x = best.point.x;
  optimum.design = ReportDesign(task.GetModel(), x, task.GetUsedResponses());
  optimum.objectives.resize(1);
  optimum.objectives(0) = task.ObjectiveValue(0, best.point.columns);
  const Multipliers multipliers =
      FindMultipliers(program, form, screening.scales, HeldDiscrete(program), best.point);
  const Eigen::VectorXd of_limits = multipliers.rows.tail(program.num_limits);
  const Eigen::VectorXd column_errors = task.ColumnErrors(x).row(0).transpose();
  for (std::size_t j = 0; j < task.GetLimits().size(); ++j) {
    const auto& limit = task.GetLimits()[j];
    const Eigen::Index first = program.NumTerms() + limit.first;
    Optimum::LimitState state;
    Eigen::Index tightest = 0;
    state.reserve = best.point.columns.segment(first, limit.num_columns).minCoeff(&tightest);
    state.error = column_errors(first + tightest);
    state.multiplier = of_limits.segment(limit.first, limit.num_columns).sum();
    state.is_active = state.reserve <= kActive * screening.scales(first + tightest);
    if (!state.is_active || !best.IsFeasible()) state.multiplier = 0.0;
    if (best.breach.limit >= limit.first && best.breach.limit < limit.first + limit.num_columns)
      optimum.worst_limit = static_cast<Eigen::Index>(j);
    optimum.limits.push_back(state);
  }
  for (Eigen::Index i = 0; i < x.size(); ++i) {
    if (!best.IsFeasible() || program.lower(i) == program.upper(i) || program.IsDiscrete(i))
      continue;
    const double rounding = kActive * (program.upper(i) - program.lower(i));
    if (x(i) - program.lower(i) <= rounding)
      optimum.bounds.push_back({i, false, multipliers.at_lower(i)});
    else if (program.upper(i) - x(i) <= rounding)
      optimum.bounds.push_back({i, true, multipliers.at_upper(i)});
  }
  for (const auto& note : task.GetNotes()) optimum.notes.push_back(note);
  return optimum;
}

}  // namespace corvath::analysis
