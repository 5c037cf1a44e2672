#include "training/criteria_check.h"

#include "calculator/calculator.h"
#include "design/indexed_name.h"
#include "foundation/text_stream.h"

#include <algorithm>

namespace corvath::training {
namespace {

using algorithm::datatypes::CriterionSequence;

void RequireNewNames(const TrainingTable& table, const CriterionSequence& criteria) {
  std::vector<std::wstring> columns = table.inputs;
  for (const std::wstring& name : table.responses) {
    columns.push_back(name);
    columns.push_back(algorithm::datatypes::SplitIndexedName(name).base);
  }
  for (const auto& criterion : criteria)
    if (std::find(columns.begin(), columns.end(), criterion.first) != columns.end())
      throw TrainingError(L"Criterion \"" + criterion.first + L"\" has the name of a column.",
                          criterion.first);
}

/// Criteria see the inputs of the models alone.
void RequireNoConstantInputs(const TrainingTable& table, const CriterionSequence& criteria) {
  CCalculator calculator;
  std::vector<std::pair<std::wstring, double>> constants;
  for (Eigen::Index j = 0; j < table.points.cols(); ++j) {
    const std::wstring& name = table.inputs[static_cast<std::size_t>(j)];
    if (!IsConstantColumn(table.points.col(j)) || !calculator.IsValidIdentifier(name, true))
      continue;
    constants.emplace_back(name, table.points(0, j));
    calculator.SetObject(name, L"", math::Value(table.points(0, j)));
  }
  for (const auto& [criterion, definition] : criteria) {
    const auto named = calculator.GetDependencies(definition.GetExpression());
    for (const auto& [name, value] : constants) {
      if (named.count(name) == 0) continue;
      utils::WideTextStream message;
      message << L"Criterion \"" << criterion << L"\" names the constant input \"" << name
              << L"\"; write its value, " << value << L".";
      throw TrainingError(message.str(), criterion);
    }
  }
}

}  // namespace

void RequireUsableCriteria(const TrainingTable& table, const CriterionSequence& criteria) {
  if (criteria.empty()) return;
  RequireNewNames(table, criteria);
  RequireNoConstantInputs(table, criteria);
}

}  // namespace corvath::training
