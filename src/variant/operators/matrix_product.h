#pragma once

#include "variant/value/variant.h"

/// Sums of products without conjugation; the sizes must fit. Internal.
namespace corvath::math {

/// sum_i a_i b_i.
Value::Complex Product(const Value::Vector& a, const Value::Vector& b);
Value::Vector Product(const Value::Vector& a, const Value::Matrix& b);  ///< row vector times b
Value::Vector Product(const Value::Matrix& a, const Value::Vector& b);  ///< a times column vector
/// @throws CDimensionException more than kMaxEntries numbers
Value::Matrix Product(const Value::Matrix& a, const Value::Matrix& b);

}  // namespace corvath::math
