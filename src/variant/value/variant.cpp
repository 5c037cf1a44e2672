#include "variant/value/variant.h"

#include "foundation/math_exception.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace corvath::math {

namespace {

/// Whether an entry is not real. Looks at blocks without branching, so that the loop vectorises.
template <class Array>
bool HasNonReal(const Array& data) {
  constexpr std::size_t kBlock = 1024;
  const auto* entry = data.begin();
  for (std::size_t left = data.size(); left > 0;) {
    const std::size_t count = std::min(left, kBlock);
    bool found = false;
    for (std::size_t i = 0; i < count; ++i) found |= entry[i].imag() != 0.0;
    if (found) return true;
    entry += count;
    left -= count;
  }
  return false;
}

/// Monotonic in the direction in which the last element lies from the first. Neither holds when one
/// of these two is NaN.
template <class Vector>
bool IsMonotonic(const Vector& v) {
  const std::size_t n = v.size();
  if (n < 2) return true;
  const auto* entry = v.data().begin();
  const auto re = [entry](std::size_t i) { return entry[i].real(); };
  bool broken = false;
  if (re(n - 1) >= re(0)) {
    for (std::size_t i = 1; i < n && !broken; ++i) broken = re(i - 1) > re(i);
    return !broken;
  }
  if (re(n - 1) < re(0)) {
    for (std::size_t i = 1; i < n && !broken; ++i) broken = re(i - 1) < re(i);
    return !broken;
  }
  return false;
}

}  // namespace

template <class T>
Variant<T>::Variant(const Vector& value) {
  Vector copy(value);
  InstallVector(copy);
}

template <class T>
Variant<T>::Variant(Vector&& value) {
  InstallVector(value);
}

template <class T>
Variant<T>::Variant(const Matrix& value) {
  Matrix copy(value);
  InstallMatrix(copy);
}

template <class T>
Variant<T>::Variant(Matrix&& value) {
  InstallMatrix(value);
}

/// On a value without storage: takes the storage of `value` over and sets tag and flags.
template <class T>
void Variant<T>::InstallVector(Vector& value) noexcept {
  new (&body_.vector) Vector();
  body_.vector.swap(value);
  ks_.kind_ = skVECTOR | (HasNonReal(body_.vector.data()) ? skComplex : 0) |
              (IsMonotonic(body_.vector) ? skOrdered : 0);
}

template <class T>
void Variant<T>::InstallMatrix(Matrix& value) noexcept {
  new (&body_.matrix) Matrix();
  body_.matrix.swap(value);
  ks_.kind_ = skMATRIX | (HasNonReal(body_.matrix.data()) ? skComplex : 0);
}

/// On a value without storage: becomes a signal without data.
template <class T>
void Variant<T>::InstallRecord(TimelineRecord* record) noexcept {
  new (&body_.matrix) Matrix();
  ks_.kind_ = reinterpret_cast<std::uintptr_t>(record);
}

template <class T>
Variant<T> Variant<T>::Signal(Vector&& timeline, Matrix&& data) {
  Variant result;
  if (timeline.size() == 0) return result;
  if (HasNonReal(timeline.data())) throw CTypeException("Timeline of signal may not be complex.");
  if (data.size2() != timeline.size())
    throw CDimensionException("Timeline of signal and data-matrix have to be of same dimension.");
  result.SetKind(SIGNAL);
  result.SetVector(timeline);
  result.SetMatrix(data);
  return result;
}

template <class T>
Variant<T> Variant<T>::Signal(const Vector& timeline, Matrix&& data) {
  return Signal(Vector(timeline), std::move(data));
}

template <class T>
Variant<T> Variant<T>::Signal(const Vector& timeline, const Matrix& data) {
  return Signal(Vector(timeline), Matrix(data));
}

template <class T>
Variant<T> Variant<T>::XYData(const Vector& x, const Vector& y) {
  if (x.size() == 0) return Variant();
  if (HasNonReal(x.data())) throw CTypeException("Timeline of XYDATA may not be complex.");
  if (x.size() != y.size())
    throw CDimensionException("X- and Y-data have to be of same dimension.");
  Matrix data(1, y.size());
  std::copy(y.data().begin(), y.data().end(), data.data().begin());
  Variant result = Signal(Vector(x), std::move(data));
  result.SetKind(XYDATA);
  return result;
}

template <class T>
typename Variant<T>::Kind Variant<T>::GetKind() const noexcept {
  switch (Tag()) {
    case skBOOLEAN:
      return BOOLEAN;
    case skSCALAR:
      return SCALAR;
    case skVECTOR:
      return VECTOR;
    case skMATRIX:
      return MATRIX;
    default:
      return ks_.kind_ == 0 ? UNINITIALIZED : Record().xydata ? XYDATA : SIGNAL;
  }
}

template <class T>
const char* Variant<T>::GetKindName(Kind kind) {
  static constexpr const char* kNames[] = {"UNINITIALIZED", "BOOLEAN", "SCALAR", "VECTOR",
                                           "MATRIX",        "SIGNAL",  "XYDATA"};
  if (kind < UNINITIALIZED || kind > XYDATA)
    throw CTypeException("Input object has invalid datatype.");
  return kNames[kind - UNINITIALIZED];
}

template <class T>
void Variant<T>::GetKindName(std::wstring& name) const {
  const std::string narrow = GetKindName();
  name.assign(narrow.begin(), narrow.end());  // ASCII
}

template <class T>
bool Variant<T>::ComplexFlag() const noexcept {
  return HasTimeline() ? Record().complex : (ks_.kind_ & skComplex) != 0;
}

template <class T>
bool Variant<T>::IsComplex() const noexcept {
  if (IsScalar()) {
    const T im = body_.scalar.imag();
    return !(std::numeric_limits<T>::epsilon() > std::abs(im * im));  // so that NaN is complex
  }
  return !IsBoolean() && ComplexFlag();
}

template <class T>
bool Variant<T>::IsOrdered() const noexcept {
  if (IsVector()) return (ks_.kind_ & skOrdered) != 0;
  return !HasTimeline() || Record().ordered;
}

template <class T>
void Variant<T>::SetKind(std::int32_t kind) {
  const bool complex = ComplexFlag();
  const bool ordered = IsOrdered();
  switch (kind) {
    case BOOLEAN:
      if (IsBoolean()) return;
      Clear();
      body_.boolean = false;
      ks_.kind_ = skBOOLEAN;
      break;
    case SCALAR:
      if (IsScalar()) return;
      Clear();
      new (&body_.scalar) Complex();
      ks_.kind_ = skSCALAR;
      break;
    case VECTOR:
      if (IsVector()) return;
      Clear();
      new (&body_.vector) Vector();
      ks_.kind_ = skVECTOR;
      break;
    case MATRIX:
      if (IsMatrix()) return;
      Clear();
      new (&body_.matrix) Matrix();
      ks_.kind_ = skMATRIX;
      break;
    case SIGNAL:
    case XYDATA:
      if (!HasTimeline()) {
        auto* record = new TimelineRecord;
        Clear();
        InstallRecord(record);
      }
      Record().xydata = kind == XYDATA;
      break;
    default:
      Clear();
      return;
  }
  SetComplex(complex);
  SetOrdered(ordered);
}

template <class T>
void Variant<T>::SetComplex(bool complex) noexcept {
  if (HasTimeline())
    Record().complex = complex;
  else if (!IsUninitialized())
    ks_.kind_ = (ks_.kind_ & ~skComplex) | (complex ? skComplex : 0);
}

template <class T>
void Variant<T>::SetOrdered(bool ordered) noexcept {
  if (HasTimeline())
    Record().ordered = ordered;
  else if (IsVector())
    ks_.kind_ = (ks_.kind_ & ~skOrdered) | (ordered ? skOrdered : 0);
}

template <class T>
void Variant<T>::SetBoolean(bool value) {
  SetKind(BOOLEAN);
  body_.boolean = value;
}

template <class T>
void Variant<T>::SetScalar(const Complex& value) {
  const Complex copy = value;  // may be our own
  SetKind(SCALAR);
  body_.scalar = copy;
  SetComplex(copy.imag() != T());
}

template <class T>
void Variant<T>::SetVector(Vector& value) {
  if (HasTimeline()) {
    if (HasNonReal(value.data())) throw CTypeException("Timeline of signal may not be complex.");
    Record().timeline.swap(value);
    Record().ordered = IsMonotonic(Record().timeline);
    return;
  }
  SetKind(VECTOR);
  body_.vector.swap(value);
  SetComplex(HasNonReal(body_.vector.data()));
  SetOrdered(IsMonotonic(body_.vector));
}

template <class T>
void Variant<T>::SetMatrix(Matrix& value) {
  if (!HasTimeline()) SetKind(MATRIX);
  body_.matrix.swap(value);
  SetComplex(HasNonReal(body_.matrix.data()));
}

template <class T>
void Variant<T>::SetRealMatrix(Matrix& value) {
  if (!HasTimeline()) SetKind(MATRIX);
  body_.matrix.swap(value);
  SetComplex(false);
}

template <class T>
void Variant<T>::CopyStorage(const Variant& other) {
  switch (other.Tag()) {
    case skVECTOR:
      new (&body_.vector) Vector(other.body_.vector);
      ks_.kind_ = other.ks_.kind_;
      break;
    case skMATRIX:
      new (&body_.matrix) Matrix(other.body_.matrix);
      ks_.kind_ = other.ks_.kind_;
      break;
    default: {
      auto record = std::make_unique<TimelineRecord>(other.Record());
      new (&body_.matrix) Matrix(other.body_.matrix);
      ks_.kind_ = reinterpret_cast<std::uintptr_t>(record.release());
    }
  }
}

template <class T>
bool Variant<T>::CopyIntoStorage(const Variant& other) noexcept {
  if (!OwnsStorage() || !other.OwnsStorage() || Tag() != other.Tag()) return false;
  if (IsVector()) {
    if (body_.vector.size() != other.body_.vector.size()) return false;
    body_.vector = other.body_.vector;
    ks_.kind_ = other.ks_.kind_;
    return true;
  }
  if (body_.matrix.size1() != other.body_.matrix.size1() ||
      body_.matrix.size2() != other.body_.matrix.size2())
    return false;
  if (IsMatrix()) {
    ks_.kind_ = other.ks_.kind_;
  } else {
    if (Record().timeline.size() != other.Record().timeline.size()) return false;
    Record() = other.Record();
  }
  body_.matrix = other.body_.matrix;
  return true;
}

template <class T>
void Variant<T>::MoveStorage(Variant& other) noexcept {
  if (other.IsVector()) {
    new (&body_.vector) Vector();
    body_.vector.swap(other.body_.vector);
    ks_.kind_ = other.ks_.kind_;
    return;
  }
  new (&body_.matrix) Matrix();
  body_.matrix.swap(other.body_.matrix);
  ks_.kind_ = other.ks_.kind_;
  if (other.HasTimeline()) {  // the record has one owner
    other.body_.matrix.~Matrix();
    other.ks_.kind_ = 0;
  }
}

template <class T>
void Variant<T>::FreeStorage() noexcept {
  if (IsVector()) {
    body_.vector.~Vector();
    return;
  }
  body_.matrix.~Matrix();
  if (HasTimeline()) delete &Record();
}

template class Variant<double>;

}  // namespace corvath::math
