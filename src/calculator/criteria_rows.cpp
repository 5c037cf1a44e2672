#include "calculator/criteria_evaluation.h"
#include "foundation/constants.h"

#include <algorithm>
#include <cmath>

namespace corvath::calculator {

namespace {

using algorithm::datatypes::CriterionDescription;

constexpr std::size_t kMaxRows = ScalarProgram::kMaxRows;

bool HasOneSide(CriterionDescription::eType type) {
  return type >= CriterionDescription::RHS_ANY && type <= CriterionDescription::NEGATIVE_RHS;
}
bool HasTwoSides(CriterionDescription::eType type) {
  return type >= CriterionDescription::RHS_MINUS_LHS &&
         type <= CriterionDescription::LIMIT_LHS_ABOVE_RHS;
}

}  // namespace

/// Whether all criteria are evaluated, each by programs, and nothing is to be told of any input.
bool CriteriaEvaluation::HasProgramsOnly() const {
  const auto is_usable = [](const Input& input) { return input.problem.empty(); };
  const auto is_program = [](const Side& side) { return side.text && !side.program->IsEmpty(); };
  const auto is_empty = [](const Side& side) { return !side.text && side.problem.empty(); };
  const auto is_ready = [&](const Step& step) {
    const PlannedCriterion& criterion = plan_.criteria[step.position];
    const CriterionDescription::eType type = criterion.description.type_;
    return criterion.needs_evaluation && is_program(step.rhs) &&
           (is_program(step.lhs) ? HasOneSide(type) || HasTwoSides(type)
                                 : is_empty(step.lhs) && HasOneSide(type));
  };
  return !plan_.steps.empty() && plan_.steps.size() == plan_.criteria.size() &&
         std::all_of(plan_.parameters.begin(), plan_.parameters.end(), is_usable) &&
         std::all_of(plan_.responses.begin(), plan_.responses.end(), is_usable) &&
         std::all_of(plan_.steps.begin(), plan_.steps.end(), is_ready);
}

void CriteriaEvaluation::CalculateRows(const std::vector<const double*>& parameters,
                                       const std::vector<RowNumbers>& responses, std::size_t rows,
                                       double* values) {
  const std::size_t count = plan_.steps.size();
  work_.resize(ScalarProgram::kWorkSize + (count + 3) * kMaxRows);
  double* const lhs = work_.data() + ScalarProgram::kWorkSize;
  double* const rhs = lhs + kMaxRows;
  double* const defects = rhs + kMaxRows;
  double* result = defects + kMaxRows;  // of one criterion after the other

  // A response hides the parameter of its name.
  constexpr std::size_t kWhole = ScalarProgram::kWhole;
  ScalarProgram::Columns columns;
  for (std::size_t i = 0; i < parameters.size(); ++i)
    columns[{plan_.parameters[i].object, kWhole}] = parameters[i];
  for (const Input& response : plan_.responses) columns.erase({response.object, kWhole});
  for (const RowNumbers& response : responses)
    columns[{plan_.responses[response.response].object, response.element}] = response.numbers;

  std::fill_n(defects, rows, 0.0);
  for (const Step& step : plan_.steps) {
    const auto run = [&](const Side& side, double* numbers) {
      return !side.text || side.program->RunRows(columns, rows, work_.data(), numbers, defects);
    };
    const CriterionDescription::eType type = plan_.criteria[step.position].description.type_;
    if (!run(step.lhs, lhs) || !run(step.rhs, rhs)) {
      std::fill_n(defects, rows, math::kNaN);
      break;
    }
    for (std::size_t i = 0; i < rows; ++i) {
      result[i] = CombineSides(type, lhs[i], rhs[i]);
      if (!std::isfinite(result[i]) || result[i] == 0.0) defects[i] = math::kNaN;  // which zero?
      values[i * count + step.position] = result[i];
    }
    if (step.settable) {
      columns.erase(columns.lower_bound({step.object, 0}),
                    columns.upper_bound({step.object, kWhole}));
      columns[{step.object, kWhole}] = result;
    }
    result += kMaxRows;
  }
  for (std::size_t i = 0; i < rows; ++i)
    if (std::isnan(defects[i])) values[i * count] = math::kNaN;
}

}  // namespace corvath::calculator
