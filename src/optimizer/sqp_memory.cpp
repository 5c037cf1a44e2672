#include "optimizer/sqp_memory.h"

#include <cstring>

namespace corvath::algorithm::optimizer {

namespace {

constexpr std::int64_t kNumNumbers = sizeof(SqpNumbers) / sizeof(double);

/// Integers of KWA that are the method's own; what it does not use is in reserve, as callers rely
/// on the lengths of the interface.
constexpr std::int64_t kNumOwnIntegers = 10;
static_assert(sizeof(SqpCounts) <= kNumOwnIntegers * sizeof(std::int32_t));

/// The same of ACTIVE, behind the M flags in use.
std::int64_t ReservedFlags(const SqpArguments& a) {
  return static_cast<std::int64_t>(a.M) + 10;
}

Eigen::Index NumMultipliers(const SqpArguments& a) {
  return static_cast<Eigen::Index>(a.M) + 2 * static_cast<Eigen::Index>(a.N);
}

}  // namespace

SqpMemory::SqpMemory(const SqpArguments& a)
    : SqpMemory(a, {a.WA, a.LWA}, {a.KWA, a.LKWA}, {a.ACTIVE, a.LACTIV}) {}

SqpMemory::SqpMemory(const SqpArguments& a, ArrayParts<double> wa, ArrayParts<std::int32_t> kwa,
                     ArrayParts<std::int32_t> active_parts)
    : numbers(wa.Take(kNumNumbers)),
      stack(wa.TakeVector(a.MAX_NM)),
      r(wa.TakeVector(NumMultipliers(a))),
      v(wa.TakeVector(NumMultipliers(a))),
      x(wa.TakeVector(a.N)),
      g(wa.TakeVector(a.M)),
      d(wa.TakeVector(a.N + 1)),
      lagrangian(wa.TakeVector(a.N)),
      best_x(wa.TakeVector(a.N)),
      best_u(wa.TakeVector(NumMultipliers(a))),
      best_g(wa.TakeVector(a.M)),
      qp_lower(wa.TakeVector(a.N + 1)),
      qp_upper(wa.TakeVector(a.N + 1)),
      diagonal(wa.TakeVector(a.N + 1)),
      gradient(wa.TakeVector(a.N)),
      product(wa.TakeVector(a.N)),
      weights(wa.TakeVector(a.M)),
      qp_work_size(static_cast<std::int32_t>(wa.Left())),
      qp_work(wa.Take(QlWorkSize(a.M, a.MMAX, a.NMAX))),
      wa_size(wa.Taken()),
      counts(kwa.Take(kNumOwnIntegers)),
      qp_integers_size(static_cast<std::int32_t>(kwa.Left())),
      qp_integers(kwa.Take(0)),
      kwa_size(kwa.Taken()),
      active(active_parts.Take(a.M)),
      active_size(active_parts.Taken() + ReservedFlags(a)) {}

void SqpMemory::Load(SqpNumbers& to_numbers, SqpCounts& to_counts) const {
  std::memcpy(&to_numbers, numbers, sizeof to_numbers);
  std::memcpy(&to_counts, counts, sizeof to_counts);
}

void SqpMemory::Store(const SqpNumbers& from_numbers, const SqpCounts& from_counts) const {
  std::memcpy(numbers, &from_numbers, sizeof from_numbers);
  std::memcpy(counts, &from_counts, sizeof from_counts);
}

}  // namespace corvath::algorithm::optimizer
