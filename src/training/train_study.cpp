#include "training/train_study.h"

#include "foundation/text_stream.h"
#include "metamodel/kriging/ordinary_kriging.h"
#include "project/file/project_file.h"
#include "training/criteria_check.h"
#include "training/cross_validation.h"
#include "training/model_competition.h"
#include "training/study_writer.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <optional>

namespace corvath::training {
namespace {

using algorithm::datatypes::CriterionSequence;

/// Designs below which cross-validation has nothing to go by.
constexpr std::size_t kFewestDesigns = 4;

void RequireSettings(const TrainSettings& settings) {
  if (settings.num_groups < 2)
    throw TrainingError(L"At least two groups are needed for cross-validation.");
  if (!(settings.budget_seconds > 0.0))
    throw TrainingError(L"The budget must be a positive number of seconds.");
  if (AllowedForms(settings.models).empty())
    throw TrainingError(L"No family of models is allowed.");
}

using Rows = std::vector<Eigen::Index>;

/// For each response the rows in which it has a value.
std::vector<Rows> RequireResponses(const TrainingTable& table) {
  std::vector<Rows> usable(table.responses.size());
  bool all_constant = true;
  for (std::size_t k = 0; k < usable.size(); ++k) {
    const auto column = table.values.col(static_cast<Eigen::Index>(k));
    for (Eigen::Index row = 0; row < column.size(); ++row)
      if (std::isfinite(column(row))) usable[k].push_back(row);
    if (usable[k].size() < kFewestDesigns)
      throw TrainingError(L"Response \"" + table.responses[k] + L"\" has " +
                              std::to_wstring(usable[k].size()) +
                              L" designs with a value; at least " +
                              std::to_wstring(kFewestDesigns) + L" are needed.",
                          table.responses[k]);
    if (IsConstantColumn(column)) continue;
    all_constant = false;
    const Eigen::ArrayXd values = column(usable[k]);
    const double squares = (values - values.mean()).square().sum();
    if (!(std::isnormal(squares) && std::isnormal(1.0 / squares)))
      throw TrainingError(L"Response \"" + table.responses[k] +
                              L"\" has values that are too large or too small to be squared; "
                              L"change its unit.",
                          table.responses[k]);
  }
  if (all_constant) throw TrainingError(L"All responses are constant.");
  return usable;
}

/// Of a kriging model without value transform: the nugget is a share of the process variance.
double NoiseOf(const math::metamodel::SurrogateBase& model) {
  const auto* kriging = dynamic_cast<const math::metamodel::OrdinaryKriging*>(&model);
  if (!kriging || kriging->GetTransValue()) return std::nan("");
  return std::sqrt(kriging->GetSigma2() * kriging->GetSettingsBase().GetNugget());
}

/// Noise that is worth telling: more than a thousandth of the variance.
std::optional<std::wstring> NoiseNote(const TrainedResponse& trained,
                                      const Eigen::VectorXd& values) {
  const double deviation = std::sqrt((values.array() - values.mean()).square().mean());
  if (!(trained.noise > 0.03 * deviation)) return std::nullopt;  // also for NaN
  utils::WideTextStream note;
  note << std::setprecision(2) << L"Response \"" << trained.name
       << L"\": kriging finds noise with a standard deviation of " << trained.noise << L".";
  return note.str();
}

TrainedResponse Summarise(const TrainingTable& table, std::size_t response,
                          const ChosenModel& chosen, const Rows& columns) {
  TrainedResponse trained;
  trained.name = table.responses[response];
  trained.model = chosen.text;
  const auto bits = chosen.model->GetVariableSelection();
  for (std::size_t j = 0; j < bits.size(); ++j)
    if (bits[j]) trained.inputs.push_back(table.inputs[static_cast<std::size_t>(columns[j])]);
  trained.cop = chosen.GetCoP();
  trained.cop_raw = chosen.GetRawCoP();
  trained.cod = chosen.results.CoD;
  trained.cod_adjusted = chosen.results.CoDadj;
  trained.noise = NoiseOf(*chosen.model);
  trained.single_cops = Eigen::VectorXd::Zero(table.points.cols());
  trained.single_cops(columns) = chosen.results.singleCoPs;
  trained.num_designs = static_cast<std::uint64_t>(chosen.model->GetValues().size());
  trained.num_candidates = chosen.tried.size();
  return trained;
}

/// Passes what a competition is at on, as a part of the whole training.
CompetitionObserver ObserverOf(const TrainingTable& table, std::size_t response,
                               const TrainObserver& observer) {
  if (!observer) return [](const std::wstring&, double) {};
  return [&table, response, &observer](const std::wstring& candidate, double share) {
    constexpr double kParts = 1000.0;  // of each response
    TrainProgress progress{table.responses[response], candidate};
    progress.done = static_cast<std::uint64_t>((static_cast<double>(response) + share) * kParts);
    progress.total = table.responses.size() * static_cast<std::uint64_t>(kParts);
    if (!observer(progress)) throw TrainingInterrupted();
  };
}

}  // namespace

TrainedStudy TrainStudy(const TrainingTable& table, const TrainSettings& settings,
                        const CriterionSequence& criteria, const TrainObserver& observer) {
  RequireTrainable(table);
  RequireSettings(settings);
  RequireUsableCriteria(table, criteria);
  const std::vector<Rows> usable = RequireResponses(table);
  TrainedStudy study;
  StudyWriter writer(table, settings, criteria);
  const Rows& columns = writer.GetModelColumns();
  for (std::size_t j = 0; j < table.inputs.size(); ++j)
    if (IsConstantColumn(table.points.col(static_cast<Eigen::Index>(j))))
      study.notes.push_back(L"Input \"" + table.inputs[j] + L"\" is constant.");

  TrainSettings of_each = settings;
  of_each.budget_seconds /= static_cast<double>(usable.size());
  for (std::size_t k = 0; k < usable.size(); ++k) {
    const std::wstring response = L"Response \"" + table.responses[k] + L"\"";
    const auto num_failed = static_cast<std::size_t>(table.values.rows()) - usable[k].size();
    if (num_failed > 0)
      study.notes.push_back(response + L" failed in " + std::to_wstring(num_failed) +
                            (num_failed == 1 ? L" design." : L" designs."));
    const ResponseData data = MakeResponseData(
        table.points(usable[k], columns), table.values(usable[k], static_cast<Eigen::Index>(k)),
        settings.num_groups, settings.seed);
    const bool is_constant = IsConstantColumn(data.values);
    if (is_constant) study.notes.push_back(response + L" is constant.");
    const ChosenModel chosen = is_constant
                                   ? MakeConstantModel(data)
                                   : RunCompetition(data, of_each, ObserverOf(table, k, observer));
    for (const std::wstring& limit : chosen.limits) study.notes.push_back(response + L": " + limit);
    Rows rows;
    for (const Eigen::Index row : chosen.rows)
      rows.push_back(usable[k][static_cast<std::size_t>(row)]);
    writer.AddModel(k, chosen, rows);
    study.responses.push_back(Summarise(table, k, chosen, columns));
    if (const auto note = NoiseNote(study.responses.back(), data.values))
      study.notes.push_back(*note);
  }
  study.project = writer.Finish();
  return study;
}

void WriteStudy(const TrainedStudy& study, const std::string& path) {
  algorithm::datatypes::SaveProjectFile(study.project, path);
}

}  // namespace corvath::training
