#pragma once

#include "variant/value/variant.h"

#include <cstdint>
#include <vector>

/// Functions that reduce the data of a value. `result` is written on success alone and may be an
/// argument. BOOLEAN and UNINITIALIZED raise CTypeException.
namespace corvath::math::functions {

/// Smallest entry of a real value. Of a signal a MATRIX of one row {abscissa, minimum} for each
/// channel, of XYDATA this row as a VECTOR; the first of equal ones counts.
/// @throws CDimensionException there are no entries
void min(Value& result, const Value& x);
void max(Value& result, const Value& x);
/// Smallest of real SCALARs. No argument gives UNINITIALIZED, one is min(x).
void min(Value& result, const std::vector<Value>& arguments);
void max(Value& result, const std::vector<Value>& arguments);

/// Sum of a VECTOR or of XYDATA, VECTOR of the row sums of a MATRIX or SIGNAL.
void sum(Value& result, const Value& x);
/// sum(x) by the number of entries that each sum has.
void mean(Value& result, const Value& x);
/// sqrt(sum |x_i - mean|^2 / (n - 1)), in the shape of sum(x); 0 for n below 2.
void stddev(Value& result, const Value& x);
/// (sum |x_i|^n)^(1/n) over all entries of the data.
void norm(Value& result, const Value& x, std::uint64_t n);
void euklidnorm(Value& result, const Value& x);

}  // namespace corvath::math::functions
