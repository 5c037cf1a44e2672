#include "archive/instantiate.h"
#include "foundation/math_exception.h"
#include "variant/value/variant.h"

#include <boost/serialization/complex.hpp>

#include <algorithm>
#include <array>
#include <optional>

namespace corvath::math {

namespace {

using boost::serialization::make_nvp;

/// Most rows or columns that a matrix without entries may claim in a file. Nothing in the stream
/// backs such a number, but the row or column sums of the matrix would take memory for it.
constexpr std::uint64_t kMaxEmptyDimension = 1u << 24;

/// The number of entries of a matrix as a file states it.
/// @throws CDimensionException no matrix has this shape
std::size_t EntryCount(std::uint64_t size1, std::uint64_t size2) {
  std::size_t count = 0;
  if (__builtin_mul_overflow(size1, size2, &count) ||
      (count == 0 && std::max(size1, size2) > kMaxEmptyDimension))
    throw CDimensionException("Invalid matrix size in archive.");
  return count;
}

/// Doubles pass through the archive in blocks of this many.
constexpr std::size_t kBlock = 4096;

// Real entries stand in the file as plain doubles. Each is an "item", but annotations are suspended
// wherever this form is used, so that the doubles lie side by side.

template <class Archive, class Array>
void SaveReal(Archive& ar, const Array& entries) {
  std::array<double, kBlock> block;
  for (std::size_t done = 0; done < entries.size();) {
    const std::size_t count = std::min(kBlock, entries.size() - done);
    for (std::size_t i = 0; i < count; ++i) block[i] = entries[done + i].real();
    ar.save_binary(block.data(), count * sizeof(double));
    done += count;
  }
}

template <class Archive, class Array>
void LoadReal(Archive& ar, std::size_t size, Array& entries) {
  ar.CheckCount(size, sizeof(double));
  entries.resize(size);
  std::array<double, kBlock> block;
  for (std::size_t done = 0; done < size;) {
    const std::size_t count = std::min(kBlock, size - done);
    ar.load_binary(block.data(), count * sizeof(double));
    std::copy_n(block.begin(), count, entries.begin() + static_cast<std::ptrdiff_t>(done));
    done += count;
  }
}

template <class Archive, class Vector>
void LoadVector(Archive& ar, bool compact, Vector& vector) {
  if (!compact) {
    ar >> make_nvp("vector_", vector);
    return;
  }
  std::uint64_t size = 0;
  ar >> make_nvp("size", size);
  LoadReal(ar, size, vector.data());
}

template <class Archive, class Matrix>
void LoadMatrix(Archive& ar, bool compact, Matrix& matrix) {
  if (!compact) {
    ar >> make_nvp("matrix_", matrix);
    return;
  }
  std::uint64_t size1 = 0;
  std::uint64_t size2 = 0;
  ar >> make_nvp("size1", size1) >> make_nvp("size2", size2);
  typename Matrix::array_type entries;
  LoadReal(ar, EntryCount(size1, size2), entries);
  matrix.resize(size1, size2, false);
  matrix.data().swap(entries);
}

}  // namespace

}  // namespace corvath::math

/// The storage in the bytes of uBLAS's own serialisation. These overloads replace it because it
/// allocates whatever count a damaged file states and believes sizes that do not match the entries.
namespace boost::serialization {

template <class Archive>
std::size_t LoadSize(Archive& ar, const char* name) {
  collection_size_type size;
  ar >> make_nvp(name, size);
  return static_cast<const collection_size_type&>(size);
}

template <class Archive>
void SaveSize(Archive& ar, const char* name, std::size_t size) {
  const collection_size_type count(size);
  ar << make_nvp(name, count);
}

template <class Archive>
void serialize(Archive& ar, numeric::ublas::unbounded_array<std::complex<double>>& array,
               const unsigned int) {
  if constexpr (Archive::is_loading::value) {
    const std::size_t size = LoadSize(ar, "size");
    ar.CheckCount(size, sizeof(std::complex<double>));
    array.resize(size);
  } else {
    SaveSize(ar, "size", array.size());
  }
  for (std::complex<double>& item : array) ar& make_nvp("item", item);
}

template <class Archive>
void serialize(Archive& ar,
               numeric::ublas::matrix<std::complex<double>, numeric::ublas::row_major>& matrix,
               const unsigned int) {
  if constexpr (Archive::is_loading::value) {
    const std::size_t size1 = LoadSize(ar, "size1");
    const std::size_t size2 = LoadSize(ar, "size2");
    numeric::ublas::unbounded_array<std::complex<double>> entries;
    ar >> make_nvp("data", entries);
    if (corvath::math::EntryCount(size1, size2) != entries.size())
      throw corvath::math::CDimensionException("Invalid matrix size in archive.");
    matrix.resize(size1, size2, false);
    matrix.data().swap(entries);
  } else {
    SaveSize(ar, "size1", matrix.size1());
    SaveSize(ar, "size2", matrix.size2());
    ar << make_nvp("data", matrix.data());
  }
}

}  // namespace boost::serialization

namespace corvath::math {

/// The fields of the class by version:
///
///     0  kind_, series_, complex_, boolean_, scalar_, vector_, matrix_, whatever the kind
///     2  without series_
///     3  of the payload only what the kind needs
///     4  ordered_ at the end
///     5  no annotations inside
///     6  real numbers as doubles, not as complex numbers
template <class T>
template <class Archive>
void Variant<T>::load(Archive& ar, unsigned int version) {
  std::optional<archive::AnnotationPause> pause;
  if (version >= 5) pause.emplace(ar);
  const bool whole_payload = version < 3;

  Variant read;
  std::int32_t kind_ = UNINITIALIZED;
  ar >> BOOST_SERIALIZATION_NVP(kind_);
  read.SetKind(kind_);
  if (version < 2) {
    bool series_ = false;
    ar >> BOOST_SERIALIZATION_NVP(series_);
  }
  bool complex_ = false;
  ar >> BOOST_SERIALIZATION_NVP(complex_);
  const bool compact = version >= 6 && !complex_;

  if (whole_payload || read.IsBoolean()) {
    bool boolean_ = false;
    ar >> BOOST_SERIALIZATION_NVP(boolean_);
    if (read.IsBoolean()) read.SetBoolean(boolean_);
  }
  if (whole_payload || read.IsScalar()) {
    Complex scalar_;
    if (compact) {
      T re = T();
      ar >> make_nvp("scalar_", re);
      scalar_ = re;
    } else {
      ar >> BOOST_SERIALIZATION_NVP(scalar_);
    }
    if (read.IsScalar()) read.SetScalar(scalar_);
  }
  if (whole_payload || read.IsVector() || read.HasTimeline()) {
    Vector vector;
    LoadVector(ar, compact, vector);
    if (read.IsVector() || read.HasTimeline()) read.SetVector(vector);
  }
  if (whole_payload || read.IsMatrix() || read.HasTimeline()) {
    Matrix matrix;
    LoadMatrix(ar, compact, matrix);
    if (read.HasTimeline() && matrix.size2() != read.GetVector().size())
      throw CDimensionException("Timeline of signal and data-matrix have to be of same dimension.");
    if (read.IsMatrix() || read.HasTimeline()) read.SetMatrix(matrix);
  }
  // The setters derived both flags from the data. The file may say less, never more than they hold.
  if (complex_) read.SetComplex(true);
  if (version >= 4) {
    bool ordered_ = true;
    ar >> BOOST_SERIALIZATION_NVP(ordered_);
    if (!ordered_) read.SetOrdered(false);
  }
  swap(read);
}

template <class T>
template <class Archive>
void Variant<T>::save(Archive& ar, unsigned int) const {
  const archive::AnnotationPause pause(ar);

  const std::int32_t kind_ = GetKind();
  ar << BOOST_SERIALIZATION_NVP(kind_);
  // The flag, not IsComplex(): a tiny imaginary part of a scalar survives.
  const bool complex_ = !IsBoolean() && ComplexFlag();
  ar << BOOST_SERIALIZATION_NVP(complex_);

  if (IsBoolean()) ar << make_nvp("boolean_", body_.boolean);
  if (IsScalar()) {
    if (complex_) {
      ar << make_nvp("scalar_", body_.scalar);
    } else {
      const T re = body_.scalar.real();
      ar << make_nvp("scalar_", re);
    }
  }
  if (IsVector() || HasTimeline()) {
    const Vector& vector = GetVector();
    if (complex_) {
      ar << make_nvp("vector_", vector);
    } else {
      const std::uint64_t size = vector.size();
      ar << BOOST_SERIALIZATION_NVP(size);
      SaveReal(ar, vector.data());
    }
  }
  if (IsMatrix() || HasTimeline()) {
    const Matrix& matrix = body_.matrix;
    if (complex_) {
      ar << make_nvp("matrix_", matrix);
    } else {
      const std::uint64_t size1 = matrix.size1();
      const std::uint64_t size2 = matrix.size2();
      ar << BOOST_SERIALIZATION_NVP(size1) << BOOST_SERIALIZATION_NVP(size2);
      SaveReal(ar, matrix.data());
    }
  }
  const bool ordered_ = IsOrdered();
  ar << BOOST_SERIALIZATION_NVP(ordered_);
}

}  // namespace corvath::math

ZEL_INSTANTIATE_LOAD_SAVE(corvath::math::Variant<double>)
ZEL_EXPORT_IMPLEMENT(corvath::math::Variant<double>)
