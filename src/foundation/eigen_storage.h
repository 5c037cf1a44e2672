#ifndef CORVATH_FOUNDATION_EIGEN_STORAGE_H
#define CORVATH_FOUNDATION_EIGEN_STORAGE_H

/// Memory of Eigen's matrices, for every source that uses them: the build includes it first.
///
/// Eigen 3.4 gives the old block back, then asks for the new one; if there is none, the pointer to the
/// old block stays in the matrix, whose destructor gives it back again. Here it is null by then.

#include <Eigen/Core>

#if !EIGEN_VERSION_AT_LEAST(3, 4, 90)

namespace Eigen {
namespace guarded {

/// An option that Eigen gives no meaning: with it, a storage is Eigen's own.
constexpr int kEigensOwn = 1 << 20;

template <class T, int rows, int cols, int options>
class Storage : public DenseStorage<T, Dynamic, rows, cols, options | kEigensOwn> {
  using Own = DenseStorage<T, Dynamic, rows, cols, options | kEigensOwn>;

 public:
  using Own::Own;
  Storage() = default;

  void resize(Index size, Index num_rows, Index num_cols) {
    if (size != this->rows() * this->cols()) {
      Own().swap(*this);
      Own(size, num_rows, num_cols).swap(*this);
    } else {
      Own::resize(size, num_rows, num_cols);
    }
  }
};

}  // namespace guarded

template <class T>
struct DenseStorage<T, Dynamic, Dynamic, Dynamic, ColMajor>
    : guarded::Storage<T, Dynamic, Dynamic, ColMajor> {
  using Base = guarded::Storage<T, Dynamic, Dynamic, ColMajor>;
  using Base::Base;
};

template <class T>
struct DenseStorage<T, Dynamic, Dynamic, Dynamic, RowMajor>
    : guarded::Storage<T, Dynamic, Dynamic, RowMajor> {
  using Base = guarded::Storage<T, Dynamic, Dynamic, RowMajor>;
  using Base::Base;
};

template <class T, int cols>
struct DenseStorage<T, Dynamic, Dynamic, cols, ColMajor>
    : guarded::Storage<T, Dynamic, cols, ColMajor> {
  using Base = guarded::Storage<T, Dynamic, cols, ColMajor>;
  using Base::Base;
};

template <class T, int cols>
struct DenseStorage<T, Dynamic, Dynamic, cols, RowMajor>
    : guarded::Storage<T, Dynamic, cols, RowMajor> {
  using Base = guarded::Storage<T, Dynamic, cols, RowMajor>;
  using Base::Base;
};

template <class T, int rows>
struct DenseStorage<T, Dynamic, rows, Dynamic, ColMajor>
    : guarded::Storage<T, rows, Dynamic, ColMajor> {
  using Base = guarded::Storage<T, rows, Dynamic, ColMajor>;
  using Base::Base;
};

template <class T, int rows>
struct DenseStorage<T, Dynamic, rows, Dynamic, RowMajor>
    : guarded::Storage<T, rows, Dynamic, RowMajor> {
  using Base = guarded::Storage<T, rows, Dynamic, RowMajor>;
  using Base::Base;
};

}  // namespace Eigen

#endif
#endif
