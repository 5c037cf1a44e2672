#include "analysis/optimisation/expected_errors.h"

#include "metamodel/local_errors.h"

#include <cmath>

namespace corvath::analysis {

Eigen::MatrixXd ResponseErrors(const StudyModel& model, const ConstPoints& x) {
  Eigen::MatrixXd errors(x.rows(), model.GetNumResponses());
  const Eigen::VectorXd overall = model.StandardErrors();
  for (Eigen::Index k = 0; k < errors.cols(); ++k) {
    errors.col(k) = model.LocalErrors(k, x).col(math::metamodel::ErrorColumn::kRootMeanSquareError);
    for (double& error : errors.col(k))
      if (!std::isfinite(error)) error = overall(k);
  }
  return errors;
}

Eigen::MatrixXd PropagateErrors(
    const Eigen::MatrixXd& responses, const Eigen::MatrixXd& response_errors,
    const std::function<Eigen::MatrixXd(const Eigen::MatrixXd& responses)>& values) {
  Eigen::MatrixXd squares = Eigen::MatrixXd::Zero(responses.rows(), values(responses).cols());
  for (Eigen::Index k = 0; k < responses.cols(); ++k) {
    Eigen::MatrixXd above = responses, below = responses;
    above.col(k) += response_errors.col(k);
    below.col(k) -= response_errors.col(k);
    squares += (0.5 * (values(above) - values(below))).cwiseAbs2();
  }
  return squares.cwiseSqrt();
}

Eigen::MatrixXd QuantityErrors(const StudyModel& model, const ConstPoints& x) {
  const Eigen::MatrixXd response_errors = ResponseErrors(model, x);
  Eigen::MatrixXd errors(x.rows(), model.GetNumQuantities());
  errors.leftCols(response_errors.cols()) = response_errors;
  if (errors.cols() > response_errors.cols())
    errors.rightCols(errors.cols() - response_errors.cols()) = PropagateErrors(
        model.Responses(x), response_errors,
        [&](const Eigen::MatrixXd& responses) { return model.Criteria(x, responses); });
  return errors;
}

}  // namespace corvath::analysis
