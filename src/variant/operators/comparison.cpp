#include "foundation/closeness.h"
#include "foundation/math_exception.h"
#include "variant/value/variant.h"

#include <algorithm>

namespace corvath::math {

namespace {

/// Equality by the kinds; `equal` compares two real numbers.
template <class T, class Equal>
bool Compare(const Variant<T>& a, const Variant<T>& b, Equal equal) {
  using V = Variant<T>;
  const auto equal_entries = [&](const auto& x, const auto& y) {
    return std::equal(x.begin(), x.end(), y.begin(), [&](const auto& p, const auto& q) {
      return equal(p.real(), q.real()) && equal(p.imag(), q.imag());
    });
  };
  const auto equal_vectors = [&] {
    return a.GetVector().size() == b.GetVector().size() &&
           equal_entries(a.GetVector().data(), b.GetVector().data());
  };
  const auto equal_matrices = [&] {
    return a.GetMatrix().size1() == b.GetMatrix().size1() &&
           a.GetMatrix().size2() == b.GetMatrix().size2() &&
           equal_entries(a.GetMatrix().data(), b.GetMatrix().data());
  };

  if (a.GetKind() != b.GetKind()) {
    if (a.IsScalar() && b.IsBoolean()) return Compare(b, a, equal);
    return a.IsBoolean() && b.IsScalar() && !b.IsComplex() &&
           equal(a.GetBoolean() ? T(1) : T(0), b.GetScalar().real());
  }
  switch (a.GetKind()) {
    case V::UNINITIALIZED:
      return true;
    case V::BOOLEAN:
      return a.GetBoolean() == b.GetBoolean();
    case V::SCALAR:
      return equal(a.GetScalar().real(), b.GetScalar().real()) &&
             equal(a.GetScalar().imag(), b.GetScalar().imag());
    case V::VECTOR:
      return equal_vectors();
    case V::MATRIX:
      return equal_matrices();
    case V::SIGNAL:
    case V::XYDATA:
      return equal_matrices() && equal_vectors();
  }
  throw CTypeException("Unknown type.");
}

}  // namespace

template <class T>
bool operator==(const Variant<T>& a, const Variant<T>& b) {
  return Compare(a, b, [](T x, T y) { return x == y; });
}

template <class T>
bool IsClose(const Variant<T>& a, const Variant<T>& b) {
  return Compare(a, b, [](T x, T y) { return IsClose(x, y); });
}

template <class T>
bool IsClose(const Variant<T>& a, const Variant<T>& b, T tolerance) {
  return Compare(a, b, [tolerance](T x, T y) { return IsClose(x, y, tolerance); });
}

template <class T>
bool IsZero(const Variant<T>& v) {
  const auto all_zero = [](const auto& entries) {
    return std::all_of(entries.begin(), entries.end(), [](const auto& z) { return IsZero(z); });
  };
  if (v.IsBoolean()) return !v.GetBoolean();
  if (v.IsScalar()) return IsZero(v.GetScalar());
  if (v.IsVector()) return all_zero(v.GetVector().data());
  if (v.IsMatrix() || v.HasTimeline()) return all_zero(v.GetMatrix().data());
  throw CTypeException("Input object has invalid datatype.");
}

template bool operator==(const Variant<double>&, const Variant<double>&);
template bool IsClose(const Variant<double>&, const Variant<double>&);
template bool IsClose(const Variant<double>&, const Variant<double>&, double);
template bool IsZero(const Variant<double>&);

}  // namespace corvath::math
