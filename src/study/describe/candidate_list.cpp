#include "study/describe/candidate_list.h"

#include "foundation/text.h"
#include "metamodel/kriging/ordinary_kriging_settings.h"
#include "metamodel/moving_least_squares/moving_least_squares_settings.h"
#include "metamodel/regression/linear_regression_settings.h"
#include "study/describe/json_text.h"
#include "study/describe/model_text.h"
#include "study/describe/text_table.h"
#include "training/candidate.h"

#include <algorithm>
#include <cmath>
#include <ostream>

namespace corvath::study {
namespace {

using namespace corvath::math::metamodel;
using corvath::utils::ToUtf8;

std::string FamilyOf(const SurrogateSettingsBase& settings) {
  if (dynamic_cast<const LinearRegressionSettings*>(&settings)) return "Linear Regression";
  if (dynamic_cast<const MovingLeastSquaresSettings*>(&settings)) return "Moving Least Squares";
  if (const auto* kriging = dynamic_cast<const OrdinaryKrigingSettings*>(&settings))
    return kriging->GetKernelType() == KernelType::kConstInflExp ? "Anisotropic Kriging"
                                                                 : "Isotropic Kriging";
  return "other";
}

Candidate MakeCandidate(const SubspaceResults& results, const std::vector<std::wstring>& names) {
  Candidate candidate;
  candidate.cop = results.CoP;
  candidate.cop_adjusted = results.CoPadj;
  candidate.cod = results.CoD;
  candidate.cod_adjusted = results.CoDadj;
  candidate.rmse = results.predError;
  if (!results.settings) {
    candidate.family = "other";
    return candidate;
  }
  const SurrogateSettingsBase& settings = *results.settings;
  candidate.family = FamilyOf(settings);
  candidate.order = settings.GetOrder();
  const BitVector interactions = settings.GetInteractionSelection();
  candidate.interactions =
      std::find(interactions.begin(), interactions.end(), true) != interactions.end();
  candidate.ridge = candidate.family == "Linear Regression" &&
                    results.model_type == corvath::training::kRidgeNumber;
  candidate.box_cox =
      settings.GetValueTransform() == corvath::math::transform::TransformType::kBoxCox;
  const BitVector bits = settings.GetVariableSelection();
  for (std::size_t i = 0; i < std::min(bits.size(), names.size()); ++i)
    if (bits[i]) candidate.inputs.push_back(ToUtf8(names[i]));
  if (candidate.inputs.empty() && candidate.family == "Linear Regression") {
    candidate.family = "Constant";
    candidate.order = 0;
  }
  return candidate;
}

/// Whether both are of one form over the same inputs. Parameters and figures may differ in what a
/// last fit of the chosen one changed.
bool IsSameForm(const SubspaceResults& a, const SubspaceResults& b) {
  if (a.model_type != b.model_type || !a.settings || !b.settings) return false;
  const SurrogateSettingsBase& x = *a.settings;
  const SurrogateSettingsBase& y = *b.settings;
  return FamilyOf(x) == FamilyOf(y) && x.GetOrder() == y.GetOrder() &&
         x.GetVariableSelection() == y.GetVariableSelection() &&
         x.GetMainTermSelection() == y.GetMainTermSelection() &&
         x.GetInteractionSelection() == y.GetInteractionSelection() &&
         x.GetValueTransform() == y.GetValueTransform();
}

const SubspaceResults* FindBest(const corvath::algorithm::datatypes::ZELInformation& information,
                                const std::wstring& response) {
  if (!information.best_models_) return nullptr;
  for (const auto& [name, results] : information.best_models_->GetResults())
    if (name == response) return &results;
  return nullptr;
}

std::string ModelText(const Candidate& candidate) {
  std::string text = candidate.family;
  if (candidate.order > 0) text += " of order " + std::to_string(candidate.order);
  if (candidate.interactions) text += " with interactions";
  if (candidate.ridge) text += ", ridge";
  if (candidate.box_cox) text += ", Box-Cox";
  return text;
}

std::string Joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

}  // namespace

std::vector<Candidate> ListCandidates(
    const corvath::algorithm::datatypes::ZELInformation& information,
    const std::wstring& response) {
  std::vector<Candidate> candidates;
  if (!information.calculated_models_) return candidates;
  const SubspaceResults* const best = FindBest(information, response);
  std::size_t chosen = 0;  // position, plus one
  double least = 0.0;
  for (const auto& [name, results] : information.calculated_models_->GetResults()) {
    if (name != response) continue;
    candidates.push_back(MakeCandidate(results, information.parameter_names_));
    if (best == nullptr || !IsSameForm(results, *best)) continue;
    // The same form may have competed several times, with other parameters.
    const double distance = std::abs(results.CoD - best->CoD);
    if (chosen > 0 && !(distance < least)) continue;
    chosen = candidates.size();
    least = distance;
  }
  if (chosen > 0) candidates[chosen - 1].chosen = true;
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const Candidate& a, const Candidate& b) {
                     if (std::isnan(b.cop)) return !std::isnan(a.cop);
                     return a.cop > b.cop;
                   });
  return candidates;
}

void PrintCandidates(const std::vector<Candidate>& candidates, const std::string& indent,
                     std::ostream& out) {
  TextTable table;
  table.AddColumn("", TextTable::Align::kLeft);
  for (const char* title : {"CoP", "CoD", "rmse"}) table.AddColumn(title, TextTable::Align::kRight);
  for (const char* title : {"model", "inputs"}) table.AddColumn(title, TextTable::Align::kLeft);
  for (const Candidate& candidate : candidates)
    table.AddRow({candidate.chosen ? "*" : " ", CoPText(candidate.cop, 4),
                  CoPText(candidate.cod, 4), Short(candidate.rmse), ModelText(candidate),
                  Joined(candidate.inputs)});
  table.Print(out, indent);
}

Json::Value CandidatesJson(const std::vector<Candidate>& candidates) {
  Json::Value list(Json::arrayValue);
  for (const Candidate& candidate : candidates) {
    Json::Value json;
    json["family"] = candidate.family;
    json["order"] = static_cast<Json::UInt64>(candidate.order);
    json["interactions"] = candidate.interactions;
    json["ridge"] = candidate.ridge;
    json["box_cox"] = candidate.box_cox;
    json["inputs"] = Json::Value(Json::arrayValue);
    for (const std::string& input : candidate.inputs) json["inputs"].append(input);
    json["cop"] = JsonNumber(candidate.cop);
    json["cop_adjusted"] = JsonNumber(candidate.cop_adjusted);
    json["cod"] = JsonNumber(candidate.cod);
    json["cod_adjusted"] = JsonNumber(candidate.cod_adjusted);
    json["rmse"] = JsonNumber(candidate.rmse);
    json["chosen"] = candidate.chosen;
    list.append(json);
  }
  return list;
}

}  // namespace corvath::study
