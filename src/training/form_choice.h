#pragma once

#include "training/finalist.h"

#include <Eigen/Core>

#include <cstddef>

namespace corvath::training {

/// The choice among the finalists, by the squared errors of honest predictions.
///
/// Of those whose errors are larger than those of the best by at most one standard error of the paired
/// differences (one and a half up to 150 designs), the plainest win (L. Breiman, J. H. Friedman,
/// R. A. Olshen, C. J. Stone, "Classification and Regression Trees", 1984, section 3.4.3). The
/// standard error is that of means over groups whose models share most of their designs (C. Nadeau,
/// Y. Bengio, "Inference for the generalization error", Machine Learning 52, 2003, pp. 239-281).
/// Errors more than twice as large are larger in any case.
///
/// Plainest is the ridge regression of order 1 over all inputs; then comes kriging with a nugget over
/// all inputs, which returns to the mean where designs are far; then other forms that shrink what the
/// data do not support, of order 2 and over inputs that were chosen; then least squares and local
/// models; last, transforms of the response. Of
/// equally plain ones that of the least effective coefficients wins, among those within a third of a
/// standard error of the best of them. The constant wins only where it is better than that one by
/// more than a standard error: on tables with a weak signal a model that shrinks is the better choice.
/// @param errors      n x F; a finalist with an error that is not finite does not win
/// @param num_groups  of the predictions; below 2 for those of designs that no model has seen
/// @returns the position of the winner
std::size_t Choose(const Finalists& finalists, const Eigen::MatrixXd& errors,
                   std::size_t num_groups);

/// Whether these squared errors are smaller than those of the constant by more than a standard error;
/// otherwise nothing is known but the mean.
bool IsBetterThanConstant(const Eigen::VectorXd& errors, const Eigen::VectorXd& of_constant,
                          std::size_t num_groups);

/// Of predictions (n x F) of `values` (n). Errors below 1e-9 of the range are rounding, and 0.
Eigen::MatrixXd SquaredErrors(const Eigen::VectorXd& values, const Eigen::MatrixXd& predicted);

}  // namespace corvath::training
