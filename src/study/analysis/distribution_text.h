#pragma once

#include "stochastics/random_variable.h"

#include <boost/shared_ptr.hpp>

#include <string>
#include <utility>

namespace corvath::study {

/// A distribution in a text: "normal(12, 0.6)". The type is one of the project's distributions in
/// small letters. The arguments are
///
/// - by name: all of the type's parameters, each by the last word of its name (`zel info` shows
/// them),
///   "lognormal(mu=2.5, s=0.05)"; or moments: "lognormal(mean=12, sd=0.6)", "gumbel(mean=3,
///   cov=0.1)";
/// - or without names: mean and standard deviation of normal, lognormal, gumbel, weibull, frechet
/// and
///   exponential, in other types all parameters, "uniform(10, 20)", "triangular(1, 2, 4)".
/// @throws Refusal  it is none
boost::shared_ptr<algorithm::RV> ParseDistribution(const std::string& text);

/// "NAME:DISTRIBUTION" in its two parts. @throws Refusal  it has not this form
std::pair<std::string, boost::shared_ptr<algorithm::RV>> ParseNamedDistribution(
    const std::string& text);

}  // namespace corvath::study
