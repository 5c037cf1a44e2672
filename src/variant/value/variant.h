#pragma once

#include "archive/serialization.h"

#include <boost/numeric/ublas/matrix.hpp>
#include <boost/numeric/ublas/vector.hpp>

#include <complex>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

namespace corvath::math {

/// The one value type of the numeric side: nothing, a truth value, a complex scalar, vector or
/// matrix, or a sampled signal of one abscissa (the timeline) and any number of channels.
///
/// Every number is complex; "real" is a flag and a promise that all imaginary parts are 0.0 (a NaN
/// imaginary part counts as not real). Copies are deep, a moved-from value is UNINITIALIZED. A
/// value has no locks; one thread owns it at a time.
///
/// Wrong kinds raise CTypeException, wrong sizes CDimensionException, indices CDomainException, all
/// of foundation/math_exception.h. Instantiated for double.
template <class T>
class Variant {
 public:
  using Complex = std::complex<T>;
  using Vector = boost::numeric::ublas::vector<Complex>;
  using Matrix = boost::numeric::ublas::matrix<Complex, boost::numeric::ublas::row_major>;

  /// Also the persisted number.
  enum Kind : std::int32_t {
    UNINITIALIZED = -1,
    BOOLEAN = 0,
    SCALAR = 1,
    VECTOR = 2,
    MATRIX = 3,  ///< rows x columns
    SIGNAL = 4,  ///< timeline of n points, data matrix of channels x n
    XYDATA = 5   ///< a signal of exactly one channel by construction
  };

  Variant() noexcept {}
  /// From bool alone: no pointer or number ends here by conversion.
  template <class Bool, class = std::enable_if_t<std::is_same_v<Bool, bool>>>
  explicit Variant(Bool value) noexcept {
    body_.boolean = value;
    ks_.kind_ = skBOOLEAN;
  }
  explicit Variant(T re, T im = T()) noexcept : Variant(Complex(re, im)) {}
  explicit Variant(const Complex& value) noexcept {
    new (&body_.scalar) Complex(value);
    ks_.kind_ = skSCALAR | (value.imag() != T() ? skComplex : 0);
  }
  explicit Variant(const Vector& value);
  explicit Variant(Vector&& value);  ///< takes the storage over
  explicit Variant(const Matrix& value);
  explicit Variant(Matrix&& value);  ///< takes the storage over

  Variant(const Variant& other) { CopyFrom(other); }
  Variant(Variant&& other) noexcept { MoveFrom(other); }
  /// Into the storage that is there where its sizes are those of `other`.
  Variant& operator=(const Variant& other) {
    if (this == &other || CopyIntoStorage(other)) return *this;
    Variant copy(other);
    Clear();
    MoveFrom(copy);
    return *this;
  }
  Variant& operator=(Variant&& other) noexcept {
    if (this != &other) {
      Clear();
      MoveFrom(other);
    }
    return *this;
  }
  ~Variant() { Clear(); }
  void swap(Variant& other) noexcept { std::swap(*this, other); }

  /// A SIGNAL of `data` (channels x n) over `timeline` (n); an empty timeline gives an
  /// UNINITIALIZED value. Rvalues give their storage.
  /// @throws CTypeException the timeline is not real, CDimensionException the columns are not n
  static Variant Signal(Vector&& timeline, Matrix&& data);
  static Variant Signal(const Vector& timeline, Matrix&& data);
  static Variant Signal(const Vector& timeline, const Matrix& data);
  /// An XYDATA of one channel; an empty `x` gives an UNINITIALIZED value. Throws like Signal.
  static Variant XYData(const Vector& x, const Vector& y);

  Kind GetKind() const noexcept;
  /// The kind's name, "VECTOR" for example.
  std::string GetKindName() const { return GetKindName(GetKind()); }
  void GetKindName(std::string& name) const { name = GetKindName(); }
  void GetKindName(std::wstring& name) const;
  /// @throws CTypeException `kind` is none of the enumerators
  static const char* GetKindName(Kind kind);

  bool IsUninitialized() const noexcept { return ks_.kind_ == 0; }
  bool IsBoolean() const noexcept { return Tag() == skBOOLEAN; }
  bool IsScalar() const noexcept { return Tag() == skSCALAR; }
  bool IsVector() const noexcept { return Tag() == skVECTOR; }
  bool IsMatrix() const noexcept { return Tag() == skMATRIX; }
  bool IsSignal() const noexcept { return HasTimeline() && !Record().xydata; }
  bool IsXYData() const noexcept { return HasTimeline() && Record().xydata; }
  /// SIGNAL or XYDATA.
  bool HasTimeline() const noexcept { return Tag() == skSIGNAL && ks_.kind_ != 0; }

  /// Whether the data hold a number that is not real; of a SCALAR, whether the square of its
  /// imaginary part reaches eps = 2^-52. False for BOOLEAN and UNINITIALIZED.
  bool IsComplex() const noexcept;
  /// Whether the elements of a VECTOR or the timeline of a signal are monotonic in either
  /// direction, ties allowed, by real parts; true for other kinds.
  bool IsOrdered() const noexcept;
  /// Whether the timeline descends: at least 2 points, the first greater than the last.
  /// @throws CTypeException no signal
  bool IsFlipped() const;

  std::size_t Size1() const;  ///< 1, length, rows or channels; throws for UNINITIALIZED
  std::size_t Size2() const;  ///< 1, columns or samples; throws for UNINITIALIZED
  std::size_t Size() const;   ///< number of entries of the data, Size1() x Size2()

  /// What the kind holds, without a copy where it is a reference.
  /// @throws CTypeException another kind
  bool GetBoolean() const;
  const Complex& GetScalar() const;
  const Vector& GetVector() const;  ///< of a signal: its timeline
  const Matrix& GetMatrix() const;  ///< of a signal: its data, channels x samples
  /// Move the storage out; the value keeps its kind and empty storage.
  void TakeVector(Vector& out);
  void TakeMatrix(Matrix& out);

  /// A change of the storage form empties the value and carries the two flags over; between SIGNAL
  /// and XYDATA the data stay. Any other number gives UNINITIALIZED.
  void SetKind(std::int32_t kind);
  /// No effect on an UNINITIALIZED value.
  void SetComplex(bool complex) noexcept;
  /// Effect only on VECTOR, SIGNAL and XYDATA.
  void SetOrdered(bool ordered) noexcept;
  /// The typed setters change the storage form where needed and set the flags from the data. On a
  /// signal SetVector replaces the timeline, SetMatrix the data. Both swap with their argument.
  void SetBoolean(bool value);
  void SetScalar(T value) { SetScalar(Complex(value)); }
  void SetScalar(const Complex& value);
  void SetVector(Vector& value);
  void SetMatrix(Matrix& value);
  /// The same for numbers that are known to be real, which saves a walk over them.
  void SetRealMatrix(Matrix& value);

  /// Element access by real scalars, rounded by adding 0.5 and truncating. One index: the element
  /// of a VECTOR, or of a signal the VECTOR {abscissa, channel 0, channel 1, ...} of sample `i`.
  Variant operator[](const Variant& i) const;
  /// Entry (i, j) of the data as a SCALAR; of a VECTOR only j = 0.
  Variant operator()(const Variant& i, const Variant& j) const;
  /// Column or row of a MATRIX or of a signal's data, as a VECTOR.
  Variant GetColumn(const Variant& j) const;
  Variant GetRow(const Variant& i) const;

  /// Appends the rows of a MATRIX or of a signal's data, or a VECTOR as one row, to this signal. An
  /// XYDATA becomes a SIGNAL. Strong guarantee.
  void addChannels(const Variant& x);

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  ZEL_SPLIT_SERIALIZE()

  /// What a signal has beside its data matrix. Owned; its address needs the three low bits clear.
  struct alignas(8) TimelineRecord {
    Vector timeline;  ///< imaginary parts are zero
    bool xydata = false;
    bool complex = false;  ///< the data matrix holds an entry that is not real
    bool ordered = true;   ///< the timeline is monotonic
  };

  // Tags and flags in ks_.kind_. A word without tag is the address of a TimelineRecord, or 0.
  static constexpr std::uintptr_t skSIGNAL = 0;
  static constexpr std::uintptr_t skBOOLEAN = 1;
  static constexpr std::uintptr_t skSCALAR = 2;
  static constexpr std::uintptr_t skVECTOR = 3;
  static constexpr std::uintptr_t skMATRIX = 4;
  static constexpr std::uintptr_t skKindMask = 7;
  static constexpr std::uintptr_t skComplex = 8;
  static constexpr std::uintptr_t skOrdered = 16;  ///< kept for vectors only

  std::uintptr_t Tag() const noexcept { return ks_.kind_ & skKindMask; }
  const TimelineRecord& Record() const noexcept {
    return *reinterpret_cast<const TimelineRecord*>(ks_.kind_);
  }
  TimelineRecord& Record() noexcept { return *reinterpret_cast<TimelineRecord*>(ks_.kind_); }
  /// Storage on the heap to release or copy.
  bool OwnsStorage() const noexcept {
    return ks_.kind_ != 0 && Tag() != skBOOLEAN && Tag() != skSCALAR;
  }

  void CopyFrom(const Variant& other) {
    if (other.OwnsStorage())
      CopyStorage(other);
    else
      CopyPlain(other);
  }
  void MoveFrom(Variant& other) noexcept {
    if (other.OwnsStorage())
      MoveStorage(other);
    else
      CopyPlain(other);
    other.Clear();
  }
  void Clear() noexcept {
    if (OwnsStorage()) FreeStorage();
    ks_.kind_ = 0;
  }
  void CopyPlain(const Variant& other) noexcept {
    if (other.Tag() == skSCALAR)
      new (&body_.scalar) Complex(other.body_.scalar);
    else if (other.Tag() == skBOOLEAN)
      body_.boolean = other.body_.boolean;
    ks_.kind_ = other.ks_.kind_;
  }
  void CopyStorage(const Variant& other);
  /// Does nothing unless both have storage of the same kind and sizes.
  bool CopyIntoStorage(const Variant& other) noexcept;
  void MoveStorage(Variant& other) noexcept;
  void FreeStorage() noexcept;
  bool ComplexFlag() const noexcept;
  void InstallVector(Vector& value) noexcept;
  void InstallMatrix(Matrix& value) noexcept;
  void InstallRecord(TimelineRecord* record) noexcept;

  union Body {
    Body() noexcept {}
    ~Body() {}
    bool boolean;
    Complex scalar;
    Vector vector;
    Matrix matrix;
  } body_;
  struct KindWord {
    std::uintptr_t kind_ = 0;
  } ks_;
};

extern template class Variant<double>;

/// Exact equality. Values of different kinds are equal only when a BOOLEAN meets a real SCALAR of
/// its number 0.0 or 1.0; a NaN anywhere makes them unequal.
template <class T>
bool operator==(const Variant<T>& a, const Variant<T>& b);
template <class T>
bool operator!=(const Variant<T>& a, const Variant<T>& b) {
  return !(a == b);
}

/// Near-equality number by number, real and imaginary parts apart, by the rules of
/// foundation/closeness.h; kinds meet as in operator==. Without tolerance NaNs are close to each
/// other, and so are infinities of any sign.
template <class T>
bool IsClose(const Variant<T>& a, const Variant<T>& b);
template <class T>
bool IsClose(const Variant<T>& a, const Variant<T>& b, T tolerance);

/// Squared magnitude below eps = 2^-52.
inline bool IsZero(const std::complex<double>& z) {
  return z.real() * z.real() + z.imag() * z.imag() < 0x1p-52;
}
inline bool IsZero(double x) {
  return x * x < 0x1p-52;
}
/// False, or every entry of the data is zero; a timeline is not looked at.
/// @throws CTypeException UNINITIALIZED
template <class T>
bool IsZero(const Variant<T>& v);

/// Readable form for logs and programs, at precision 16; the kind's name leads.
template <class T>
std::wostream& operator<<(std::wostream& stream, const Variant<T>& v);

/// The value type as the system uses it.
using Value = Variant<double>;

}  // namespace corvath::math

ZEL_CLASS_VERSION(corvath::math::Variant<double>, 6)
ZEL_EXPORT_KEY(corvath::math::Variant<double>, "corvath::math::Variant<double>")
