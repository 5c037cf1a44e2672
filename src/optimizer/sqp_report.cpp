#include "optimizer/sqp_run.h"

#include <iomanip>
#include <iostream>

namespace corvath::algorithm::optimizer {

namespace {

const char* Text(std::int32_t ifail) {
  switch (ifail) {
    case 1:
      return " *** ERROR 1: More than MAXIT iterations";
    case 2:
      return " *** ERROR 2: Search direction not profitable:  ";
    case 3:
      return " *** ERROR 3: Underflow in BFGS update";
    case 4:
      return " *** ERROR 4: Error in line search, e.g., more than MAXFUN iterations";
    case 5:
      return " *** ERROR 5: ";
    case 6:
      return " *** ERROR 6: Wrong input parameter ";
    case 7:
      return " *** ERROR 7: Underflow in D(T)*B*D and infeasible iterate";
    case 8:
      return " *** ERROR 8: Starting value no. ";
    case 9:
      return " *** ERROR 9: Wrong input parameter ";
    case 10:
      return " *** ERROR 10: Internal inconsistency in QL, division by zero";
    default:
      return " *** ERROR: Internal error in QL, IFAIL(QL) =";
  }
}

template <class Value>
void PrintValues(const char* title, std::int32_t count, const Value& value) {
  std::cout << "   " << title << '\n';
  for (std::int32_t i = 0; i < count; ++i)
    std::cout << std::setw(16) << value(i) << (i % 4 == 3 || i + 1 == count ? "\n" : "");
}

void PrintTable(const SqpRun& run, double f, const double* x, const double* u, const double* g) {
  const SqpArguments& a = run.Arguments();
  std::cout << "   Objective function value:      F(X)  = " << f << '\n';
  PrintValues("Solution values:               X     =", a.N, [&](int i) { return x[i]; });
  PrintValues("Multiplier values:             U     =", a.M + 2 * a.N, [&](int i) { return u[i]; });
  PrintValues("Constraint values:             G(X)  =", a.M, [&](int i) { return g[i]; });
  PrintValues("Distance from lower bound:     X-XL  =", a.N, [&](int i) { return x[i] - a.XL[i]; });
  PrintValues("Distance from upper bound:     XU-X  =", a.N, [&](int i) { return a.XU[i] - x[i]; });
}

}  // namespace

void Fail(const SqpArguments& a, std::int32_t ifail, const char* detail, const double* number) {
  a.IFAIL = ifail;
  if (a.IPRINT <= 0) return;
  std::cout << Text(ifail) << detail;
  if (number != nullptr) std::cout << ' ' << *number;
  if (ifail > 100) std::cout << ' ' << ifail;
  std::cout << '\n';
}

void PrintSqpWarning(const SqpArguments& a, const char* text) {
  if (a.IPRINT > 0) std::cout << " *** WARNING: " << text << '\n';
}

void PrintSqpResult(const SqpRun& run) {
  const SqpArguments& a = run.Arguments();
  std::cout << " --- Final Convergence Analysis at Last Iterate ---\n";
  PrintTable(run, a.F[0], a.X, a.U, a.G);
  std::cout << "   Number of function calls:      NFUNC = " << run.Counts().num_functions << '\n'
            << "   Number of gradient calls:      NGRAD = " << run.Counts().num_gradients << '\n'
            << "   Number of calls of QP solver:  NQL   = " << run.Counts().num_qps << '\n';
  if (run.Counts().best_iteration == 0 || run.Counts().best_iteration == run.Counts().iteration)
    return;
  std::cout << " --- Final Convergence Analysis at Best Iterate ---\n"
            << "   Best result at iteration:      ITER  = " << run.Counts().best_iteration << '\n';
  PrintTable(run, run.Numbers().best_f, run.Memory().best_x.data(), run.Memory().best_u.data(),
             run.Memory().best_g.data());
}

}  // namespace corvath::algorithm::optimizer
