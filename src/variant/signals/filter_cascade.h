#pragma once

#include "variant/value/variant.h"

#include <complex>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace corvath::math {

/// What stood in front of the first sample, at the input and the output of each section.
enum StartCondition : std::int32_t {
  kStartZero = 0,
  kStartConstant = 1,  ///< the first sample
};

/// @throws CFilterException  `start` is none
void RequireStartCondition(int start);

/// Recursive filter as a cascade of sections, each
///
///     y[k] = b0 w[k] + sum_j (b_j w[k-j] - a_j y[k-j])
///
/// whose output is the next one's input. Instantiated for double and std::complex<double>.
template <class Number>
class FilterCascade {
 public:
  /// @param numerators, denominators  sections x 3 or sections x 5, column j for z^-j; a section is
  ///        divided by its denominators' first entry. Of complex entries FilterCascade<double> takes
  ///        the real parts.
  /// @throws CTypeException  shapes differ or are none of these
  FilterCascade(const Value::Matrix& numerators, const Value::Matrix& denominators);

  /// Filters `count` samples in place, from `*first` on every `step`-th number, backward if that is
  /// negative. Takes O(count sections) time and no memory that grows with count.
  /// @param start  a StartCondition
  /// @throws CFilterException  `start` is none
  void Run(Number* first, std::size_t count, std::ptrdiff_t step, int start) const;

 private:
  struct Samples {
    Number* first;
    std::size_t count;
    std::ptrdiff_t step;
    Number before;  ///< in front of the first one, by the start condition
  };
  /// One walk over the samples through some sections from `r` on; gives their number.
  template <std::size_t kColumns>
  std::size_t RunGroup(const Samples& samples, std::size_t r) const;
  template <std::size_t kColumns>
  void RunSection(const Samples& samples, std::size_t r) const;
  template <std::size_t kColumns, std::size_t kPairs>
  void RunPairs(const Samples& samples, std::size_t r) const;

  std::size_t columns_;
  std::size_t sections_;
  std::vector<Number> b_;  ///< sections x columns
  std::vector<Number> a_;  ///< sections x columns
};

/// The real parts of one row of `data` in place, from the first sample on or from the last one.
void RunReal(const FilterCascade<double>& cascade, Value::Matrix& data, std::size_t channel,
             bool backward, int start);

namespace functions {

/// One forward run of the cascade of two MATRIX, each channel of the real signal for itself, on its
/// timeline and in its kind. Complex coefficients give a complex signal.
/// @param start  a StartCondition
void filter(Value& result, const Value& signal, const Value& numerators, const Value& denominators,
            int start);

}  // namespace functions
}  // namespace corvath::math
