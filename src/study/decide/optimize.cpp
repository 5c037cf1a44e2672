#include "study/decide/optimize.h"

#include "analysis/optimisation/design_task.h"
#include "analysis/optimisation/next_designs.h"
#include "analysis/optimisation/optimum.h"
#include "analysis/optimisation/pareto_front.h"
#include "analysis/project_model.h"
#include "foundation/text.h"
#include "solver/zel_solver.h"
#include "study/analysis/distribution_text.h"
#include "study/analysis/fixed_input.h"
#include "study/decide/optimum_text.h"
#include "study/refusal.h"
#include "study/table/csv_cell.h"
#include "study/table/name_hint.h"
#include "study/table/table_columns.h"

#include <charconv>
#include <cmath>
#include <memory>
#include <optional>
#include <utility>

namespace corvath::study {
namespace {

using analysis::DesignTask;
using analysis::DesignWishes;
using analysis::StudyModel;
using utils::FromUtf8;
using utils::ToUtf8;

std::optional<double> ToNumber(const std::string& text) {
  double value = 0.0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (text.empty() || result.ec != std::errc() || result.ptr != end || !std::isfinite(value))
    return std::nullopt;
  return value;
}

/// The message without its full stop, to go on behind it.
std::string Clause(const analysis::AnalysisError& error) {
  std::string text = ToUtf8(error.GetMessage());
  if (!text.empty() && text.back() == '.') text.pop_back();
  return text;
}

/// The models of a project, which outlives them.
boost::shared_ptr<zel::ZELSolver> Borrow(const Project& project) {
  return {&project.GetSolver(), [](zel::ZELSolver*) {}};
}

class Request {
 public:
  Request(const Project& project, const StudyModel& model, const OptimizeRequest& request)
      : project_(project),
        model_(model),
        request_(request),
        columns_(TableColumns::FromProject(project.GetRecord())) {
    for (const auto& text : request.minimize) wishes_.objectives.push_back({FromUtf8(text), false});
    for (const auto& text : request.maximize) wishes_.objectives.push_back({FromUtf8(text), true});
    for (const auto& text : request.limits) wishes_.limits.push_back(FromUtf8(text));
    wishes_.project_limits = request.own_limits;
    wishes_.robust = request.robust;
    for (const auto& text : request.bounds) AddBounds(text);
    for (const auto& text : request.fixed) AddFixed(text);
    for (const auto& text : request.distributions) {
      const auto [name, variable] = ParseNamedDistribution(text);
      wishes_.scatter.distributions[FromUtf8(name)] = variable;
    }
  }

  const DesignWishes& GetWishes() const { return wishes_; }
  DesignWishes& GetWishes() { return wishes_; }

 private:
  [[noreturn]] void RefuseBounds(const std::string& text) const {
    throw Refusal(OptionName(request_.wording, "bounds") + ": " + Quoted(text) +
                  " is neither name:low:high nor name=value");
  }

  /// A number, or the code of a word.
  double Value(const std::string& name, const std::string& text, const std::string& whole) const {
    const auto number = ToNumber(text);
    const TableColumn* const column = columns_.Find(name);
    if (column != nullptr && column->IsRead())
      return column->ReadCell(text, number.value_or(0.0), number.has_value(), Quoted(whole));
    if (!number) RefuseBounds(whole);
    return *number;
  }

  void Set(const char* option, const std::string& name, const std::pair<double, double>& range) {
    if (!wishes_.bounds.emplace(FromUtf8(name), range).second)
      throw Refusal(OptionName(request_.wording, option) + ": " + Quoted(name) +
                    " has a value or bounds already");
  }

  void AddFixed(const std::string& text) {
    const auto [name, value] = ParseFixed(project_, model_, text);
    Set("fix", name, {value, value});
    wishes_.scatter.fixed[FromUtf8(name)] = value;
  }

  void AddBounds(const std::string& text) {
    const auto equals = text.rfind('=');
    const auto second = text.rfind(':');
    std::string name;
    std::pair<double, double> range;
    if (second == std::string::npos && equals != std::string::npos) {
      name = text.substr(0, equals);
      range.first = range.second = Value(name, text.substr(equals + 1), text);
    } else {
      if (second == std::string::npos || second == 0) RefuseBounds(text);
      const auto first = text.rfind(':', second - 1);
      if (first == std::string::npos) RefuseBounds(text);
      name = text.substr(0, first);
      range.first = Value(name, text.substr(first + 1, second - first - 1), text);
      range.second = Value(name, text.substr(second + 1), text);
    }
    Set("bounds", name, range);
  }

  const Project& project_;
  const StudyModel& model_;
  const OptimizeRequest& request_;
  TableColumns columns_;
  DesignWishes wishes_;
};

Optimization RunOptimum(const DesignTask& task, const OptimumText& text,
                        const analysis::SearchSettings& settings,
                        const analysis::Progress& progress) {
  return text.Describe(analysis::FindOptimum(task, settings, progress));
}

Optimization RunFront(const DesignTask& task, const OptimumText& text,
                      const OptimizeRequest& request, analysis::SearchSettings settings,
                      const analysis::Progress& progress) {
  if (task.GetObjectives().size() > 3) throw Refusal("a front has two or three objectives");
  analysis::Report(progress, 0.0, L"screening");
  settings.progress = [&](double share) { analysis::Report(progress, share, L"front"); };
  const analysis::Screening screening =
      Screen(task.GetProgram(), analysis::AnalysedStarts(task.GetModel()), settings);
  if (const auto failure = DescribeFailure(task, screening); !failure.empty()) {
    analysis::Optimum failed;
    failed.notes.push_back(failure);
    return text.Describe(failed);
  }
  analysis::FrontSettings front;
  front.search = settings;
  front.num_points = static_cast<Eigen::Index>(request.points);
  return text.Describe(FindFront(task.GetProgram(), screening, front), screening);
}

Optimization RunNext(const DesignTask& task, const OptimumText& text,
                     const OptimizeRequest& request, const analysis::SearchSettings& settings,
                     const analysis::Progress& progress) {
  if (!request.next_by_error && task.GetObjectives().size() > 1)
    throw Refusal("the next designs improve one objective; by error they need none");
  std::vector<Eigen::Index> responses;
  for (Eigen::Index k = 0; k < task.GetModel().GetNumResponses(); ++k) responses.push_back(k);
  return text.Describe(analysis::ProposeDesigns(
      task, request.next_by_error ? analysis::NextBy::kError : analysis::NextBy::kImprovement,
      responses, static_cast<Eigen::Index>(request.next), settings, progress));
}

}  // namespace

Optimization Optimize(const Project& project, const OptimizeRequest& request,
                      const Progress& progress) try {
  const auto solver = Borrow(project);
  const auto model = std::make_shared<analysis::ProjectModel>(solver);
  Request wanted(project, *model, request);
  const bool by_error = request.next > 0 && request.next_by_error;
  if (by_error && wanted.GetWishes().objectives.empty() && model->GetNumResponses() > 0)
    wanted.GetWishes().objectives.push_back({model->GetQuantities().front().name, false});
  const DesignTask task(model, wanted.GetWishes(), [&](const auto& criteria) {
    return std::make_shared<analysis::ProjectModel>(solver, criteria);
  });
  if (request.points > 0 && (request.next > 0 || task.GetObjectives().size() < 2))
    throw Refusal(OptionName(request.wording, "points") + ": a front has two or three objectives");
  analysis::SearchSettings settings;
  settings.seed = request.seed;
  settings.max_searches = static_cast<Eigen::Index>(request.starts);
  analysis::Progress report;
  if (progress)
    report = [&](double share, const std::wstring& work) { return progress(share, ToUtf8(work)); };
  const OptimumText text(project, task);
  if (request.next > 0) return RunNext(task, text, request, settings, report);
  if (task.GetObjectives().size() > 1) return RunFront(task, text, request, settings, report);
  return RunOptimum(task, text, settings, report);
} catch (const analysis::AnalysisCancelled&) {
  throw Cancelled();
} catch (const analysis::UnknownName& error) {
  std::vector<std::string> names;
  for (const auto& name : error.GetNames()) names.push_back(ToUtf8(name));
  throw Refusal(Clause(error) + "; " + NameHint(ToUtf8(error.GetName()), names, "there are"));
} catch (const analysis::AnalysisError& error) {
  throw Refusal(Clause(error));
}

}  // namespace corvath::study
