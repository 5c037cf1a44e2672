#pragma once

#include "archive/annotation.h"

#include <Eigen/Core>
#include <boost/archive/archive_exception.hpp>
#include <boost/serialization/nvp.hpp>
#include <boost/serialization/split_free.hpp>
#include <boost/serialization/version.hpp>

#include <cstdint>

/// Dense matrices and vectors of double and of unsigned 64-bit numbers: "cols", "rows", then the
/// elements "item" in column-major order. From class version 2 on the body has no annotations, so
/// that doubles are read and written as one block.
namespace boost::serialization {

template <class Scalar, int Rows, int Cols>
struct version<Eigen::Matrix<Scalar, Rows, Cols>> {
  using tag = mpl::integral_c_tag;
  using type = mpl::int_<2>;
  static constexpr int value = 2;
};

/// Class versions from this on suspend annotations for the body.
constexpr unsigned int kFirstPlainMatrix = 2;
/// A dimension beside an empty one has no data behind it; more than this is damage.
constexpr std::int64_t kMaxEmptyDimension = std::int64_t{1} << 24;

template <class Archive, class Scalar, int Rows, int Cols>
void save(Archive& ar, const Eigen::Matrix<Scalar, Rows, Cols>& matrix, const unsigned int) {
  const corvath::archive::AnnotationPause pause(ar);
  const std::int64_t cols = matrix.cols();
  const std::int64_t rows = matrix.rows();
  ar << BOOST_SERIALIZATION_NVP(cols) << BOOST_SERIALIZATION_NVP(rows);
  if constexpr (std::is_same_v<Scalar, double>) {
    ar.save_binary(matrix.data(), static_cast<std::size_t>(matrix.size()) * sizeof(double));
  } else {
    for (Eigen::Index i = 0; i < matrix.size(); ++i)
      ar << boost::serialization::make_nvp("item", matrix.data()[i]);
  }
}

template <class Archive, class Scalar, int Rows, int Cols>
void LoadMatrixBody(Archive& ar, Eigen::Matrix<Scalar, Rows, Cols>& matrix, bool plain) {
  using archive::archive_exception;
  std::int64_t cols = 0;
  std::int64_t rows = 0;
  ar >> BOOST_SERIALIZATION_NVP(cols) >> BOOST_SERIALIZATION_NVP(rows);
  const bool fits_type =
      (Rows == Eigen::Dynamic || rows == Rows) && (Cols == Eigen::Dynamic || cols == Cols);
  const bool empty = rows == 0 || cols == 0;
  if (rows < 0 || cols < 0 || (!empty && !fits_type) ||
      (empty && (rows > kMaxEmptyDimension || cols > kMaxEmptyDimension)) ||
      (!empty && rows > INT64_MAX / cols))
    throw archive_exception(archive_exception::input_stream_error);
  if (empty && !fits_type) {  // a vector that was never filled
    matrix.resize(Rows == Eigen::Dynamic ? 0 : Rows, Cols == Eigen::Dynamic ? 0 : Cols);
    return;
  }
  const auto size = static_cast<std::uint64_t>(rows * cols);
  const bool one_block = plain && std::is_same_v<Scalar, double>;
  ar.CheckCount(size, std::is_same_v<Scalar, double> ? sizeof(double) : 2);
  matrix.resize(rows, cols);
  if (one_block) {
    ar.load_binary(matrix.data(), size * sizeof(Scalar));
  } else {
    for (Eigen::Index i = 0; i < matrix.size(); ++i)
      ar >> boost::serialization::make_nvp("item", matrix.data()[i]);
  }
}

template <class Archive, class Scalar, int Rows, int Cols>
void load(Archive& ar, Eigen::Matrix<Scalar, Rows, Cols>& matrix, const unsigned int version) {
  if (version >= kFirstPlainMatrix) {
    const corvath::archive::AnnotationPause pause(ar);
    LoadMatrixBody(ar, matrix, true);
  } else {
    LoadMatrixBody(ar, matrix, false);
  }
}

template <class Archive, class Scalar, int Rows, int Cols>
void serialize(Archive& ar, Eigen::Matrix<Scalar, Rows, Cols>& matrix, const unsigned int version) {
  split_free(ar, matrix, version);
}

}  // namespace boost::serialization
