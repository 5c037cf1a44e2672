#pragma once

#include <Eigen/Core>

#include <cstdint>
#include <random>

namespace literature {

/// n x d numbers, uniform in [0, 1) and the same on every machine.
inline Eigen::MatrixXd UniformPoints(Eigen::Index n, Eigen::Index d, std::uint64_t seed) {
  std::mt19937_64 random(seed);
  return Eigen::MatrixXd::NullaryExpr(n, d, [&random] { return double(random() >> 11) * 0x1p-53; });
}

/// n numbers, uniform in [0, 1).
inline Eigen::VectorXd UniformVector(Eigen::Index n, std::uint64_t seed) {
  return UniformPoints(n, 1, seed);
}

}  // namespace literature
