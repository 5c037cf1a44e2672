#include "analysis/input_space.h"

#include "analysis/progress.h"
#include "foundation/parallel.h"
#include "stochastics/marginal_transform.h"
#include "stochastics/normal_quantile.h"
#include "stochastics/rv_factory.h"

#include <algorithm>
#include <cmath>

namespace corvath::analysis {
namespace {

using algorithm::RV;
using algorithm::RVFactory;
using algorithm::RVSet;
using Eigen::Index;
namespace types = enums::RandomVariable;

/// Rows of one task: as many as the quantiles of a beta distribution take a table for.
constexpr Index kRows = algorithm::kManyValues;

[[noreturn]] void Refuse(const std::wstring& input, const std::wstring& what) {
  throw AnalysisError(L"Input \"" + input + L"\" " + what);
}

/// Equally likely values: those between the bounds, or the states.
boost::shared_ptr<RV> EquallyLikely(const StudyInput& input) {
  if (!input.IsDiscrete()) {
    if (!(std::isfinite(input.lower) && std::isfinite(input.upper)))
      Refuse(input.name, L"has no bounds.");
    const auto variable = RVFactory::GetInstance().Create(types::UNIFORM);
    variable->SetParameters(Eigen::Vector2d(input.lower, input.upper));
    return variable;
  }
  const auto variable = RVFactory::GetInstance().Create(types::DISCRETE);
  const auto count = static_cast<Index>(input.states.size());
  Eigen::VectorXd table(2 * count);
  for (Index i = 0; i < count; ++i) {
    table(2 * i) = input.states[static_cast<std::size_t>(i)];
    table(2 * i + 1) = 1.0 / static_cast<double>(count);
  }
  variable->SetParameters(table);
  return variable;
}

/// The only value that the bounds leave; nothing if there are several.
bool HasOneValue(const StudyInput& input) {
  return input.IsDiscrete() ? input.states.size() == 1 : input.lower == input.upper;
}

void RequireKnown(const StudyModel& model, const InputSpace::Choice& choice) {
  const auto require = [&](const std::wstring& name) {
    if (!model.FindInput(name)) throw AnalysisError(L"There is no input \"" + name + L"\".");
  };
  for (const auto& entry : choice.distributions) require(entry.first);
  for (const auto& [name, value] : choice.fixed) {
    require(name);
    if (choice.distributions.count(name) > 0)
      Refuse(name, L"is given both a distribution and a value.");
    if (!std::isfinite(value)) Refuse(name, L"is given a value that is not finite.");
  }
}

}  // namespace

InputSpace::InputSpace(const StudyModel& model, const Choice& choice) {
  RequireKnown(model, choice);
  fixed_ = Eigen::VectorXd::Zero(model.GetNumInputs());
  variables_ = algorithm::RVSetFactory::GetInstance().Create(RVSet::kNataf);
  for (Index i = 0; i < model.GetNumInputs(); ++i) {
    const StudyInput& input = model.GetInputs()[static_cast<std::size_t>(i)];
    if (const auto variable = VariableOf(input, choice)) {
      variables_->AddRV(variable);
      columns_.push_back(i);
      continue;
    }
    const auto given = choice.fixed.find(input.name);
    fixed_(i) = given == choice.fixed.end() ? input.reference : given->second;
    if (!std::isfinite(fixed_(i)))
      Refuse(input.name, L"has neither a distribution nor a reference value.");
  }
  if (columns_.empty())
    throw AnalysisError(choice.scope == Scope::kBounds ? L"No input varies."
                                                       : L"No input has a distribution.");
  Correlate(model, choice);
}

/// Null for an input that is fixed.
boost::shared_ptr<RV> InputSpace::VariableOf(const StudyInput& input, const Choice& choice) const {
  if (choice.fixed.count(input.name) > 0) return nullptr;
  const auto given = choice.distributions.find(input.name);
  if (given != choice.distributions.end()) return given->second;
  if (choice.scope == Scope::kDistributions) return input.variable;
  return HasOneValue(input) ? nullptr : EquallyLikely(input);
}

/// Correlations hold among distributions alone. Those of a discrete one are not defined; where the
/// study itself has such, it is refused.
void InputSpace::Correlate(const StudyModel& model, const Choice& choice) {
  correlations_ = Eigen::MatrixXd::Identity(GetDim(), GetDim());
  if (choice.scope == Scope::kBounds) return;
  for (Index i = 0; i < GetDim(); ++i)
    for (Index k = 0; k < GetDim(); ++k)
      correlations_(i, k) = model.GetCorrelations()(columns_[static_cast<std::size_t>(i)],
                                                    columns_[static_cast<std::size_t>(k)]);
  for (Index i = 0; i < GetDim(); ++i) {
    const auto column = static_cast<std::size_t>(columns_[static_cast<std::size_t>(i)]);
    const std::wstring& name = model.GetInputs()[column].name;
    if (choice.distributions.count(name) == 0 ||
        !GetVariables()[static_cast<std::size_t>(i)]->IsDiscrete() ||
        correlations_.col(i).cwiseAbs().sum() == 1.0)
      continue;
    uncorrelated_.push_back(name);
    correlations_.row(i).setZero();
    correlations_.col(i).setZero();
    correlations_(i, i) = 1.0;
  }
  if (correlations_.isIdentity(0.0)) return;
  try {
    variables_->SetCorrelationMatrix(correlations_);
  } catch (const utils::runtime_error& error) {
    throw AnalysisError(error.GetMessage());
  }
}

std::vector<std::vector<Index>> InputSpace::GetGroups() const {
  std::vector<std::vector<Index>> groups;
  std::vector<bool> is_taken(columns_.size());
  for (Index first = 0; first < GetDim(); ++first) {
    if (is_taken[static_cast<std::size_t>(first)]) continue;
    is_taken[static_cast<std::size_t>(first)] = true;
    std::vector<Index> group = {first};
    for (std::size_t i = 0; i < group.size(); ++i)
      for (Index k = 0; k < GetDim(); ++k)
        if (!is_taken[static_cast<std::size_t>(k)] && correlations_(group[i], k) != 0.0) {
          is_taken[static_cast<std::size_t>(k)] = true;
          group.push_back(k);
        }
    std::sort(group.begin(), group.end());
    groups.push_back(std::move(group));
  }
  return groups;
}

bool InputSpace::HasDiscrete() const {
  return std::any_of(variables_->GetRVs().begin(), variables_->GetRVs().end(),
                     [](const auto& variable) { return variable->IsDiscrete(); });
}

Eigen::MatrixXd InputSpace::FromGauss(const ConstPoints& u) const {
  Eigen::MatrixXd x = fixed_.transpose().replicate(u.rows(), 1);
  const auto count = static_cast<std::size_t>((u.rows() + kRows - 1) / kRows);
  utils::ParallelTasks(count, [&](std::size_t task) {
    const Index first = static_cast<Index>(task) * kRows;
    const Index rows = std::min(kRows, u.rows() - first);
    const Eigen::MatrixXd values =
        variables_->FromStandardGauss(u.middleRows(first, rows).transpose());
    for (Index k = 0; k < GetDim(); ++k)
      x.col(columns_[static_cast<std::size_t>(k)]).segment(first, rows) = values.row(k).transpose();
  });
  return x;
}

Eigen::MatrixXd InputSpace::FromUniform(const ConstPoints& p) const {
  Eigen::MatrixXd u(p.rows(), p.cols());
  utils::ParallelFor(static_cast<std::size_t>(p.rows()), static_cast<std::size_t>(kRows),
                     [&](std::size_t begin, std::size_t end) {
                       const auto first = static_cast<Index>(begin);
                       const auto count = static_cast<Index>(end - begin);
                       u.middleRows(first, count) =
                           p.middleRows(first, count).unaryExpr(&math::NormalQuantile);
                     });
  return FromGauss(u);
}

}  // namespace corvath::analysis
