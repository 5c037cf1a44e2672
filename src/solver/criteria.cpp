#include "calculator/criteria_evaluation.h"
#include "solver/zel_solver.h"

namespace corvath::zel {

/// Evaluates the criteria, design by design, from the predicted responses.
void ZELSolver::EvaluateCriteria(const ConstPoints& matrix, const double* responses,
                                 const std::vector<bool>& predicted, double* criteria) {
  const auto& outputs = GetOutputs();
  std::vector<std::wstring> names(outputs.size());
  for (std::size_t k = 0; k < outputs.size(); ++k)
    if (predicted[k]) names[k] = outputs[k].name;
  const Eigen::Map<const Eigen::MatrixXd> values(responses, matrix.rows(),
                                                 static_cast<Eigen::Index>(outputs.size()));
  EvaluateCriteriaAtRows(GetInputNames(), names, GetCriteriaTemplates(), matrix, values,
                         GetLogger(), idle_criteria_, criteria);
}

/// Gives the designs the project's criteria with their values at the responses that they have.
void ZELSolver::AddCriteria(std::vector<Design>& designs) {
  calculator::CriteriaEvaluation evaluation;
  for (Design& design : designs) {
    design.SetCriteria(GetCriteriaTemplates());
    for (auto& criterion : design.GetCriteria()) criterion.second.Invalidate();
    evaluation.Calculate(design);
  }
}

}  // namespace corvath::zel
