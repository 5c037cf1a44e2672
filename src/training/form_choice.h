#pragma once

#include "training/candidate_trials.h"

#include <Eigen/Core>

#include <cstddef>
#include <vector>

namespace corvath::training {

/// The choice among the best of each form, by the squared errors of honest predictions.
///
/// Of the forms whose errors are larger than those of the best by at most one standard error of the
/// paired differences, the simplest wins (L. Breiman, J. H. Friedman, R. A. Olshen, C. J. Stone,
/// "Classification and Regression Trees", 1984, section 3.4.3). The standard error is that of means
/// over groups whose models share most of their designs (C. Nadeau, Y. Bengio, "Inference for the
/// generalization error", Machine Learning 52, 2003, pp. 239-281). Errors more than twice as large are
/// larger in any case.
///
/// Simplest are forms that shrink what the data do not support by themselves: ridge regressions and
/// kriging with a nugget. Then come least squares, whose inputs were chosen one by one, and local
/// models; last, transforms of the response. Of equally simple forms the one of the least effective
/// coefficients wins, among those within a third of a standard error of the best of them. The
/// constant wins when no form is better by more than that.
/// @param finalists   F, the constant first
/// @param errors      n x F; a form with an error that is not finite does not win
/// @param num_groups  of the predictions; below 2 for those of designs that no model has seen
/// @returns the position of the winner
std::size_t ChooseForm(const std::vector<const Candidate*>& finalists,
                       const Eigen::MatrixXd& errors, std::size_t num_groups);

/// Of predictions (n x F) of `values` (n). Errors below 1e-9 of the range are rounding, and 0.
Eigen::MatrixXd SquaredErrors(const Eigen::VectorXd& values, const Eigen::MatrixXd& predicted);

}  // namespace corvath::training
