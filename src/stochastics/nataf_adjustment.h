#pragma once

#include "stochastics/random_variable.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <vector>

namespace corvath::algorithm {

/// Correlations up to this magnitude pass unchanged, whatever the marginals.
constexpr double kNegligibleCorrelation = 1e-4;

/// The correlations of the standard normal variables that give `variables` the correlations
/// `matrix`: the closed forms of Der Kiureghian and Liu (1986) where there is one for the two
/// types, a numeric double integral for other continuous pairs. Not checked for being positive
/// definite.
/// @param matrix  a correlation matrix, one row per variable
/// @throws corvath::utils::runtime_error  a pair with a discrete variable, a correlation that the
///   marginals cannot have, or an integral equation that does not settle
Eigen::MatrixXd AdjustCorrelations(const std::vector<boost::shared_ptr<RV>>& variables,
                                   const Eigen::MatrixXd& matrix);

/// Density at (u, v) of two standard normal variables with the correlation `rho`.
/// @throws std::domain_error  |rho| above 1
double BivariateNormalPdf(double u, double v, double rho);

}  // namespace corvath::algorithm
