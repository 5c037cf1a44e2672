#pragma once

#include "analysis/function_model.h"
#include "stochastics/rv_factory.h"
#include "support/testing.h"

#include <Eigen/Core>

/// Studies of plain functions, for analyses that have closed forms.
namespace support {

inline corvath::analysis::StudyInput BoundedInput(const std::wstring& name, double lower,
                                                  double upper) {
  corvath::analysis::StudyInput input;
  input.name = name;
  input.lower = lower;
  input.upper = upper;
  input.reference = 0.5 * (lower + upper);
  return input;
}

/// @param moments  mean, standard deviation, ...
inline corvath::analysis::StudyInput RandomInput(const std::wstring& name,
                                                 corvath::enums::RandomVariable::eType type,
                                                 std::initializer_list<double> moments) {
  corvath::analysis::StudyInput input;
  input.name = name;
  input.variable = corvath::algorithm::RVFactory::GetInstance().Create(type);
  input.variable->SetStats(Eigen::Map<const Eigen::VectorXd>(
      moments.begin(), static_cast<Eigen::Index>(moments.size())));
  input.reference = *moments.begin();
  return input;
}

struct NamedFunction {
  std::wstring name;
  std::function<double(const Eigen::VectorXd&)> value;
  corvath::analysis::StudyQuantity::Kind kind = corvath::analysis::StudyQuantity::Kind::kResponse;
};

inline corvath::analysis::FunctionModel FunctionStudy(
    std::vector<corvath::analysis::StudyInput> inputs, const std::vector<NamedFunction>& functions,
    Eigen::MatrixXd correlations = {}) {
  std::vector<corvath::analysis::StudyQuantity> quantities;
  for (const NamedFunction& function : functions) {
    quantities.emplace_back();
    quantities.back().name = function.name;
    quantities.back().kind = function.kind;
  }
  const auto evaluate = [functions](const corvath::analysis::ConstPoints& x) {
    Eigen::MatrixXd values(x.rows(), static_cast<Eigen::Index>(functions.size()));
    for (Eigen::Index i = 0; i < values.rows(); ++i)
      for (Eigen::Index k = 0; k < values.cols(); ++k)
        values(i, k) = functions[static_cast<std::size_t>(k)].value(x.row(i).transpose());
    return values;
  };
  return corvath::analysis::FunctionModel(std::move(inputs), std::move(quantities), evaluate,
                                          std::move(correlations));
}

}  // namespace support
