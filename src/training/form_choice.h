#pragma once

#include "training/finalist.h"

#include <Eigen/Core>

#include <cstddef>

namespace corvath::training {

/// The choice among forms, by the squared errors of honest predictions.
///
/// One of them is taken unless another is better beyond doubt: the best has errors smaller than its by
/// more than 1 + 40 / n standard errors of the paired differences, or its are 1 + 100 / n times as
/// large (n designs). Where designs are
/// few, the best of many owes its place to luck, and a form that shrinks what the data do not support
/// predicts better than what was chosen. The standard error is that of means over groups whose models
/// share most of their designs (C. Nadeau, Y. Bengio, "Inference for the generalization error",
/// Machine Learning 52, 2003, pp. 239-281). The constant wins only where it is better than the one
/// that was chosen by more than a standard error.
/// @param errors      n x F, those of the constant first; a form with an error that is not finite
///                    does not win
/// @param robust      position of the one that is taken; 0 for none
/// @param num_groups  of the predictions; below 2 for those of designs that no model has seen
/// @returns the position of the winner
std::size_t Choose(const Eigen::MatrixXd& errors, std::size_t robust, std::size_t num_groups);

/// The form to be taken where nothing is better beyond doubt, over all inputs: kriging with a radius for
/// each; without it, kriging with one radius; without that, ridge regression of order 1. 0 for none.
std::size_t FindRobust(const Finalists& finalists);

/// The position of a form over all inputs; 0 where it is not there.
std::size_t FindWhole(const Finalists& finalists, const CandidateForm& form);

/// Whether these squared errors are smaller than those of the constant by more than a standard error;
/// otherwise nothing is known but the mean.
bool IsBetterThanConstant(const Eigen::VectorXd& errors, const Eigen::VectorXd& of_constant,
                          std::size_t num_groups);

/// Of predictions (n x F) of `values` (n). Errors below 1e-9 of the range are rounding, and 0.
/// A form that fails at one design has infinite errors at all: it wins nowhere, without that design's
/// group neither.
Eigen::MatrixXd SquaredErrors(const Eigen::VectorXd& values, const Eigen::MatrixXd& predicted);

}  // namespace corvath::training
