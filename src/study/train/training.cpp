#include "study/train/training.h"

#include "design/parameters/parameter_manager.h"
#include "foundation/text.h"
#include "foundation/text_stream.h"
#include "study/describe/candidate_list.h"
#include "study/describe/json_text.h"
#include "study/describe/model_text.h"
#include "study/refusal.h"
#include "study/table/criteria_texts.h"
#include "study/table/criterion_names.h"

#include <algorithm>
#include <cmath>

namespace corvath::study {

using training::TrainedResponse;
using utils::ToUtf8;

ModelInputs::ModelInputs(const TrainedResponse& response, const std::vector<std::wstring>& all) {
  for (std::size_t i = 0; i < all.size(); ++i) {
    names.push_back(ToUtf8(all[i]));
    filtered.push_back(std::find(response.inputs.begin(), response.inputs.end(), all[i]) ==
                       response.inputs.end());
    cops.push_back(response.single_cops(static_cast<Eigen::Index>(i)));
  }
}

Training::Training(TableSource& source, TrainRequest request)
    : request_(std::move(request)),
      table_(ReadDesignTable(source, request_.columns, request_.skip_incomplete)),
      criteria_(UseColumns(request_.criteria, table_)) {}

void Training::Run(const Progress& progress) {
  training::TrainSettings settings;
  settings.seed = request_.seed;
  settings.budget_seconds = request_.budget;
  const auto criteria = ParseCriteria(criteria_, table_.data);
  utils::TextStream seconds;
  seconds << request_.budget;
  const std::string budget = " (budget " + seconds.str() + " s)";
  training::TrainObserver observer;
  if (progress)
    observer = [&](const training::TrainProgress& state) {
      const double share = state.total == 0
                               ? -1.0
                               : static_cast<double>(state.done) / static_cast<double>(state.total);
      return progress(share, ToUtf8(state.response + L": " + state.candidate) + budget);
    };
  try {
    study_ = training::TrainStudy(table_.data, settings, criteria, observer);
  } catch (const training::TrainingError& error) {
    throw Refusal(table_.Explain(error));
  } catch (const training::TrainingInterrupted&) {
    throw Cancelled();
  }
  TellColumns();
}

/// Puts what the numbers do not tell about the columns into the project: units, words, dates.
void Training::TellColumns() {
  table_.columns.Store(study_.project);
  auto& manager = study_.project.GetParameterManager();
  for (const auto& [name, unit] : table_.units) {
    const auto* const found = manager.FindParameter(utils::FromUtf8(name));
    if (found == nullptr) continue;  // of a response
    auto parameter = *found;
    parameter.SetUnit(utils::FromUtf8(unit));
    manager.ReplaceParameter(parameter);
  }
}

std::vector<std::string> Training::GetNotes() const {
  std::vector<std::string> notes;
  for (const std::wstring& note : study_.notes) notes.push_back(ToUtf8(note));
  std::vector<std::string> losses;
  for (const TrainedResponse& response : study_.responses) {
    const ModelInputs inputs(response, table_.data.inputs);
    std::string text = LargeLosses(ToUtf8(response.name), response.cop, inputs.names,
                                   inputs.filtered, inputs.cops);
    if (!text.empty()) losses.push_back(std::move(text));
  }
  if (!losses.empty()) notes.push_back(LargeLossNote(losses));
  return notes;
}

Json::Value Training::ResponseDocument(const TrainedResponse& response) const {
  const ModelInputs inputs(response, table_.data.inputs);
  Json::Value json;
  json["name"] = ToUtf8(response.name);
  json["model"] = ToUtf8(response.model);
  json["cop"] = JsonNumber(response.cop);
  json["raw_cop"] = JsonNumber(response.cop_raw);
  json["noise"] = JsonNumber(response.noise);
  json["cod"] = JsonNumber(response.cod);
  json["cod_adjusted"] = JsonNumber(response.cod_adjusted);
  json["designs"] = static_cast<Json::UInt64>(response.num_designs);
  json["inputs"] = Json::Value(Json::arrayValue);
  for (std::size_t i = 0; i < inputs.names.size(); ++i) {
    if (inputs.filtered[i]) continue;
    Json::Value input;
    input["name"] = inputs.names[i];
    input["single_cop"] = JsonNumber(inputs.cops[i]);
    json["inputs"].append(input);
  }
  json["candidates"] = CandidatesJson(
      ListCandidates(*study_.project.GetAlgorithmInfo()->GetZELInformation(), response.name));
  return json;
}

Json::Value Training::GetDocument() const {
  Json::Value document;
  document["table"] = table_.file;
  document["designs"] = static_cast<Json::UInt64>(table_.rows.size());
  document["inputs"] = Json::Value(Json::arrayValue);
  for (const std::wstring& name : table_.data.inputs) {
    const TableColumn* const column = table_.columns.Find(ToUtf8(name));
    Json::Value input = column == nullptr ? Json::Value(Json::objectValue) : column->ToJson();
    input["name"] = ToUtf8(name);
    const auto unit = table_.units.find(ToUtf8(name));
    if (unit != table_.units.end()) input["unit"] = unit->second;
    document["inputs"].append(input);
  }
  document["responses"] = Json::Value(Json::arrayValue);
  for (const TrainedResponse& response : study_.responses)
    document["responses"].append(ResponseDocument(response));
  document["notes"] = Json::Value(Json::arrayValue);
  for (const std::string& note : table_.notes) document["notes"].append(note);
  for (const std::string& note : GetNotes()) document["notes"].append(note);
  return document;
}

}  // namespace corvath::study
