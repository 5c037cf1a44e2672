#include "analysis/optimisation/design_task.h"

#include "analysis/optimisation/expected_errors.h"
#include "foundation/text.h"
#include "foundation/text_stream.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace corvath::analysis {
namespace {

using utils::Quoted;

std::wstring NumberText(double value) {
  utils::WideTextStream text;
  text << value;
  return text.str();
}

std::wstring Trim(const std::wstring& text) {
  const auto begin = text.find_first_not_of(L" \t");
  if (begin == std::wstring::npos) return {};
  return text.substr(begin, text.find_last_not_of(L" \t") - begin + 1);
}

/// "name: left <= right" in its two parts; without a name the text is its own.
std::pair<std::wstring, std::wstring> SplitLimit(const std::wstring& text) {
  const auto colon = text.find(L':');
  const auto comparison = text.find_first_of(L"<>");
  if (colon == std::wstring::npos || comparison < colon) return {Trim(text), Trim(text)};
  return {Trim(text.substr(0, colon)), Trim(text.substr(colon + 1))};
}

std::wstring Listed(const std::vector<std::wstring>& names) {
  std::wstring list;
  for (const auto& name : names) list += (list.empty() ? L"" : L", ") + name;
  return list;
}

}  // namespace

DesignTask::DesignTask(std::shared_ptr<const StudyModel> model, const DesignWishes& wishes,
                       const Extend& extend)
    : model_(std::move(model)), extended_(model_), robust_(wishes.robust) {
  if (wishes.objectives.empty()) {
    std::vector<std::wstring> names;
    for (const auto& quantity : model_->GetQuantities())
      if (!quantity.IsLimit()) names.push_back(quantity.name);
    throw AnalysisError(
        L"No objective: the project tells limits and values, but not which value is to be "
        L"minimised "
        L"or maximised. There are " +
        Listed(names) + L".");
  }
  if (!(wishes.robust >= 0.0 && std::isfinite(wishes.robust)))
    throw AnalysisError(L"The number of standard deviations must be at least 0.");
  SetInputs(wishes);

  TermReader reader(*model_);
  program_.num_terms.clear();
  for (const auto& wish : wishes.objectives) {
    const std::wstring text = Trim(wish.text);
    if (text.empty()) throw AnalysisError(L"An objective is empty.");
    for (const auto& other : objectives_)
      if (other.name == text) throw AnalysisError(Quoted(text) + L" is an objective twice.");
    const auto terms = reader.LargestOf(text, wish.maximize ? -1.0 : 1.0);
    program_.num_terms.push_back(static_cast<Eigen::Index>(terms.size()));
    AddTerms(terms, 1.0);
    objectives_.push_back({text, wish.maximize});
  }
  const auto add_limit = [&](const std::wstring& name, const std::wstring& text,
                             const TermReader::Terms& exceedances) {
    for (const Limit& other : limits_)
      if (other.name == name) throw AnalysisError(L"There are two limits " + Quoted(name) + L".");
    limits_.push_back(
        {name, text, program_.num_limits, static_cast<Eigen::Index>(exceedances.size())});
    program_.num_limits += limits_.back().num_columns;
    AddTerms(exceedances, -1.0);
  };
  if (wishes.project_limits)
    for (const auto& quantity : model_->GetQuantities())
      if (quantity.IsLimit()) add_limit(quantity.name, L"", reader.LargestOf(quantity.name, -1.0));
  for (const std::wstring& wish : wishes.limits) {
    const auto [name, text] = SplitLimit(wish);
    add_limit(name, text, reader.Exceedances(text));
  }
  if (!reader.GetMore().empty()) {
    if (!extend) throw AnalysisError(L"This study takes names and sums of them alone.");
    extended_ = extend(reader.GetMore());
  }
  FindUsed();
  if (robust_ > 0.0) scatter_ = std::make_shared<InputScatter>(*model_, wishes.scatter);

  program_.values = [this](const Eigen::MatrixXd& x) {
    const auto at = [this](const Eigen::MatrixXd& points) {
      return Columns(points, extended_->Responses(points));
    };
    if (!scatter_) return at(x);
    const auto moments = scatter_->Propagate(x, at);
    Eigen::MatrixXd values = moments.mean;
    values.rightCols(program_.num_limits) -=
        robust_ * moments.deviation.rightCols(program_.num_limits);
    return values;
  };
}

void DesignTask::SetInputs(const DesignWishes& wishes) {
  const auto& inputs = model_->GetInputs();
  for (const auto& [name, range] : wishes.bounds) {
    std::vector<std::wstring> names;
    names.reserve(inputs.size());
    for (const auto& input : inputs) names.push_back(input.name);
    if (!model_->FindInput(name))
      throw UnknownName(L"There is no input " + Quoted(name) + L".", name, names);
    if (!(std::isfinite(range.first) && range.first <= range.second && std::isfinite(range.second)))
      throw AnalysisError(L"The bounds of " + Quoted(name) + L" are no range.");
  }
  const auto n = static_cast<Eigen::Index>(inputs.size());
  program_.lower.resize(n);
  program_.upper.resize(n);
  program_.spans.resize(n);
  program_.states.resize(inputs.size());
  for (Eigen::Index i = 0; i < n; ++i) SetRange(inputs[static_cast<std::size_t>(i)], i, wishes);
  if (!program_.HasDiscrete()) program_.states.clear();
  std::vector<std::wstring> moved;
  for (Eigen::Index i = 0; i < n; ++i)
    if (inputs[static_cast<std::size_t>(i)].variable && program_.lower(i) < program_.upper(i))
      moved.push_back(inputs[static_cast<std::size_t>(i)].name);
  if (!moved.empty())
    notes_.push_back(L"Random inputs are moved by their means (" + Listed(moved) +
                     L"); bounds name=value hold the mean of one that nobody can choose.");
  if (program_.lower == program_.upper)
    throw AnalysisError(L"All inputs are held: there is nothing to choose.");
}

void DesignTask::SetRange(const StudyInput& input, Eigen::Index i, const DesignWishes& wishes) {
  double lower = input.lower, upper = input.upper;
  const StudyDesigns& designs = model_->GetDesigns();
  const auto wish = wishes.bounds.find(input.name);
  if (wish != wishes.bounds.end()) {
    lower = wish->second.first;
    upper = wish->second.second;
  } else if (designs.inputs.rows() > 1 && !input.IsDiscrete()) {
    lower = std::max(lower, designs.inputs.col(i).minCoeff());
    upper = std::min(upper, designs.inputs.col(i).maxCoeff());
  }
  const double span = std::isfinite(input.upper - input.lower) ? input.upper - input.lower : 0.0;
  if (input.IsDiscrete()) {
    std::vector<double> states;
    constexpr double kSlip = 1e-9;
    for (const double state : input.states)
      if (state >= lower - kSlip && state <= upper + kSlip) states.push_back(state);
    if (states.empty())
      throw AnalysisError(
          L"No state of " + Quoted(input.name) + L" lies within its bounds; there are " +
          std::to_wstring(input.states.size()) + L" from " + NumberText(input.states.front()) +
          L" to " + NumberText(input.states.back()) + L".");
    lower = states.front();
    upper = states.back();
    program_.states[static_cast<std::size_t>(i)] =
        Eigen::Map<const Eigen::VectorXd>(states.data(), static_cast<Eigen::Index>(states.size()));
  }
  if (!(std::isfinite(lower) && lower <= upper && std::isfinite(upper)))
    throw AnalysisError(L"The input " + Quoted(input.name) + L" has no range; give it bounds.");
  program_.lower(i) = lower;
  program_.upper(i) = upper;
  program_.spans(i) = span;
}

void DesignTask::AddTerms(const TermReader::Terms& terms, double sign) {
  for (AffineTerm term : terms) {
    term.constant *= sign;
    for (auto& column : term.factors) column.second *= sign;
    columns_.push_back(std::move(term));
  }
}

/// The responses that terms name; through a criterion of its own a text may use any.
void DesignTask::FindUsed() {
  const Eigen::Index first = model_->GetNumInputs(), num_responses = model_->GetNumResponses();
  std::set<Eigen::Index> used;
  for (const AffineTerm& term : columns_)
    for (const auto& column : term.factors) {
      const Eigen::Index quantity = column.first - first;
      if (quantity >= num_responses) needs_criteria_ = true;
      if (quantity >= 0 && quantity < num_responses) used.insert(quantity);
    }
  if (needs_criteria_)
    for (Eigen::Index k = 0; k < num_responses; ++k) used.insert(k);
  used_responses_.assign(used.begin(), used.end());
}

Eigen::MatrixXd DesignTask::Columns(const ConstPoints& x, const ConstPoints& responses) const {
  const Eigen::Index m = model_->GetNumInputs(), num_responses = model_->GetNumResponses();
  Eigen::MatrixXd criteria;
  if (needs_criteria_) criteria = extended_->Criteria(x, responses);
  Eigen::MatrixXd values(x.rows(), static_cast<Eigen::Index>(columns_.size()));
  for (Eigen::Index k = 0; k < values.cols(); ++k) {
    const AffineTerm& term = columns_[static_cast<std::size_t>(k)];
    values.col(k).setConstant(term.constant);
    for (const auto& [column, factor] : term.factors) {
      if (column < m)
        values.col(k) += factor * x.col(column);
      else if (column < m + num_responses)
        values.col(k) += factor * responses.col(column - m);
      else
        values.col(k) += factor * criteria.col(column - m - num_responses);
    }
  }
  return values;
}

Eigen::MatrixXd DesignTask::ColumnErrors(const ConstPoints& x) const {
  return PropagateErrors(model_->Responses(x), ResponseErrors(*model_, x),
                         [&](const Eigen::MatrixXd& responses) { return Columns(x, responses); });
}

double DesignTask::ObjectiveValue(Eigen::Index i, const Eigen::RowVectorXd& columns) const {
  const double value = program_.Objectives(columns)(i);
  return objectives_[static_cast<std::size_t>(i)].maximize ? -value : value;
}

double DesignTask::Reserve(const Limit& limit, const Eigen::RowVectorXd& columns) const {
  return columns.segment(program_.NumTerms() + limit.first, limit.num_columns)
      .minCoeff<Eigen::PropagateNaN>();
}

}  // namespace corvath::analysis
