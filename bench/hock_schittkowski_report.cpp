// Runs the SQP core over the collected problems of Hock and Schittkowski and prints one line per
// problem: how it ended, and what it took, with analytic gradients and with central differences.
//
//     hock_schittkowski_report
//
// Beside it, where the build found NLopt, the function calls of another SQP code in the same run.
// What counts is the calls up to the first point that meets the target: it does not depend on when
// a code decides to stop. No totals published for other codes are quoted, as they were counted to
// other targets.

#include "known_shortfalls.h"
#include "literature/collected_run.h"
#include "literature/hock_schittkowski.h"
#include "slsqp_yardstick.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

using literature::CollectedProblem;
using literature::CollectedRun;
using literature::Gradients;

struct Totals {
  int num_solved = 0, num_functions = 0, num_gradients = 0;

  void Add(const CollectedProblem& problem, const CollectedRun& run) {
    num_solved += literature::IsSolved(problem, run);
    num_functions += run.num_functions;
    num_gradients += run.num_gradients;
  }
};

void PrintRun(const CollectedProblem& problem, const CollectedRun& run) {
  std::printf(" | %c %5d %5d %5d %9.1e %8.1e", literature::IsSolved(problem, run) ? ' ' : '*',
              run.ifail, run.num_functions, run.num_gradients, run.f - problem.optimum,
              run.violation);
}

void PrintTotals(const char* gradients, const Totals& totals, std::size_t num_problems) {
  std::printf("%-20s solved %d of %zu; %d function calls, %d gradient calls\n", gradients,
              totals.num_solved, num_problems, totals.num_functions, totals.num_gradients);
}

/// Whether the runs end as they are known to: solved, or where the table of shortfalls says.
bool EndsAsKnown(const CollectedProblem& problem, Gradients gradients, const CollectedRun& run) {
  const bench::KnownShortfall* const known = bench::FindShortfall(problem.number);
  if (known == nullptr) return literature::IsSolved(problem, run);
  const CollectedRun strict = literature::RunCollected(problem, gradients, 1, 1e-14);
  return run.ifail == 0 && !literature::IsSolved(problem, run) &&
         std::abs(run.f - known->f) <= known->accuracy * std::max(1.0, std::abs(known->f)) &&
         run.violation <= known->violation &&
         literature::IsSolved(problem, strict) == known->stops_early;
}

}  // namespace

/// 1 if a problem ends otherwise than it is known to.
int main() {
  const auto& problems = literature::HockSchittkowski();
  std::printf(
      "W. Hock, K. Schittkowski, Test Examples for Nonlinear Programming Codes, Springer 1981\n"
      "Accuracy 1e-7, at most 500 iterations, one point per line-search trial. Solved (else *):\n"
      "|f - f*| <= 1e-6 max(1, |f*|) and no constraint violated by more than 1e-7\n\n"
      "                 | analytic gradients                    | central differences%s\n"
      "   no  n  me  mi |   IFAIL calls grads    f - f* violated |   IFAIL calls grads    f - f* "
      "violated%s\n",
      bench::HasYardstick() ? "                   | calls to the target" : "",
      bench::HasYardstick() ? " | here SLSQP" : "");
  Totals analytic, central;
  std::vector<int> surprises;
  int num_first_60 = 0, num_strict = 0, num_both = 0, calls_here = 0, calls_there = 0,
      reached_here = 0, reached_there = 0;
  for (std::size_t k = 0; k < problems.size(); ++k) {
    const CollectedProblem& problem = problems[k];
    const CollectedRun exact = literature::RunCollected(problem, Gradients::kAnalytic);
    const CollectedRun differences = literature::RunCollected(problem, Gradients::kCentral);
    if (!EndsAsKnown(problem, Gradients::kAnalytic, exact) ||
        !EndsAsKnown(problem, Gradients::kCentral, differences))
      surprises.push_back(problem.number);
    analytic.Add(problem, exact);
    central.Add(problem, differences);
    num_strict += literature::IsSolved(
        problem, literature::RunCollected(problem, Gradients::kAnalytic, 1, 1e-10));
    num_first_60 += k < 60 && literature::IsSolved(problem, exact);
    std::printf("%5d %2d %3d %3d", problem.number, problem.NumVariables(), problem.num_equalities,
                problem.num_inequalities);
    PrintRun(problem, exact);
    PrintRun(problem, differences);
    if (bench::HasYardstick()) {
      const bench::YardstickRun other = bench::RunYardstick(problem);
      std::printf(" | %4d %5d", exact.calls_to_target, other.calls_to_target);
      reached_here += exact.calls_to_target > 0;
      reached_there += other.calls_to_target > 0;
      if (exact.calls_to_target > 0 && other.calls_to_target > 0) {
        ++num_both;
        calls_here += exact.calls_to_target;
        calls_there += other.calls_to_target;
      }
    }
    std::printf("\n");
  }

  std::printf("\n");
  PrintTotals("Analytic gradients:", analytic, problems.size());
  PrintTotals("Central differences:", central, problems.size());
  std::printf("Accuracy 1e-10:      solved %d of %zu, with analytic gradients\n", num_strict,
              problems.size());
  std::printf("Of the first 60 problems, by number, %d are solved with analytic gradients.\n",
              num_first_60);
  if (bench::HasYardstick())
    std::printf(
        "Calls to the target: %d here, %d by SLSQP (NLopt), over the %d problems where both meet "
        "it\n(here %d do, SLSQP %d; 0: it does not).\n",
        calls_here, calls_there, num_both, reached_here, reached_there);
  std::printf("\nNot solved, with either kind of gradients:\n");
  for (const CollectedProblem& problem : problems)
    if (const bench::KnownShortfall* known = bench::FindShortfall(problem.number))
      std::printf("%5d  f = %.10g  %s\n", problem.number, known->f, known->reason);
  for (const int number : surprises) std::printf("\n%5d  ENDS OTHERWISE THAN KNOWN\n", number);
  return surprises.empty() ? 0 : 1;
}
