#pragma once

#include "analysis/study_model.h"

#include <functional>

namespace corvath::analysis {

/// A study of plain functions in the place of models: exact, without designs.
class FunctionModel : public StudyModel {
 public:
  /// All quantities at the rows of x (n x m): n x q. Called from several threads.
  using Function = std::function<Eigen::MatrixXd(const ConstPoints& x)>;

  /// @param inputs, quantities, correlations  see Describe
  FunctionModel(std::vector<StudyInput> inputs, std::vector<StudyQuantity> quantities,
                Function function, Eigen::MatrixXd correlations = {});

  /// Lets the responses have errors, as if they were predicted; the criteria are then asked for at
  /// responses that the function did not give. @param criteria  n x (q - R) at x and the responses
  void SetErrors(
      Eigen::VectorXd standard_errors,
      std::function<Eigen::MatrixXd(const ConstPoints& x, const ConstPoints& responses)> criteria);

  Eigen::MatrixXd Responses(const ConstPoints& x) const override;
  Eigen::MatrixXd Criteria(const ConstPoints& x, const ConstPoints& responses) const override;
  Eigen::VectorXd StandardErrors() const override { return standard_errors_; }
  Eigen::MatrixXd LocalErrors(Eigen::Index response, const ConstPoints& x) const override;
  const StudyDesigns& GetDesigns() const override { return designs_; }

 private:
  Function function_;
  std::function<Eigen::MatrixXd(const ConstPoints&, const ConstPoints&)> criteria_;
  Eigen::VectorXd standard_errors_;
  StudyDesigns designs_;
};

}  // namespace corvath::analysis
