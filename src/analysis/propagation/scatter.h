#pragma once

#include "analysis/input_space.h"
#include "analysis/study_model.h"

#include <Eigen/Core>

#include <string>
#include <vector>

namespace corvath::analysis {

/// What scatters: the inputs of an InputSpace and, if wanted, the errors of the models. An error is
/// normal with the standard error of the response, independent of inputs and other errors. All of
/// it in standard normal coordinates u: first those of the inputs, then one of each response with
/// an error.
class Scatter {
 public:
  /// Refers to its arguments. @param with_errors  the models' errors scatter, too
  Scatter(const StudyModel& model, const InputSpace& space, bool with_errors);

  Eigen::Index GetDim() const {
    return space_.GetDim() + static_cast<Eigen::Index>(erring_.size());
  }
  /// Of each coordinate what it stands for: an input, or "error of RESPONSE".
  std::vector<std::wstring> GetNames() const;
  /// Responses whose error is not known, so that none is added.
  const std::vector<std::wstring>& GetUnknownErrors() const { return unknown_; }
  bool HasDiscrete() const { return space_.HasDiscrete(); }
  const StudyModel& GetModel() const { return model_; }

  /// All inputs at the rows of `u`: n x m.
  Eigen::MatrixXd Inputs(const ConstPoints& u) const;
  /// All quantities at the rows of `u` (n x GetDim()): n x q.
  Eigen::MatrixXd Evaluate(const ConstPoints& u) const;

 private:
  const StudyModel& model_;
  const InputSpace& space_;
  std::vector<Eigen::Index> erring_;  ///< responses with an error
  Eigen::VectorXd errors_;            ///< their standard errors
  std::vector<std::wstring> unknown_;
};

/// Whether a limit of value `g` is violated: negative beyond rounding.
bool IsViolated(double g);

}  // namespace corvath::analysis
