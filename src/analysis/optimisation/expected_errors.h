#pragma once

#include "analysis/study_model.h"

#include <Eigen/Core>

#include <functional>

namespace corvath::analysis {

/// Standard errors to expect of the responses at the rows of `x` (n x R): root mean square of the
/// cross-validated residuals near the point, of the whole model where that is not known; else NaN.
Eigen::MatrixXd ResponseErrors(const StudyModel& model, const ConstPoints& x);

/// Standard errors of values that follow from responses, to first order, the errors of the responses
/// being independent: n x the columns of `values`.
/// @param values  from responses (n x R) to values (n x any)
Eigen::MatrixXd PropagateErrors(
    const Eigen::MatrixXd& responses, const Eigen::MatrixXd& response_errors,
    const std::function<Eigen::MatrixXd(const Eigen::MatrixXd& responses)>& values);

/// Standard errors of all quantities at the rows of `x`: n x q.
Eigen::MatrixXd QuantityErrors(const StudyModel& model, const ConstPoints& x);

}  // namespace corvath::analysis
