#include "training/train_study.h"

#include "project/project_file.h"
#include "training/cross_validation.h"
#include "training/model_competition.h"
#include "training/study_writer.h"

#include <algorithm>
#include <cmath>

namespace corvath::training {
namespace {

using algorithm::datatypes::CriterionSequence;

/// Designs below which cross-validation has nothing to go by.
constexpr std::size_t kFewestDesigns = 4;

void RequireSettings(const TrainSettings& settings) {
  if (settings.num_groups < 2)
    throw TrainingError(L"At least two groups are needed for cross-validation.");
}

void RequireNewNames(const TrainingTable& table, const CriterionSequence& criteria) {
  for (const auto& criterion : criteria)
    for (const auto* names : {&table.inputs, &table.responses})
      if (std::find(names->begin(), names->end(), criterion.first) != names->end())
        throw TrainingError(L"Criterion \"" + criterion.first + L"\" has the name of a column.",
                            criterion.first);
}

/// The rows in which a response has a value.
std::vector<Eigen::Index> UsableRows(const TrainingTable& table, Eigen::Index response) {
  std::vector<Eigen::Index> rows;
  for (Eigen::Index row = 0; row < table.values.rows(); ++row)
    if (std::isfinite(table.values(row, response))) rows.push_back(row);
  return rows;
}

}  // namespace

TrainedStudy TrainStudy(const TrainingTable& table, const TrainSettings& settings,
                        const CriterionSequence& criteria, const TrainObserver& observer) {
  RequireTrainable(table);
  RequireSettings(settings);
  RequireNewNames(table, criteria);
  const Eigen::Index num_responses = table.values.cols();
  std::vector<std::vector<Eigen::Index>> rows;
  bool all_constant = true;
  for (Eigen::Index k = 0; k < num_responses; ++k) {
    const std::wstring& name = table.responses[static_cast<std::size_t>(k)];
    rows.push_back(UsableRows(table, k));
    if (rows.back().size() < kFewestDesigns)
      throw TrainingError(L"Response \"" + name + L"\" has " + std::to_wstring(rows.back().size()) +
                              L" designs with a value; at least " +
                              std::to_wstring(kFewestDesigns) + L" are needed.",
                          name);
    all_constant = all_constant && IsConstantColumn(table.values.col(k));
  }
  if (all_constant) throw TrainingError(L"All responses are constant.");

  TrainedStudy study;
  StudyWriter writer(table, settings, criteria);
  const std::vector<Eigen::Index>& columns = writer.GetModelColumns();
  for (Eigen::Index j = 0; j < table.points.cols(); ++j)
    if (std::find(columns.begin(), columns.end(), j) == columns.end())
      study.notes.push_back(L"Input \"" + table.inputs[static_cast<std::size_t>(j)] +
                            L"\" is constant.");
  for (Eigen::Index k = 0; k < num_responses; ++k) {
    const auto position = static_cast<std::size_t>(k);
    const std::wstring& name = table.responses[position];
    ResponseData data;
    data.points = table.points(rows[position], columns);
    data.values = table.values(rows[position], k);
    data.groups = MakeGroups(data.points, settings.num_groups, settings.seed);
    const std::size_t num_failed =
        static_cast<std::size_t>(table.values.rows()) - rows[position].size();
    if (num_failed > 0)
      study.notes.push_back(L"Response \"" + name + L"\" failed in " + std::to_wstring(num_failed) +
                            L" designs.");
    ChosenModel chosen;
    if (IsConstantColumn(data.values)) {
      study.notes.push_back(L"Response \"" + name + L"\" is constant.");
      chosen = MakeConstantModel(data);
    } else {
      chosen = RunCompetition(
          data, settings,
          [&](const std::wstring& candidate, std::uint64_t done, std::uint64_t total) {
            if (!observer) return;
            const TrainProgress progress{name, candidate,
                                         static_cast<std::uint64_t>(k) * total + done,
                                         static_cast<std::uint64_t>(num_responses) * total};
            if (!observer(progress)) throw TrainingInterrupted();
          });
    }
    writer.AddModel(position, chosen, rows[position], data.groups);
    TrainedResponse trained;
    trained.name = name;
    trained.model = chosen.text;
    const auto bits = chosen.model->GetVariableSelection();
    for (std::size_t j = 0; j < bits.size(); ++j)
      if (bits[j]) trained.inputs.push_back(table.inputs[static_cast<std::size_t>(columns[j])]);
    trained.cop = chosen.results.CoP;
    trained.cod = chosen.results.CoD;
    trained.cod_adjusted = chosen.results.CoDadj;
    trained.single_cops = Eigen::VectorXd::Zero(table.points.cols());
    trained.single_cops(columns) = chosen.results.singleCoPs;
    trained.num_designs = rows[position].size();
    trained.num_candidates = chosen.tried.size();
    study.responses.push_back(std::move(trained));
  }
  study.project = writer.Finish();
  return study;
}

void WriteStudy(const TrainedStudy& study, const std::string& path) {
  algorithm::datatypes::SaveProjectFile(study.project, path);
}

}  // namespace corvath::training
