#pragma once

#include <Eigen/Core>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvath::math {

/// The allowed numbers of each dimension, ascending; an empty vector is a continuous dimension with
/// coordinates in [-1, 1]. No vectors at all: every dimension is continuous.
using StateLists = std::vector<Eigen::VectorXd>;

/// How DOE places its points. The numbers are those of stored settings.
enum eSamplingType : std::int32_t {
  kCenterPoint = 0,
  kFullFactorial = 1,
  kAxialPoints = 2,
  kStarPoints = 3,
  kKoshal = 4,
  kCentralComposite = 5,
  kMixedTerms = 6,
  kLatinHypercube = 7,
  kLatinHypercubeMidpoint = 8,
  kOrthogonalLatinHypercube = 9,
  kSobolSequence = 10,
  kPlainMonteCarlo = 11,
  kDOptimalCustomizable = 12,  ///< named in settings; DOE cannot build the D-optimal ones
  kDOptimalLinear = 13,
  kDOptimalQuadraticNoMixed = 14,
  kDOptimalQuadratic = 15,
  kKoshalLinear = 16,
  kKoshalQuadratic = 17,
  kFeketePoints = 18,
  kBoxBehnken = 19,
  kSpaceFillingLatinHypercube = 20,
  kFullCombinatorial = 21,
  kAdvancedLatinHypercube = 22,
  kNoSampling = 23,  ///< valid, builds nothing, has no text
};

/// "Sobol Sequence" for 10; empty for a number without a text.
std::wstring SamplingTypeText(std::int32_t type);

/// The reverse, letter by letter.
std::optional<eSamplingType> SamplingTypeFromText(const std::wstring& text);

/// Number of points of a scheme, `level` being its discretisation level, polynomial degree or
/// number of points. 0 for a number that is no scheme.
/// @throws std::domain_error      the level, the number of dimensions or the number of states does
///                                not fit the scheme, or the number has more than 64 bits
/// @throws std::invalid_argument  state lists for another number of dimensions
std::uint64_t NumDesigns(std::int32_t type, std::uint64_t dimensions, std::uint64_t level,
                         const StateLists& state_lists = {});

/// The largest level whose number of points has 64 bits at most; where the level is a polynomial
/// degree, the largest degree; where it has no effect, 2^64 - 1. 0 for a number that is no scheme.
std::uint64_t MaxLevel(std::int32_t type, std::uint64_t dimensions);

/// Refuses what could only exhaust the memory: more than 2^29 coordinates (4 GiB), counting three
/// for the bookkeeping of each point.
/// @throws std::domain_error "A sample of P points in D dimensions is too large."
void CheckSampleSize(std::uint64_t points, std::uint64_t dimensions);

}  // namespace corvath::math
