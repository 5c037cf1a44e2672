#include "study/analysis/varied_study.h"

#include "foundation/text.h"
#include "solver/row_criteria.h"
#include "study/analysis/distribution_text.h"
#include "study/describe/json_text.h"
#include "study/describe/text_table.h"
#include "study/refusal.h"
#include "study/table/csv_cell.h"
#include "study/table/name_hint.h"
#include "study/table/table_columns.h"
#include "training/train_study.h"

#include <boost/core/null_deleter.hpp>
#include <boost/make_shared.hpp>

#include <algorithm>
#include <cmath>

namespace corvath::study {
namespace {

using analysis::InputSpace;
using Eigen::Index;
using utils::FromUtf8;
using utils::ToUtf8;

algorithm::datatypes::CriterionSequence ParseTexts(const std::vector<std::string>& texts) {
  algorithm::datatypes::CriterionSequence criteria;
  for (const std::string& text : texts) training::ParseCriterion(FromUtf8(text), criteria);
  return criteria;
}

void RequireInput(const Project& project, const std::string& name) {
  const auto& inputs = project.GetInputs();
  if (std::find(inputs.begin(), inputs.end(), name) == inputs.end())
    throw Refusal("there is no input " + Quoted(name) + "; " +
                  NameHint(name, inputs, "the inputs are"));
}

/// The value of "NAME=VALUE", where a word may stand for its code.
std::pair<std::string, double> ParseFixed(const Project& project, const std::string& text) {
  const std::size_t equals = text.rfind('=');
  if (equals == std::string::npos || equals == 0)
    throw Refusal(Quoted(text) + ": NAME=VALUE is wanted, as in load=12");
  const std::string name(Trimmed(std::string_view(text).substr(0, equals)));
  const std::string value(Trimmed(std::string_view(text).substr(equals + 1)));
  RequireInput(project, name);
  const TableColumns columns = TableColumns::FromProject(project.GetRecord());
  const TableColumn* const column = columns.Find(name);
  const CsvNumber number = ReadNumber(value);
  const bool is_number = number.kind == CsvNumber::Kind::kNumber;
  if (column != nullptr && column->IsRead())
    return {name, column->ReadCell(value, number.value, is_number, name)};
  if (!is_number) throw Refusal(Quoted(text) + ": " + RefusalText(value, number.kind));
  return {name, number.value};
}

}  // namespace

VariedStudy::VariedStudy(const Project& project, const VariationRequest& request,
                         bool needs_distributions) {
  try {
    // The project outlives this study, whose solver it shares.
    model_.emplace(boost::shared_ptr<zel::ZELSolver>(&project.GetSolver(), boost::null_deleter()),
                   ParseTexts(request.criteria));
    Choose(project, request, needs_distributions);
    space_.emplace(*model_, choice_);
    RequireNumbers(request);
  } catch (const utils::runtime_error& error) {
    throw Refusal(ToUtf8(error.GetMessage()));
  }
}

void VariedStudy::Choose(const Project& project, const VariationRequest& request,
                         bool needs_distributions) {
  if (!request.over.empty() && request.over != "bounds" && request.over != "distributions")
    throw Refusal("over: bounds or distributions is wanted, not " + Quoted(request.over));
  const bool by_distributions = request.over.empty() ? needs_distributions || model_->IsStochastic()
                                                     : request.over == "distributions";
  choice_.scope = by_distributions ? InputSpace::Scope::kDistributions : InputSpace::Scope::kBounds;
  for (const std::string& text : request.distributions) {
    auto [name, variable] = ParseNamedDistribution(text);
    RequireInput(project, name);
    if (!choice_.distributions.emplace(FromUtf8(name), std::move(variable)).second)
      throw Refusal("input " + Quoted(name) + " is given two distributions");
  }
  for (const std::string& text : request.fixed) {
    const auto [name, value] = ParseFixed(project, text);
    if (!choice_.fixed.emplace(FromUtf8(name), value).second)
      throw Refusal("input " + Quoted(name) + " is given two values");
  }
}

/// A further criterion must have a value at the middle of the inputs: a wrong name would make each
/// of its values NaN.
void VariedStudy::RequireNumbers(const VariationRequest& request) const {
  if (request.criteria.empty()) return;
  const Eigen::MatrixXd x = space_->FromGauss(Eigen::MatrixXd::Zero(1, space_->GetDim()));
  const Eigen::MatrixXd responses = model_->Responses(x);
  std::vector<std::wstring> inputs;
  for (const auto& input : model_->GetInputs()) inputs.push_back(input.name);
  std::vector<std::wstring> outputs;
  algorithm::datatypes::CriterionSequence criteria;
  for (const auto& quantity : model_->GetQuantities()) {
    if (!quantity.description)
      outputs.push_back(quantity.name);
    else
      criteria.Append(quantity.name, algorithm::datatypes::Criterion(quantity.description->type_,
                                                                     quantity.description->lhs_,
                                                                     quantity.description->rhs_));
  }
  const auto log = boost::make_shared<utils::log::VectorLog>();
  zel::RowCriteria rows(inputs, outputs, criteria, log);
  std::vector<double> values(rows.GetCount());
  rows.Evaluate(x.data(), 1, responses.data(), 1, values.data());
  const std::size_t first = values.size() - request.criteria.size();
  for (std::size_t i = first; i < values.size(); ++i)
    if (std::isnan(values[i])) {
      const auto lines = log->GetLines();
      throw Refusal("criterion " + Quoted(ToUtf8(criteria[i].first)) + " has no number" +
                    (lines.empty() ? "" : ": " + ToUtf8(lines.back().second)));
    }
}

Json::Value VariedStudy::GetInputsDocument() const {
  Json::Value document(Json::objectValue);
  const auto& inputs = model_->GetInputs();
  const auto& columns = space_->GetColumns();
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    Json::Value& json = document[ToUtf8(inputs[i].name)];
    const auto column = std::find(columns.begin(), columns.end(), static_cast<Index>(i));
    if (column == columns.end()) {
      json["value"] = JsonNumber(space_->GetFixed()(static_cast<Index>(i)));
      continue;
    }
    const auto& variable =
        *space_->GetVariables()[static_cast<std::size_t>(column - columns.begin())];
    json["distribution"] = ToUtf8(variable.GetTypeName());
    json["mean"] = JsonNumber(variable.GetStats()(0));
    if (variable.GetStats().size() > 1) json["sd"] = JsonNumber(variable.GetStats()(1));
  }
  return document;
}

std::vector<std::string> VariedStudy::GetNotes() const {
  std::vector<std::string> notes;
  std::string fixed;
  const auto& inputs = model_->GetInputs();
  const auto& columns = space_->GetColumns();
  for (std::size_t i = 0; i < inputs.size(); ++i)
    if (std::find(columns.begin(), columns.end(), static_cast<Index>(i)) == columns.end())
      fixed += (fixed.empty() ? "" : ", ") + ToUtf8(inputs[i].name) + " = " +
               Short(space_->GetFixed()(static_cast<Index>(i)));
  if (!fixed.empty()) notes.push_back("Inputs that do not vary: " + fixed);
  for (const std::wstring& name : space_->GetUncorrelated())
    notes.push_back("The correlations of " + ToUtf8(name) +
                    " are left out, since its distribution is discrete.");
  return notes;
}

}  // namespace corvath::study
