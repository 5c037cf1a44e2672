#include "variant/value/random_values.h"

#include "foundation/constants.h"
#include "variant/operators/entrywise.h"

#include <boost/random/exponential_distribution.hpp>
#include <boost/random/normal_distribution.hpp>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace corvath::math {

namespace {

using Generator = boost::random::mt19937;
using Draw = std::function<double()>;

/// Uniform on [0, 1): the generator's 32 bits as a fraction.
double UnitUniform(Generator& generator) {
  return generator() * 0x1p-32;
}

std::vector<double> RealParameters(const Value& parameters, std::size_t count) {
  if (parameters.Size() != count || parameters.IsComplex())
    throw CCompatibilityException(std::to_string(count) + " real Parameters expected.");
  std::vector<double> result;
  for (const auto& z : parameters.GetVector()) result.push_back(z.real());
  return result;
}

Draw Uniform(double a, double b, Generator& generator) {
  if (!(a < b)) throw CDomainException("Second parameter must be equal or greater than first one.");
  return [a, b, &generator] {
    for (;;) {
      // By halves, so that the length of the interval does not overflow.
      const double x = 2.0 * (0.5 * a + UnitUniform(generator) * (0.5 * b - 0.5 * a));
      if (!(x >= b) || std::isinf(b)) return x;  // rounding may reach b
    }
  };
}

/// @param scale  of the standard normal draws
Draw Normal(double mean, double scale, Generator& generator) {
  if (IsZero(scale)) throw CDomainException("Second parameter must not be zero.");
  return [mean, scale, &generator, normal = boost::random::normal_distribution<>()]() mutable {
    return mean + scale * normal(generator);
  };
}

Draw Lognormal(double mean, double scale, Generator& generator) {
  return [normal = Normal(mean, scale, generator)] { return std::exp(normal()); };
}

/// Inverse of the distribution function.
Draw Triangle(double a, double b, double c, Generator& generator) {
  if (!(a <= b && b <= c)) throw CDomainException("Parameter must ascend from first to last.");
  return [a, b, c, &generator] {
    const double u = UnitUniform(generator);
    if (a == c) return a;
    return u < (b - a) / (c - a) ? a + std::sqrt(u * (c - a) * (b - a))
                                 : c - std::sqrt((1.0 - u) * (c - a) * (c - b));
  };
}

Draw Cauchy(double median, double scale, Generator& generator) {
  return [median, scale, &generator] {
    return median + scale * std::tan(kPi * (UnitUniform(generator) - 0.5));
  };
}

Draw Exponential(double rate, Generator& generator) {
  if (!(rate > 0.0)) throw CDomainException("Parameter must be greater than zero.");
  return [rate, &generator, unit = boost::random::exponential_distribution<>()]() mutable {
    return unit(generator) / rate;
  };
}

Draw MakeDraw(int distribution, const Value& parameters, Generator& generator) {
  switch (distribution) {
    case kUniform: {
      const auto p = RealParameters(parameters, 2);
      return Uniform(p[0], p[1], generator);
    }
    case kNormal: {
      const auto p = RealParameters(parameters, 2);
      return Normal(p[0], p[1], generator);
    }
    case kLognormal: {
      const auto p = RealParameters(parameters, 2);
      return Lognormal(p[0], p[1], generator);
    }
    case kTriangle: {
      const auto p = RealParameters(parameters, 3);
      return Triangle(p[0], p[1], p[2], generator);
    }
    case kCauchy: {
      const auto p = RealParameters(parameters, 2);
      return Cauchy(p[0], p[1], generator);
    }
    case kExponential: {
      const auto p = RealParameters(parameters, 1);
      return Exponential(p[0], generator);
    }
    default:
      throw CTypeException("Illegal distribution type.");
  }
}

}  // namespace

void functions::rand(Value& result, const Value& x, int distribution, const Value& parameters,
                     boost::random::mt19937& generator) {
  if (x.IsBoolean())
    throw CTypeException("Illegal type. Only non BOOLEAN types allowed in function random");
  if (x.IsUninitialized()) throw CTypeException("Illegal input type.");
  if (!parameters.IsVector()) throw CTypeException("Vector of Parameters expected.");
  const Draw draw = MakeDraw(distribution, parameters, generator);
  result = entrywise::Map(x, [&draw](const Value::Complex&) { return Value::Complex(draw()); });
}

}  // namespace corvath::math
