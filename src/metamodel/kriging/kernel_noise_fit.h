#pragma once

#include <Eigen/Core>

#include <functional>

namespace corvath::math::metamodel {

/// Radii of the exponential kernel, one for all inputs or one for each, and the nugget.
struct KernelWithNoise {
  Eigen::VectorXd radii;
  double nugget = 0.0;  ///< variance of the noise over that of the process
  /// Negative log of the restricted likelihood times the prior; infinity where none was found.
  double objective = 0.0;
};

/// Kernel and nugget for data with noise of unknown size, by the restricted likelihood
/// (C. E. Rasmussen, C. K. I. Williams, "Gaussian Processes for Machine Learning", MIT Press, 2006,
/// sections 2.7 and 5.4) with its gradient, quasi-Newton from a smooth and a rough start.
///
/// Radii that few data do not determine are drawn to long ones, nearly linear, by a log-normal prior
/// that grows with the number of inputs (C. Hvarfner, E. O. Hellsten, L. Nardi, "Vanilla Bayesian
/// optimization performs great in high dimensions", ICML 2024), relative to the spread of each input,
/// and to each other, unless data say that inputs differ. The nugget lies between 1e-8 and
/// 1e4: all is noise.
/// @param points  N x r, each column scaled to [0, 1]
/// @param values  N
/// O(N^3 + N^2 r) for each of some 20 to 80 evaluations.
KernelWithNoise FitKernelWithNoise(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                                   bool is_anisotropic,
                                   const std::function<void()>& interruption_point);

}  // namespace corvath::math::metamodel
