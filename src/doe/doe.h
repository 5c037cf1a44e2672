#pragma once

#include "archive/serialization.h"
#include "doe/scheme.h"

#include <Eigen/Core>
#include <boost/random/mersenne_twister.hpp>

#include <cstdint>
#include <vector>

namespace corvath::math {

/// Designs of experiments: points in a hypercube, one row per point. A continuous dimension has
/// coordinates in [-1, 1], a discrete one the numbers of its state list.
///
/// The random schemes draw from a Mersenne Twister that belongs to the object and is stored with
/// it: a loaded DOE continues where the stored one stopped. State lists are not stored; after a
/// load every dimension is continuous.
class DOE {
 public:
  using Designs = std::vector<std::vector<double>>;

  DOE();  ///< no dimensions; seeded by the clock, in seconds
  explicit DOE(std::uint32_t seed);
  /// @throws std::invalid_argument  state lists for another number of dimensions, or a state that
  ///                                is not finite
  DOE(std::uint64_t dimensions, std::uint32_t seed, StateLists state_lists = {});
  /// The rows of `matrix` as designs, all dimensions continuous.
  DOE(const Eigen::Ref<const Eigen::MatrixXd>& matrix, std::uint32_t seed);

  /// Adds the points of the scheme `type` (eSamplingType). `level` is a discretisation level, a
  /// polynomial degree or a number of points, as the scheme wants it. Without `append` the designs
  /// are cleared first. Without dimensions nothing happens; for a number that is no scheme, nothing
  /// beyond the clearing. Axial and star points and Koshal designs of degree 1 sort all designs and
  /// keep one of equal ones. A refusal leaves the designs and the generator as they were.
  ///
  /// Fekete points cost up to 500 n^2 d steps, orthogonal samples n d^2 and d^3 for each trial; what
  /// the other schemes do beyond writing their points is bounded.
  /// @throws std::domain_error  the level, dimensions or states do not fit, or the sample is too
  ///                            large to be held (CheckSampleSize)
  /// @throws std::logic_error   a D-optimal scheme, or Sobol points beyond their sequence
  void Build(std::int32_t type, std::uint64_t level, bool append);

  /// Appends a midpoint Latin hypercube of n points with small correlations: the best of
  /// 2 * trials random ones, then up to 2 * trials decorrelations, alternately by Cholesky factor
  /// (after R. L. Iman, W. J. Conover, Communications in Statistics B11, 1982, pp. 311-334) and by
  /// symmetric square root, each followed by ranking, until no correlation exceeds `tolerance`.
  void BuildOrthogonal(std::uint64_t n, std::uint64_t trials, double tolerance);

  /// An orthogonal Latin hypercube whose entries are exchanged within columns until its points fill
  /// the space better: by the centered discrepancy, or, with discrete dimensions or designs from
  /// before, which stay, by the repulsion of points. Above 20 dimensions or 4999 points it stays
  /// orthogonal.
  void BuildSpaceFilling(std::uint64_t n, bool append);

  /// Appends an orthogonal Latin hypercube whose correlations, together with those of the designs
  /// from before, are lowered further by exchanges.
  void BuildAdvanced(std::uint64_t n);

  std::uint64_t GetDim() const { return numdimensions_; }
  const Designs& GetDesigns() const { return designs_; }

  /// The designs, one row per point.
  Eigen::MatrixXd GetMatrix() const;

  /// Replaces the designs. State lists stay when the number of columns does; with another number
  /// every dimension is continuous.
  void SetMatrix(const Eigen::Ref<const Eigen::MatrixXd>& matrix);

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  ZEL_SPLIT_SERIALIZE()

  void BuildSequence(std::int32_t type, std::uint64_t n, bool append);
  void BuildRandom(std::int32_t type, std::uint64_t n);
  void BuildSobol(std::uint64_t n);
  void MapStates(std::uint64_t first_row);
  bool HasStates() const;
  void CheckNewPoints(std::uint64_t n) const;
  void SetRows(const Eigen::MatrixXd& matrix);

  std::uint64_t numdimensions_ = 0;
  Designs designs_;         ///< each with numdimensions_ numbers
  StateLists state_lists_;  ///< one for each dimension
  boost::random::mt19937 generator_;
};

}  // namespace corvath::math

ZEL_EXPORT_KEY(corvath::math::DOE, "::corvath::math::DOE")
