#include "optimizer/sqp_arguments.h"

#include "optimizer/sqp_memory.h"

#include <cstdio>

namespace corvath::algorithm::optimizer {

namespace {

/// Whether `good`; else the failure.
bool Check(const SqpArguments& a, bool good, std::int32_t ifail, const char* name, double value) {
  if (good) return true;
  Fail(a, ifail, name, &value);
  return false;
}

/// The same for an array that must have `needed` entries.
bool CheckLength(const SqpArguments& a, std::int64_t length, std::int64_t needed,
                 const char* name) {
  if (length >= needed) return true;
  char text[100];
  std::snprintf(text, sizeof text, "Length of %s too short, should be at least %lld", name,
                static_cast<long long>(needed));
  Fail(a, 5, text);
  return false;
}

}  // namespace

bool CheckNumbers(const SqpArguments& a) {
  const std::int64_t num_multipliers = a.M + 2 * static_cast<std::int64_t>(a.N) + 2;
  return Check(a, a.L >= 1, 6, "L:", a.L) && Check(a, 0 < a.N && a.N < a.NMAX, 6, "N:", a.N) &&
         Check(a, 0 <= a.M && a.M <= a.MMAX, 6, "M:", a.M) &&
         Check(a, 0 <= a.ME && a.ME <= a.M && a.ME <= a.MMAX, 6, "ME:", a.ME) &&
         Check(a, a.MNN2 >= num_multipliers, 6, "MNN2:", a.MNN2) &&
         Check(a, 0 <= a.IPRINT && a.IPRINT <= 4, 9, "IPRINT:", a.IPRINT) &&
         Check(a, 0 <= a.MODE && a.MODE <= 1, 9, "MODE:", a.MODE) &&
         Check(a, 0 <= a.MAX_NM && a.MAX_NM <= 50, 9, "MAX_NM:", a.MAX_NM) &&
         Check(a, 0 <= a.MAXFUN && a.MAXFUN <= 50, 9, "MAXFUN:", a.MAXFUN) &&
         Check(a, a.MAXIT >= 0, 9, "MAXIT:", a.MAXIT) &&
         Check(a, a.IOUT >= 1, 9, "IOUT:", a.IOUT) &&
         Check(a, -2 <= a.IFAIL && a.IFAIL <= 0, 9, "IFAIL:", a.IFAIL) &&
         Check(a, a.STPMIN >= 0.0, 9, "STPMIN:", a.STPMIN) &&
         Check(a, a.TOL_NM >= 0.0, 9, "TOL_NM:", a.TOL_NM) &&
         Check(a, a.ACCQP >= 0.0, 9, "ACCQP:", a.ACCQP) && Check(a, a.ACC > 0.0, 9, "ACC:", a.ACC);
}

bool CheckLengths(const SqpArguments& a, const SqpMemory& memory) {
  return CheckLength(a, a.LWA, memory.wa_size, "WA") &&
         CheckLength(a, a.LKWA, memory.kwa_size, "KWA") &&
         CheckLength(a, a.LACTIV, memory.active_size, "ACTIVE");
}

bool CheckStart(const SqpArguments& a) {
  for (std::int32_t i = 0; a.IFAIL == 0 && i < a.N; ++i) {
    if (a.X[i] >= a.XL[i] && a.X[i] <= a.XU[i]) continue;
    char text[160];
    std::snprintf(text, sizeof text, "%d violates bound: %g %g %g", i + 1, a.XL[i], a.X[i],
                  a.XU[i]);
    Fail(a, 8, text);
    return false;
  }
  return true;
}

}  // namespace corvath::algorithm::optimizer
