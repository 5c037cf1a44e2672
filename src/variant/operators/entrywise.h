#pragma once

#include "foundation/math_exception.h"
#include "variant/value/variant.h"

#include <algorithm>
#include <cstddef>
#include <utility>

/// Building blocks of the operators and functions that work number by number. Internal.
namespace corvath::math::entrywise {

constexpr const char* kInvalidKind = "Input object has invalid datatype.";

/// `data` on the timeline of `signal`, as a value of its kind.
Value WithData(const Value& signal, Value::Matrix& data);

template <class F>
Value::Vector Map(const Value::Vector& x, F f) {
  Value::Vector result(x.size());
  std::transform(x.data().begin(), x.data().end(), result.data().begin(), f);
  return result;
}

template <class F>
Value::Matrix Map(const Value::Matrix& x, F f) {
  Value::Matrix result(x.size1(), x.size2());
  std::transform(x.data().begin(), x.data().end(), result.data().begin(), f);
  return result;
}

/// `f` of every number of the data; kind and timeline stay.
/// @throws CTypeException BOOLEAN or UNINITIALIZED
template <class F>
Value Map(const Value& x, F f) {
  switch (x.GetKind()) {
    case Value::SCALAR:
      return Value(f(x.GetScalar()));
    case Value::VECTOR:
      return Value(Map(x.GetVector(), f));
    case Value::MATRIX:
      return Value(Map(x.GetMatrix(), f));
    case Value::SIGNAL:
    case Value::XYDATA: {
      Value::Matrix data = Map(x.GetMatrix(), f);
      return WithData(x, data);
    }
    default:
      throw CTypeException(kInvalidKind);
  }
}

/// `f` of the pairs of numbers of two arrays of one length.
template <class F>
Value::Vector Zip(const Value::Vector& x, const Value::Vector& y, F f) {
  Value::Vector result(x.size());
  std::transform(x.data().begin(), x.data().end(), y.data().begin(), result.data().begin(), f);
  return result;
}

template <class F>
Value::Matrix Zip(const Value::Matrix& x, const Value::Matrix& y, F f) {
  Value::Matrix result(x.size1(), x.size2());
  std::transform(x.data().begin(), x.data().end(), y.data().begin(), result.data().begin(), f);
  return result;
}

/// Whether rows and columns agree.
inline bool SameSize(const Value::Matrix& x, const Value::Matrix& y) {
  return x.size1() == y.size1() && x.size2() == y.size2();
}

}  // namespace corvath::math::entrywise
