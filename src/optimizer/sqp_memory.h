#pragma once

#include "optimizer/sqp_arguments.h"

#include <Eigen/Core>

#include <cstdint>

namespace corvath::algorithm::optimizer {

/// Numbers that a run keeps between two calls.
struct SqpNumbers {
  double alpha;             ///< step of the trial
  double merit;             ///< at the start of the line search
  double reference;         ///< what the trials must fall below
  double slope;             ///< of the merit function along the direction
  double trial_slope;       ///< alpha times the slope
  double dbd;               ///< d'Bd
  double multiplier_slope;  ///< sum_j u_j (grad g_j)'d / (1 - delta)
  double f;                 ///< at x
  double best_kkt, best_f;
};

/// Counts that it keeps.
struct SqpCounts {
  std::int32_t iteration, num_functions, num_gradients, num_qps;
  std::int32_t trial;           ///< number of the line-search trial
  std::int32_t num_pushed;      ///< merit values pushed on the stack so far
  std::int32_t used_reference;  ///< 1: an older merit value serves since the last accepted step
  std::int32_t num_stationary;  ///< iterates that were optimal but for the Lagrangian's gradient
  std::int32_t best_iteration;
};

/// Hands out the parts of a caller's array one after the other.
template <class T>
class ArrayParts {
 public:
  /// The array stays the caller's.
  ArrayParts(T* array, std::int64_t length) : array_(array), length_(length) {}

  /// The next `count` entries; null where the array is too short for them.
  T* Take(std::int64_t count) {
    taken_ += count;
    return taken_ <= length_ ? array_ + (taken_ - count) : nullptr;
  }
  /// The same as a vector over these entries.
  Eigen::Map<Eigen::VectorXd> TakeVector(Eigen::Index size) { return {Take(size), size}; }

  /// Entries that were asked for, and what they leave of the array: negative where it is too short.
  std::int64_t Taken() const { return taken_; }
  std::int64_t Left() const { return length_ - taken_; }

 private:
  T* array_;
  std::int64_t length_, taken_ = 0;
};

/// The one layout of WA, KWA and ACTIVE: what a run keeps there between two calls, what it works
/// with within one, what it leaves to the QP solver, and how long the arrays must be for that.
struct SqpMemory {
  using Vector = Eigen::Map<Eigen::VectorXd>;

  /// `a` has passed CheckNumbers. Only the sizes may be used before CheckLengths has passed, too.
  explicit SqpMemory(const SqpArguments& a);

  /// Read and write what a run keeps in WA and KWA between two calls.
  void Load(SqpNumbers& to_numbers, SqpCounts& to_counts) const;
  void Store(const SqpNumbers& from_numbers, const SqpCounts& from_counts) const;

  // WA, kept between two calls.
  double* numbers;
  Vector stack;       ///< MAX_NM merit values, used cyclically
  Vector r, v;        ///< M + 2N
  Vector x, g;        ///< N, M; the accepted iterate
  Vector d;           ///< N + 1, the last one is delta
  Vector lagrangian;  ///< N, gradient of the Lagrangian without bounds, multipliers U
  Vector best_x, best_u, best_g;

  // WA, work within one call.
  Vector qp_lower, qp_upper, diagonal;  ///< N + 1
  Vector gradient, product;             ///< N
  Vector weights;                       ///< M
  std::int32_t qp_work_size;            ///< all that is left
  double* qp_work;
  std::int64_t wa_size;

  // KWA: the counts, then all that is left for the QP solver.
  std::int32_t* counts;
  std::int32_t qp_integers_size;
  std::int32_t* qp_integers;
  std::int64_t kwa_size;

  // ACTIVE.
  std::int32_t* active;  ///< M; 1: active
  std::int64_t active_size;

 private:
  SqpMemory(const SqpArguments& a, ArrayParts<double> wa, ArrayParts<std::int32_t> kwa,
            ArrayParts<std::int32_t> active_parts);
};

}  // namespace corvath::algorithm::optimizer
