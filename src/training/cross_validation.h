#pragma once

#include "metamodel/types.h"

#include <Eigen/Core>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace corvath::training {

/// The data of one response and how predictions of it are judged.
struct ResponseData {
  Eigen::MatrixXd points;                ///< n x m
  Eigen::VectorXd values;                ///< n
  math::metamodel::IndexVector groups;   ///< n: cross-validation groups
  math::metamodel::IndexVector singles;  ///< n: a label for each design; copies share one
  std::vector<std::size_t> num_levels;   ///< m: different values of each input
};

/// Designs that coincide in inputs and value share a group; measurements that were repeated, and
/// scatter, do not: they tell the noise.
/// @param num_groups, seed  see MakeGroups
ResponseData MakeResponseData(Eigen::MatrixXd points, Eigen::VectorXd values,
                              std::uint32_t num_groups, std::uint32_t seed);

/// The data of some rows.
ResponseData RowsOf(const ResponseData& data, const std::vector<Eigen::Index>& rows);

/// Number of different values.
std::size_t CountLevels(Eigen::VectorXd column);

/// `num_groups` groups of nearly equal size (as many as there are different points, if these are
/// fewer) in a random order that `seed` fixes on every machine. Points that coincide share a group:
/// a repeated design would predict itself.
math::metamodel::IndexVector MakeGroups(const Eigen::MatrixXd& points, std::uint32_t num_groups,
                                        std::uint32_t seed);

/// 1 - SSE / SST; NaN when a prediction is.
double Determination(const Eigen::VectorXd& values, const Eigen::VectorXd& predictions);

/// The rows of n that are not among `some`, which are in ascending order.
std::vector<Eigen::Index> RowsWithout(Eigen::Index n, const std::vector<Eigen::Index>& some);

}  // namespace corvath::training
