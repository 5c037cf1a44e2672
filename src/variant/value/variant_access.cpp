#include "foundation/math_exception.h"
#include "variant/value/variant.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace corvath::math {

namespace {

constexpr std::size_t kNoIndex = std::numeric_limits<std::size_t>::max();

/// An index rounded by adding 0.5 and truncating; kNoIndex, which is out of every range, for a
/// negative number, a NaN and what no memory can hold.
std::size_t ToIndex(double index) {
  const double shifted = index + 0.5;
  if (!(shifted >= 0.0 && shifted < 0x1p62)) return kNoIndex;
  return static_cast<std::size_t>(shifted);
}

/// The index of a row, column or entry; anything but a real scalar raises `message`.
template <class T>
std::size_t RealIndex(const Variant<T>& index, const char* message) {
  if (!index.IsScalar() || index.IsComplex()) throw CTypeException(message);
  return ToIndex(index.GetScalar().real());
}

void Check(bool holds, const char* text) {
  if (!holds) throw std::logic_error(text);
}

}  // namespace

template <class T>
bool Variant<T>::IsFlipped() const {
  if (!HasTimeline()) throw CTypeException("IsFlipped: Input object has invalid datatype.");
  const Vector& timeline = Record().timeline;
  return timeline.size() >= 2 && timeline(0).real() > timeline(timeline.size() - 1).real();
}

template <class T>
std::size_t Variant<T>::Size1() const {
  switch (GetKind()) {
    case UNINITIALIZED:
      throw CTypeException("Invalid type.");
    case BOOLEAN:
    case SCALAR:
      return 1;
    case VECTOR:
      return body_.vector.size();
    default:
      return body_.matrix.size1();
  }
}

template <class T>
std::size_t Variant<T>::Size2() const {
  switch (GetKind()) {
    case UNINITIALIZED:
      throw CTypeException("Invalid type.");
    case BOOLEAN:
    case SCALAR:
    case VECTOR:
      return 1;
    default:
      return body_.matrix.size2();
  }
}

template <class T>
std::size_t Variant<T>::Size() const {
  return Size1() * Size2();
}

template <class T>
bool Variant<T>::GetBoolean() const {
  if (!IsBoolean()) throw CTypeException("Input object not of type BOOLEAN.");
  Check(GetKind() == BOOLEAN, "Variant check failed: GetKind() == BOOLEAN");
  return body_.boolean;
}

template <class T>
const typename Variant<T>::Complex& Variant<T>::GetScalar() const {
  if (!IsScalar()) throw CTypeException("Input object not of type SCALAR.");
  Check((ks_.kind_ & skKindMask) == skSCALAR,
        "Variant check failed: (ks_.kind_ & skKindMask) == skSCALAR");
  return body_.scalar;
}

template <class T>
const typename Variant<T>::Vector& Variant<T>::GetVector() const {
  if (HasTimeline()) {
    Check(((ks_.kind_ & skKindMask) == skSIGNAL) && (ks_.kind_ != 0),
          "Variant check failed: ((ks_.kind_ & skKindMask) == skSIGNAL) && (ks_.kind_ != 0)");
    return Record().timeline;
  }
  if (!IsVector()) throw CTypeException("Input object not of type VECTOR.");
  Check((ks_.kind_ & skKindMask) == skVECTOR,
        "Variant check failed: (ks_.kind_ & skKindMask) == skVECTOR");
  return body_.vector;
}

template <class T>
const typename Variant<T>::Matrix& Variant<T>::GetMatrix() const {
  if (!IsMatrix() && !HasTimeline()) throw CTypeException("Input object not of type MATRIX.");
  Check((((ks_.kind_ & skKindMask) == skSIGNAL) && (ks_.kind_ != 0)) ||
            ((ks_.kind_ & skKindMask) == skMATRIX),
        "Variant check failed: (((ks_.kind_ & skKindMask) == skSIGNAL) && (ks_.kind_ != 0)) || "
        "((ks_.kind_ & skKindMask) == skMATRIX)");
  return body_.matrix;
}

template <class T>
void Variant<T>::TakeVector(Vector& out) {
  Vector empty;
  const_cast<Vector&>(GetVector()).swap(empty);
  out.swap(empty);
}

template <class T>
void Variant<T>::TakeMatrix(Matrix& out) {
  Matrix empty;
  const_cast<Matrix&>(GetMatrix()).swap(empty);
  out.swap(empty);
}

template <class T>
Variant<T> Variant<T>::operator[](const Variant& i) const {
  const char* const bad_index = "Index must be positive & real.";
  const std::size_t index = RealIndex(i, bad_index);
  if (!(i.GetScalar().real() >= -0.5)) throw CTypeException(bad_index);
  if (!IsVector() && !HasTimeline())
    throw CTypeException("Type doesn't support access by (only one) index.");
  if (index >= GetVector().size()) throw CDomainException("Index out of bounds.");
  if (IsVector()) return Variant(body_.vector(index));
  const Matrix& data = body_.matrix;
  Vector sample(data.size1() + 1);
  sample(0) = Record().timeline(index);
  for (std::size_t channel = 0; channel < data.size1(); ++channel)
    sample(channel + 1) = data(channel, index);
  return Variant(std::move(sample));
}

template <class T>
Variant<T> Variant<T>::operator()(const Variant& i, const Variant& j) const {
  const std::size_t row = RealIndex(i, "Index must be real.");
  const std::size_t column = RealIndex(j, "Index must be real.");
  if (IsVector()) {
    if (column != 0 || row >= body_.vector.size())
      throw CDomainException("Index out of vector bounds.");
    return Variant(body_.vector(row));
  }
  if (!IsMatrix() && !HasTimeline()) throw CTypeException("Type doesn't support access by index.");
  if (row >= body_.matrix.size1() || column >= body_.matrix.size2())
    throw CDomainException("Index out of matrix bounds.");
  return Variant(body_.matrix(row, column));
}

template <class T>
Variant<T> Variant<T>::GetColumn(const Variant& j) const {
  const std::size_t column = RealIndex(j, "Index must be real. \n");
  if (!IsMatrix() && !HasTimeline())
    throw CTypeException("Invalid type. Only types MATRIX, SIGNAL and XYDATA allowed. \n");
  if (column >= body_.matrix.size2())
    throw CDomainException("This column index doesn't exist in this matrix. \n");
  Vector entries(body_.matrix.size1());
  for (std::size_t row = 0; row < entries.size(); ++row) entries(row) = body_.matrix(row, column);
  return Variant(std::move(entries));
}

template <class T>
Variant<T> Variant<T>::GetRow(const Variant& i) const {
  const std::size_t row = RealIndex(i, "Index must be real. \n");
  if (!IsMatrix() && !HasTimeline())
    throw CTypeException("Invalid type. Only types MATRIX, SIGNAL and XYDATA allowed. \n");
  if (row >= body_.matrix.size1())
    throw CDomainException("This row index doesn't exist in this matrix. \n");
  Vector entries(body_.matrix.size2());
  for (std::size_t column = 0; column < entries.size(); ++column)
    entries(column) = body_.matrix(row, column);
  return Variant(std::move(entries));
}

template <class T>
void Variant<T>::addChannels(const Variant& x) {
  if (!HasTimeline()) throw CTypeException("Channels can be added to signal objects only");
  if (!x.IsVector() && !x.IsMatrix() && !x.HasTimeline())
    throw CTypeException("addChannels: object type not supported: " + x.GetKindName());

  // The new rows lie one after the other, in row-major order.
  const Complex* new_rows;
  std::size_t num_rows;
  std::size_t num_samples;
  if (x.IsVector()) {
    new_rows = x.body_.vector.data().begin();
    num_rows = 1;
    num_samples = x.body_.vector.size();
  } else {
    new_rows = x.body_.matrix.data().begin();
    num_rows = x.body_.matrix.size1();
    num_samples = x.body_.matrix.size2();
  }
  const Matrix& old = body_.matrix;
  if (num_samples != (old.size1() > 0 ? old.size2() : Record().timeline.size()))
    throw CDimensionException("addChannels: dimensions do not match.");

  Matrix joined(old.size1() + num_rows, num_samples);
  Complex* const next = std::copy(old.data().begin(), old.data().end(), joined.data().begin());
  std::copy(new_rows, new_rows + num_rows * num_samples, next);
  const bool complex = ComplexFlag() || x.ComplexFlag();
  SetKind(SIGNAL);
  body_.matrix.swap(joined);
  SetComplex(complex);
}

template bool Variant<double>::IsFlipped() const;
template std::size_t Variant<double>::Size1() const;
template std::size_t Variant<double>::Size2() const;
template std::size_t Variant<double>::Size() const;
template bool Variant<double>::GetBoolean() const;
template const Variant<double>::Complex& Variant<double>::GetScalar() const;
template const Variant<double>::Vector& Variant<double>::GetVector() const;
template const Variant<double>::Matrix& Variant<double>::GetMatrix() const;
template void Variant<double>::TakeVector(Vector&);
template void Variant<double>::TakeMatrix(Matrix&);
template Variant<double> Variant<double>::operator[](const Variant&) const;
template Variant<double> Variant<double>::operator()(const Variant&, const Variant&) const;
template Variant<double> Variant<double>::GetColumn(const Variant&) const;
template Variant<double> Variant<double>::GetRow(const Variant&) const;
template void Variant<double>::addChannels(const Variant&);

}  // namespace corvath::math
