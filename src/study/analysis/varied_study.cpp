#include "study/analysis/varied_study.h"

#include "analysis/hidden_names.h"
#include "design/designs/design.h"
#include "design/designs/indexed_responses.h"
#include "foundation/text.h"
#include "study/analysis/distribution_text.h"
#include "study/analysis/fixed_input.h"
#include "study/describe/json_text.h"
#include "study/describe/text_table.h"
#include "study/refusal.h"
#include "study/table/criteria_texts.h"
#include "study/table/csv_cell.h"
#include "study/table/name_hint.h"
#include "study/table/table_columns.h"
#include "training/train_study.h"

#include <boost/core/null_deleter.hpp>

#include <algorithm>
#include <cmath>

namespace corvath::study {
namespace {

using algorithm::datatypes::CDesignEntry;
using algorithm::datatypes::Criterion;
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

}  // namespace

VariedStudy::VariedStudy(const Project& project, const VariationRequest& request,
                         bool needs_distributions)
    : columns_(TableColumns::FromProject(project.GetRecord())) {
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
  const bool has_some = !request.distributions.empty();
  if (request.over == "bounds" && has_some)
    throw Refusal("over bounds, distributions of inputs do not count; leave one of the two out");
  const bool by_distributions = request.over.empty()
                                    ? needs_distributions || model_->IsStochastic() || has_some
                                    : request.over == "distributions";
  choice_.scope = by_distributions ? InputSpace::Scope::kDistributions : InputSpace::Scope::kBounds;
  for (const std::string& text : request.distributions) {
    auto [name, variable] = ParseNamedDistribution(text);
    RequireInput(project, name);
    RequireStates(project, name, *variable);
    if (!choice_.distributions.emplace(FromUtf8(name), std::move(variable)).second)
      throw Refusal("input " + Quoted(name) + " is given two distributions");
  }
  for (const std::string& text : request.fixed) {
    const auto [name, value] = ParseFixed(project, *model_, text);
    if (!choice_.fixed.emplace(FromUtf8(name), value).second)
      throw Refusal("input " + Quoted(name) + " is given two values");
  }
}

/// Nothing lies between words: their codes are the only values. A size out of a table may scatter
/// around it instead.
void VariedStudy::RequireStates(const Project& project, const std::string& name,
                                const algorithm::RV& variable) const {
  const TableColumns columns = TableColumns::FromProject(project.GetRecord());
  const TableColumn* const column = columns.Find(name);
  const auto input = model_->FindInput(FromUtf8(name));
  if (column == nullptr || !column->IsRead() || !input) return;
  const auto& codes = model_->GetInputs()[static_cast<std::size_t>(*input)].states;
  if (codes.empty()) return;
  bool fits = variable.IsDiscrete();
  for (Index k = 0; fits && k < variable.GetStates().rows(); ++k)
    fits = std::count(codes.begin(), codes.end(), variable.GetStates()(k, 0)) > 0;
  if (!fits)
    throw Refusal("input " + Quoted(name) + " takes words: discrete(CODE, PROBABILITY, ...) with " +
                  "their codes " + Short(codes.front()) + " to " + Short(codes.back()) +
                  " is wanted");
}

/// A further criterion must have a value at the middle of the inputs: a wrong name would make each
/// of its values NaN.
void VariedStudy::RequireNumbers(const VariationRequest& request) const {
  if (request.criteria.empty()) return;
  for (const auto& [name, criterion] : ParseTexts(request.criteria))
    analysis::RefuseHiddenNames(*model_, criterion.GetExpression());
  const Eigen::MatrixXd x = space_->FromGauss(Eigen::MatrixXd::Zero(1, space_->GetDim()));
  const Eigen::MatrixXd responses = model_->Responses(x);
  algorithm::datatypes::EntrySequence parameters, values;
  for (Index i = 0; i < x.cols(); ++i)
    parameters.Append(model_->GetInputs()[static_cast<std::size_t>(i)].name, CDesignEntry(x(0, i)));
  algorithm::datatypes::CriterionSequence criteria;
  const auto& quantities = model_->GetQuantities();
  for (std::size_t k = 0; k < quantities.size(); ++k) {
    const auto& [name, kind, description, cop] = quantities[k];
    if (description)
      criteria.Append(name, Criterion(description->type_, description->lhs_, description->rhs_));
    else
      values.Append(name, CDesignEntry(responses(0, static_cast<Index>(k))));
  }
  algorithm::datatypes::Design design(std::move(parameters), {});
  design.SetResponses(algorithm::datatypes::MergeIndexedResponses(std::move(values)));
  design.SetCriteria(criteria);
  TryCriteria(std::move(design), criteria.size() - request.criteria.size());
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

/// Outside the analysed designs models extrapolate, or stop at what they know: a scatter there is
/// theirs, not the product's.
void VariedStudy::AddRangeNotes(std::vector<std::string>& notes) const {
  constexpr double kMargin = 0.05;  // of the width: next to the outermost designs models still hold
  constexpr double kShare = 0.01;   // rarer values do not move statistics
  const Eigen::MatrixXd& designs = model_->GetDesigns().inputs;
  if (designs.rows() < 2) return;
  const auto& columns = space_->GetColumns();
  for (Index i = 0; i < model_->GetNumInputs(); ++i) {
    const double low = designs.col(i).minCoeff(), high = designs.col(i).maxCoeff();
    const double from = low - kMargin * (high - low), to = high + kMargin * (high - low);
    const auto column = std::find(columns.begin(), columns.end(), i);
    double share = 0.0;
    if (column == columns.end()) {
      const double value = space_->GetFixed()(i);
      share = value < from || value > to ? 1.0 : 0.0;
    } else {
      const auto& variable =
          *space_->GetVariables()[static_cast<std::size_t>(column - columns.begin())];
      share = 1.0 - (variable.CDF(to) - variable.CDF(from));
    }
    if (!(share >= kShare)) continue;
    notes.push_back(
        ToUtf8(model_->GetInputs()[static_cast<std::size_t>(i)].name) + " lies " +
        (share >= 1.0 ? "outside" : "to " + Short(std::round(100.0 * share)) + " % outside") +
        " the analysed designs (" + Short(low) + " to " + Short(high) +
        "): there the models extrapolate, and no error estimate covers it.");
  }
}

std::vector<std::string> VariedStudy::GetNotes() const {
  std::vector<std::string> notes;
  std::string fixed;
  const auto& inputs = model_->GetInputs();
  const auto& columns = space_->GetColumns();
  for (std::size_t i = 0; i < inputs.size(); ++i)
    if (std::find(columns.begin(), columns.end(), static_cast<Index>(i)) == columns.end()) {
      const std::string name = ToUtf8(inputs[i].name);
      const double value = space_->GetFixed()(static_cast<Index>(i));
      const TableColumn* const column = columns_.Find(name);
      const std::string word = column == nullptr ? "" : column->WordOf(value);
      fixed += (fixed.empty() ? "" : ", ") + name + " = " + (word.empty() ? Short(value) : word);
    }
  if (!fixed.empty()) notes.push_back("Inputs that do not vary: " + fixed);
  if (!IsOverDistributions() && !model_->GetCorrelations().isIdentity(0.0))
    notes.push_back("Between bounds, the correlations of the inputs do not count.");
  AddRangeNotes(notes);
  for (const std::wstring& name : space_->GetUncorrelated())
    notes.push_back("The correlations of " + ToUtf8(name) +
                    " are left out, since its distribution is discrete.");
  return notes;
}

}  // namespace corvath::study
