#pragma once

#include "metamodel/types.h"
#include "training/cross_validation.h"

#include <Eigen/Core>

#include <vector>

namespace corvath::training {

/// Explained share of the variance by a quadratic in a growing set of inputs.
struct ForwardStep {
  math::metamodel::BitVector inputs;
  double determination;  ///< adjusted for the number of coefficients if that was asked for
};

/// Takes inputs in one after the other, always the one that explains most together with those
/// before: with its first and second power and its products with them. So an input shows that is
/// drowned by the interactions of others in a regression of all inputs. Ends where the next step is
/// not significant at `min_significance`, or has more coefficients than half the designs; has one
/// step at least, or none for fewer than six designs.
std::vector<ForwardStep> SelectForward(const ResponseData& data, bool adjusted,
                                       double min_significance);

/// For each input the significance (F test) of a polynomial that it brings for `values` (n): its
/// first and second power, and its products with `partners` and with their squares. The probability
/// that noise explains less; 0 for the partners themselves.
Eigen::VectorXd SignificancesOfInputs(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                                      const math::metamodel::BitVector& partners);

}  // namespace corvath::training
