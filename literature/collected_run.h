#pragma once

#include "literature/hock_schittkowski.h"
#include "optimizer/nlpqlp_interface.h"

#include <algorithm>
#include <cmath>

namespace literature {

enum class Gradients { kAnalytic, kCentral };

/// How a run over a collected problem ended.
struct CollectedRun {
  int ifail = 0;
  int num_functions = 1;  ///< rounds of the line search and the start
  int num_gradients = 1;
  int calls_to_target = 0;  ///< function calls up to the first point that meets IsSolved; 0: none
  double f = 0.0;
  double violation = 0.0;  ///< largest |g_j| of the equalities, -g_j of the inequalities
};

/// Largest |g_j| of the equalities, -g_j of the inequalities; 0 if there are none.
inline double Violation(const CollectedProblem& problem, const double* g) {
  double worst = 0.0;
  for (int j = 0; j < problem.NumConstraints(); ++j)
    worst = std::max(worst, j < problem.num_equalities ? std::abs(g[j]) : -g[j]);
  return worst;
}

/// The published optimum and feasibility.
inline bool MeetsTarget(const CollectedProblem& problem, double f, double violation) {
  return violation <= 1e-7 &&
         std::abs(f - problem.optimum) <= 1e-6 * std::max(1.0, std::abs(problem.optimum));
}

/// Computes the collected problem for the reverse communication of the core.
class CollectedClient {
 public:
  CollectedClient(const CollectedProblem& problem,
                  corvath::algorithm::optimizer::NLPQLPInterface& core, Gradients gradients)
      : problem_(problem), core_(core), gradients_(gradients) {}

  void SetValues(int column) {
    const double* const x = core_.X.col(column).data();
    Dual g[1 + kMaxConstraints];
    core_.F(column) = Evaluate(x, g).value;
    for (int j = 0; j < core_.M; ++j) core_.G(j, column) = g[j + 1].value;
    ++num_values_;
    if (calls_to_target_ == 0 && MeetsTarget(problem_, core_.F(column), Violation(column)))
      calls_to_target_ = num_values_;
  }

  void SetGradients() {
    double* const x = core_.X.col(0).data();
    Dual g[1 + kMaxConstraints];
    if (gradients_ == Gradients::kAnalytic) {
      const Dual f = Evaluate(x, g);
      for (int i = 0; i < core_.N; ++i) {
        core_.DF(i) = f.slope[static_cast<std::size_t>(i)];
        for (int j = 0; j < core_.M; ++j)
          core_.DG(j, i) = g[j + 1].slope[static_cast<std::size_t>(i)];
      }
      return;
    }
    Dual g_below[1 + kMaxConstraints];
    for (int i = 0; i < core_.N; ++i) {
      const double at = x[i], h = 1e-6 * std::max(1.0, std::abs(at));
      x[i] = at + h;
      const double above = x[i], f = Evaluate(x, g).value;
      x[i] = at - h;
      const double width = above - x[i], f_below = Evaluate(x, g_below).value;
      x[i] = at;
      core_.DF(i) = (f - f_below) / width;
      for (int j = 0; j < core_.M; ++j)
        core_.DG(j, i) = (g[j + 1].value - g_below[j + 1].value) / width;
    }
  }

  double Violation(int column) const {
    return literature::Violation(problem_, core_.G.col(column).data());
  }
  int CallsToTarget() const { return calls_to_target_; }

 private:
  Dual Evaluate(const double* x, Dual* g) const { return EvaluateAt(problem_, x, g); }

  const CollectedProblem& problem_;
  corvath::algorithm::optimizer::NLPQLPInterface& core_;
  Gradients gradients_;
  int num_values_ = 0, calls_to_target_ = 0;
};

/// From the published start, moved to the bounds where it violates them, with up to 500 iterations.
/// @param step  makes the calls of the core
template <class Step>
CollectedRun RunCollected(const CollectedProblem& problem, Gradients gradients, int num_parallel,
                          double accuracy, Step&& step) {
  corvath::algorithm::optimizer::NLPQLPInterface core(
      problem.NumVariables(), problem.num_equalities, problem.num_inequalities, num_parallel);
  core.MAXIT = 500;
  core.ACC = accuracy;
  for (int i = 0; i < core.N; ++i) {
    core.XL(i) = problem.Lower(i);
    core.XU(i) = problem.Upper(i);
    core.X(i, 0) = std::clamp(problem.start[static_cast<std::size_t>(i)], core.XL(i), core.XU(i));
  }
  if (num_parallel > 1) core.STPMIN = 1e-4;
  CollectedClient client(problem, core, gradients);
  client.SetValues(0);
  client.SetGradients();
  CollectedRun run;
  for (step(core); core.IFAIL < 0; step(core)) {
    if (core.IFAIL == -1) {
      ++run.num_functions;
      for (int column = 0; column < num_parallel; ++column) client.SetValues(column);
    } else {
      ++run.num_gradients;
      client.SetGradients();
    }
  }
  run.ifail = core.IFAIL;
  run.f = core.F(0);
  run.violation = client.Violation(0);
  run.calls_to_target = client.CallsToTarget();
  return run;
}

inline CollectedRun RunCollected(const CollectedProblem& problem, Gradients gradients,
                                 int num_parallel = 1, double accuracy = 1e-7) {
  return RunCollected(problem, gradients, num_parallel, accuracy, [](auto& core) { core.Step(); });
}

inline bool IsSolved(const CollectedProblem& problem, const CollectedRun& run) {
  return run.ifail == 0 && MeetsTarget(problem, run.f, run.violation);
}

}  // namespace literature
