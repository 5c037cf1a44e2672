#include "doe/scheme.h"

#include "doe/box_behnken.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace corvath::math {
namespace {

constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t kMaxCoordinates = std::uint64_t{1} << 29;
constexpr std::uint64_t kBookkeeping = 3;  ///< the vector of one point, in doubles

struct Scheme {
  const wchar_t* text;
  std::uint64_t min_level;
};

constexpr std::array<Scheme, 23> kSchemes = {{
    {L"Center point", 1},
    {L"Full factorial", 2},
    {L"Axial points", 0},
    {L"Star points", 1},
    {L"Koshal", 1},
    {L"Central composite", 2},
    {L"Mixed terms", 2},
    {L"Latin Hypercube Sampling", 1},
    {L"Latin Hypercube Sampling Midpoint", 1},
    {L"Orthogonal Latin Hypercube Sampling", 1},
    {L"Sobol Sequence", 15},
    {L"Plain Monte Carlo", 1},
    {L"D-optimal customizable", 1},
    {L"D-optimal linear", 1},
    {L"D-optimal quadratic nomixed", 2},
    {L"D-optimal quadratic", 2},
    {L"Koshal linear", 1},
    {L"Koshal quadratic", 2},
    {L"Fekete points", 1},
    {L"Box-Behnken", 0},
    {L"Space filling Latin Hypercube Sampling", 10},
    {L"Full combinatorial", 0},
    {L"Advanced Latin Hypercube Sampling", 10},
}};

bool IsScheme(std::int32_t type) {
  return type >= 0 && type < static_cast<std::int32_t>(kSchemes.size());
}

/// A number of points, up to kTooMany, which stands for all that have more than 64 bits.
__extension__ typedef unsigned __int128 Wide;
constexpr Wide kTooMany = Wide{1} << 64;

Wide Plus(Wide a, Wide b) {
  return std::min(a + b, kTooMany);
}

Wide WideTimes(Wide a, Wide b) {
  return a != 0 && b > kTooMany / a ? kTooMany : a * b;
}

/// The dimensions of a sample: how many are continuous, and the sizes of the state lists.
class Dimensions {
 public:
  Dimensions(std::uint64_t count, const StateLists& state_lists) : continuous_(count) {
    if (!state_lists.empty() && state_lists.size() != count)
      throw std::invalid_argument(std::to_string(state_lists.size()) + " state lists for " +
                                  std::to_string(count) + " dimensions.");
    for (const auto& states : state_lists)
      if (states.size() != 0) sizes_.push_back(static_cast<std::uint64_t>(states.size()));
    continuous_ -= sizes_.size();
  }

  std::uint64_t Count() const { return continuous_ + sizes_.size(); }

  std::uint64_t Smallest() const {
    return sizes_.empty() ? kUnlimited : *std::min_element(sizes_.begin(), sizes_.end());
  }

  std::uint64_t Largest() const {
    return sizes_.empty() ? 0 : *std::max_element(sizes_.begin(), sizes_.end());
  }

  Wide Factorial(std::uint64_t level) const {
    Wide product = 1;
    for (const std::uint64_t size : sizes_) product = WideTimes(product, std::min(level, size));
    if (level <= 1) return product;
    for (std::uint64_t k = 0; k < continuous_ && product != kTooMany; ++k)
      product = WideTimes(product, level);
    return product;
  }

  /// A centre and `steps` other points along each axis.
  Wide Axes(Wide steps) const {
    Wide sum = Plus(1, WideTimes(continuous_, steps));
    for (const std::uint64_t size : sizes_) sum = Plus(sum, size > steps ? steps : size - 1);
    return sum;
  }

  Wide Pairs() const {
    const Wide d = Count();
    return d == 0 ? 0 : std::min(d * (d - 1) / 2, kTooMany);
  }

  /// 1.5 points for each of `terms` coefficients, as D-optimal samples take them.
  static Wide PerTerm(Wide terms) { return (3 * terms + 1) / 2; }

 private:
  std::uint64_t continuous_;
  std::vector<std::uint64_t> sizes_;  ///< of the discrete dimensions
};

void CheckDimensions(std::uint64_t d, std::uint64_t least, std::uint64_t most) {
  if (d >= least && d <= most) return;
  const bool few = d < least;
  throw std::domain_error("Number of Parameters (" + std::to_string(d) + ") does not fit the " +
                          (few ? "minimum" : "maximum") + " value for the choosen DOE method (" +
                          std::to_string(few ? least : most) + ").");
}

void CheckStates(const Dimensions& dimensions, const char* scheme) {
  if (dimensions.Smallest() < 3)
    throw std::domain_error(std::string(scheme) +
                            " requires at least 3 states for each parameter.");
}

std::string LevelTooHigh(std::uint64_t level, std::uint64_t maximum) {
  return "Discretisation level (" + std::to_string(level) +
         ") does not fit the maximum value for the choosen DOE method (" + std::to_string(maximum) +
         ").";
}

Wide Koshal(const Dimensions& dimensions, std::uint64_t degree) {
  if (degree == 1) return dimensions.Axes(1);
  if (degree > 2) throw std::domain_error(LevelTooHigh(degree, 2));
  CheckStates(dimensions, "Koshal quadratic");
  return Plus(dimensions.Axes(2), dimensions.Pairs());
}

Wide Count(std::int32_t type, const Dimensions& dimensions, std::uint64_t level) {
  const std::uint64_t d = dimensions.Count();
  switch (type) {
    case kCenterPoint:
      return 1;
    case kFullFactorial:
      return dimensions.Factorial(level);
    case kAxialPoints:
      return dimensions.Axes(level);
    case kStarPoints:
      return dimensions.Axes(WideTimes(2, level));
    case kKoshal:
      return Koshal(dimensions, level);
    case kKoshalLinear:
      return Koshal(dimensions, 1);
    case kKoshalQuadratic:
      return Koshal(dimensions, 2);
    case kCentralComposite:
      CheckDimensions(d, 2, kUnlimited);
      CheckStates(dimensions, "Central composite");
      return Plus(dimensions.Axes(2), dimensions.Factorial(2));
    case kMixedTerms:
      return dimensions.Pairs();
    case kDOptimalLinear:
      CheckDimensions(d, 0, 200);
      return std::min(Dimensions(d, {}).Factorial(2), Dimensions::PerTerm(Wide{d} + 1));
    case kDOptimalQuadraticNoMixed:
      CheckDimensions(d, 0, 75);
      CheckStates(dimensions, "D-optimal quadratic");
      return std::min(dimensions.Factorial(3), Dimensions::PerTerm(2 * Wide{d} + 1));
    case kDOptimalQuadratic:
      CheckDimensions(d, 0, 25);
      CheckStates(dimensions, "D-optimal quadratic");
      return std::min(dimensions.Factorial(3),
                      Dimensions::PerTerm(2 * Wide{d} + 1 + dimensions.Pairs()));
    case kBoxBehnken:
      CheckDimensions(d, 3, kUnlimited);
      CheckStates(dimensions, "Box & Behnken");
      return CountBoxBehnken(d) == kUnlimited ? kTooMany : CountBoxBehnken(d);
    case kFullCombinatorial:
      return dimensions.Factorial(std::max<std::uint64_t>(dimensions.Largest(), 2));
    default:  // the level is the number of points
      return level;
  }
}

/// Largest r with r^d of 64 bits.
std::uint64_t Root(std::uint64_t d) {
  if (d <= 1) return kUnlimited;
  std::uint64_t low = 1;
  std::uint64_t high = std::uint64_t{1} << 32;  // its square is 2^64
  while (high - low > 1) {
    const std::uint64_t middle = low + (high - low) / 2;
    std::uint64_t power = middle;
    bool fits = true;
    for (std::uint64_t k = 1; k < d && fits; ++k)
      fits = !__builtin_mul_overflow(power, middle, &power);
    (fits ? low : high) = middle;
  }
  return low;
}

}  // namespace

std::wstring SamplingTypeText(std::int32_t type) {
  return IsScheme(type) ? kSchemes[static_cast<std::size_t>(type)].text : L"";
}

std::optional<eSamplingType> SamplingTypeFromText(const std::wstring& text) {
  for (std::size_t i = 0; i < kSchemes.size(); ++i)
    if (text == kSchemes[i].text) return static_cast<eSamplingType>(i);
  return std::nullopt;
}

std::uint64_t NumDesigns(std::int32_t type, std::uint64_t dimensions, std::uint64_t level,
                         const StateLists& state_lists) {
  if (!IsScheme(type)) return 0;
  const std::uint64_t minimum = kSchemes[static_cast<std::size_t>(type)].min_level;
  if (level < minimum)
    throw std::domain_error("Discretisation level(" + std::to_string(level) +
                            ") does not fit the minimum value for the choosen DOE method (" +
                            std::to_string(minimum) + ").");
  const Wide count = Count(type, Dimensions(dimensions, state_lists), level);
  if (count == kTooMany) throw std::domain_error(LevelTooHigh(level, MaxLevel(type, dimensions)));
  return static_cast<std::uint64_t>(count);
}

std::uint64_t MaxLevel(std::int32_t type, std::uint64_t dimensions) {
  switch (type) {
    case kFullFactorial:
      return Root(dimensions);
    case kAxialPoints:
      return dimensions == 0 ? kUnlimited : (kUnlimited - 1) / dimensions;
    case kStarPoints:
      return dimensions == 0 ? kUnlimited : kUnlimited / 2 / dimensions;
    case kKoshal:
    case kCentralComposite:
    case kMixedTerms:
    case kDOptimalQuadraticNoMixed:
    case kDOptimalQuadratic:
    case kKoshalQuadratic:
      return 2;
    case kCenterPoint:
    case kDOptimalLinear:
    case kKoshalLinear:
      return 1;
    default:
      return IsScheme(type) ? kUnlimited : 0;
  }
}

void CheckSampleSize(std::uint64_t points, std::uint64_t dimensions) {
  if (WideTimes(points, Plus(dimensions, kBookkeeping)) > kMaxCoordinates)
    throw std::domain_error(
        "A sample of " + (points == kUnlimited ? "2^64 or more" : std::to_string(points)) +
        " points in " + std::to_string(dimensions) + " dimensions is too large.");
}

}  // namespace corvath::math
