#include "optimizer/sqp_run.h"

#include <cstdio>

namespace corvath::algorithm::optimizer {

namespace {

bool Refuse(const SqpArguments& a, std::int32_t ifail, const char* detail,
            const double* number = nullptr) {
  a.IFAIL = ifail;
  PrintSqpError(a, detail, number);
  return false;
}

bool CheckStart(const SqpArguments& a) {
  for (std::int32_t i = 0; i < a.N; ++i) {
    if (a.X[i] >= a.XL[i] && a.X[i] <= a.XU[i]) continue;
    char text[160];
    std::snprintf(text, sizeof text, "%d violates bound: %g %g %g", i + 1, a.XL[i], a.X[i],
                  a.XU[i]);
    return Refuse(a, 8, text);
  }
  return true;
}

}  // namespace

std::int64_t RequiredWork(const SqpArguments& a) {
  const std::int64_t n = a.N, m = a.M, nmax = a.NMAX;
  const std::int64_t qp = m + 3 * nmax * nmax / 2 + 10 * nmax + 1 + a.MMAX;
  // 13 scalars; stack; r, v; x, g; d; Lagrangian; best record; bounds and diagonal of the QP;
  // merit gradient, product; weights
  return 13 + a.MAX_NM + 2 * (m + 2 * n) + (n + m) + (n + 1) + n + (3 * n + 2 * m) + 3 * (n + 1) +
         2 * n + m + qp;
}

bool CheckArguments(const SqpArguments& a) {
  const struct {
    bool good;
    std::int32_t ifail;
    const char* name;
    double value;
  } checks[] = {
      {a.L >= 1, 6, "L:", 1.0 * a.L},
      {0 < a.N && a.N < a.NMAX, 6, "N:", 1.0 * a.N},
      {0 <= a.M && a.M <= a.MMAX, 6, "M:", 1.0 * a.M},
      {0 <= a.ME && a.ME <= a.M && a.ME <= a.MMAX, 6, "ME:", 1.0 * a.ME},
      {a.MNN2 >= static_cast<std::int64_t>(a.M) + 2 * static_cast<std::int64_t>(a.N) + 2, 6,
       "MNN2:", 1.0 * a.MNN2},
      {0 <= a.IPRINT && a.IPRINT <= 4, 9, "IPRINT:", 1.0 * a.IPRINT},
      {0 <= a.MODE && a.MODE <= 1, 9, "MODE:", 1.0 * a.MODE},
      {0 <= a.MAX_NM && a.MAX_NM <= 50, 9, "MAX_NM:", 1.0 * a.MAX_NM},
      {0 <= a.MAXFUN && a.MAXFUN <= 50, 9, "MAXFUN:", 1.0 * a.MAXFUN},
      {a.MAXIT >= 0, 9, "MAXIT:", 1.0 * a.MAXIT},
      {a.IOUT >= 1, 9, "IOUT:", 1.0 * a.IOUT},
      {-2 <= a.IFAIL && a.IFAIL <= 0, 9, "IFAIL:", 1.0 * a.IFAIL},
      {a.STPMIN >= 0.0, 9, "STPMIN:", a.STPMIN},
      {a.TOL_NM >= 0.0, 9, "TOL_NM:", a.TOL_NM},
      {a.ACCQP >= 0.0, 9, "ACCQP:", a.ACCQP},
      {a.ACC > 0.0, 9, "ACC:", a.ACC},
  };
  for (const auto& check : checks)
    if (!check.good) return Refuse(a, check.ifail, check.name, &check.value);

  char text[100];
  if (a.LWA < RequiredWork(a)) {
    std::snprintf(text, sizeof text, "Length of WA too short, should be at least %lld",
                  static_cast<long long>(RequiredWork(a)));
    return Refuse(a, 5, text);
  }
  if (a.LKWA < 10) return Refuse(a, 5, "Length of KWA too short, should be at least 10");
  const std::int64_t active = 2 * static_cast<std::int64_t>(a.M) + 10;
  if (a.LACTIV < active) {
    std::snprintf(text, sizeof text, "Length of ACTIVE too short, should be at least %lld",
                  static_cast<long long>(active));
    return Refuse(a, 5, text);
  }
  return a.IFAIL != 0 || CheckStart(a);
}

}  // namespace corvath::algorithm::optimizer
