#pragma once

#include "doe/random_draws.h"

#include <Eigen/Core>

namespace corvath::math {

/// Exchanges entries within columns of points in [-1, 1]^d, one row each, so that the squared centered
/// L2 discrepancy falls (F. J. Hickernell, "A generalized discrepancy and quadrature error bound",
/// Mathematics of Computation 67, 1998, pp. 299-322): `passes` times 100 steps, each of which makes
/// the best of 50 random exchanges if it helps. The update of the discrepancy by an exchange is after
/// R. Jin, W. Chen, A. Sudjianto, "An efficient algorithm for constructing optimal design of computer
/// experiments", Journal of Statistical Planning and Inference 134, 2005, pp. 268-287. Needs n >= 2.
/// Takes O(n^2 d) time to begin with, O(n) for each exchange, and n^2 doubles.
Eigen::MatrixXd LowerDiscrepancy(Engine engine, const Eigen::MatrixXd& points, int passes);

/// Exchanges entries within columns of all rows but the first `fixed` ones, so that the sum over
/// pairs of points of 1 / (squared distance + 1e-10) falls: `iterations` random exchanges, each
/// kept if it helps. Takes n (n - fixed) doubles, and O(n) time for each exchange.
Eigen::MatrixXd LowerEnergy(Engine engine, const Eigen::MatrixXd& points, Eigen::Index fixed,
                            int iterations);

}  // namespace corvath::math
