#pragma once

#include "optimizer/settings_nlpqlp.h"

#include <Eigen/Core>

#include <vector>

namespace corvath::algorithm::optimizer {

/// Gradients from the plane of least squares through the designs that succeeded: with all of them
/// good the usual difference quotients of the central, forward and backward type.
///
/// @param type       sets the reference of each input: its middle, smallest or largest value
/// @param designs    one row per design
/// @param responses  one row per design, one column per response
/// @param success    one bit per design; at least one is set
/// @param step       step of each input; the largest is the unit of the fit
/// @return one row per response; 0 for an input that does not vary
/// @throws utils::runtime_error  the designs do not determine the plane
Eigen::MatrixXd PlaneGradients(NumericalDifferences type, const Eigen::MatrixXd& designs,
                               const Eigen::MatrixXd& responses, const std::vector<bool>& success,
                               const Eigen::VectorXd& step);

/// Fourth-order differences of responses at x - 2h, x - h, x + h, x + 2h, input by input.
///
/// @param values   responses, one row per design: 4 rows per input
/// @param success  one bit per design
/// @param centre   the response at x itself
/// @param step     h of each input
/// @param lenient  with failed designs, average the one-sided quotients of the others; otherwise
///                 use whatever the rows hold
/// @param gradient out
/// @return false if all designs of an input failed and `lenient` is set
bool FivePointGradient(const Eigen::VectorXd& values, const std::vector<bool>& success,
                       double centre, const Eigen::VectorXd& step, bool lenient,
                       Eigen::VectorXd& gradient);

}  // namespace corvath::algorithm::optimizer
