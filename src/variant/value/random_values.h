#pragma once

#include "variant/value/variant.h"

#include <boost/random/mersenne_twister.hpp>

namespace corvath::math {

/// Distributions of `rand` by number.
enum RandomDistribution {
  kUniform = 0,      ///< a, b: on [a, b)
  kNormal = 1,       ///< mean, standard deviation
  kLognormal = 2,    ///< mean and standard deviation of the logarithm
  kTriangle = 3,     ///< lower end, mode, upper end
  kCauchy = 4,       ///< median, scale
  kExponential = 5,  ///< rate
};

namespace functions {

/// Independent real draws in the shape of `x`, on its timeline if it has one.
/// @param distribution  a RandomDistribution
/// @param parameters    VECTOR of its real parameters
void rand(Value& result, const Value& x, int distribution, const Value& parameters,
          boost::random::mt19937& generator);

}  // namespace functions
}  // namespace corvath::math
