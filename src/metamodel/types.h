#pragma once

#include <Eigen/Core>

#include <cstdint>
#include <vector>

namespace corvath::math::metamodel {

/// One bit per input or term.
using BitVector = std::vector<bool>;

/// Cross-validation group of each support point.
using IndexVector = Eigen::Matrix<std::uint64_t, Eigen::Dynamic, 1>;

/// One point, also a row of a point set seen in place: `points.row(i).transpose()`.
using ConstPoint = Eigen::Ref<const Eigen::VectorXd, 0, Eigen::InnerStride<>>;

/// A point set, one row per point, or any block of its rows.
using ConstPoints = Eigen::Ref<const Eigen::MatrixXd>;

}  // namespace corvath::math::metamodel
