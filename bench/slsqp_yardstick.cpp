#include "slsqp_yardstick.h"

#include "literature/collected_run.h"

#ifdef ZEL_BENCH_NLOPT

#include <nlopt.h>

#include <algorithm>
#include <array>
#include <vector>

namespace bench {
namespace {

using literature::CollectedProblem;
using literature::Dual;

/// Objective and constraints are asked for apart, at the same point: they are evaluated once.
struct Client {
  explicit Client(const CollectedProblem& of) : problem(of) {}

  const CollectedProblem& problem;
  YardstickRun run;
  std::array<double, literature::kMaxVariables> at{};
  bool is_known = false;
  Dual f;
  Dual g[literature::kMaxConstraints + 1];

  void Evaluate(unsigned n, const double* x) {
    if (is_known && std::equal(x, x + n, at.begin())) return;
    is_known = true;
    std::copy_n(x, n, at.begin());
    f = literature::EvaluateAt(problem, x, g);
  }
};

double Objective(unsigned n, const double* x, double* gradient, void* data) {
  auto& client = *static_cast<Client*>(data);
  const CollectedProblem& problem = client.problem;
  client.Evaluate(n, x);
  if (gradient != nullptr) std::copy_n(client.f.slope.begin(), n, gradient);
  ++client.run.num_calls;
  double values[literature::kMaxConstraints];
  for (int j = 0; j < problem.NumConstraints(); ++j) values[j] = client.g[j + 1].value;
  if (client.run.calls_to_target == 0 &&
      literature::MeetsTarget(problem, client.f.value, literature::Violation(problem, values)))
    client.run.calls_to_target = client.run.num_calls;
  return client.f.value;
}

/// `m` constraints from number `first`, times `sign`.
void Constraints(Client& client, int first, unsigned m, double sign, double* values, unsigned n,
                 const double* x, double* gradient) {
  client.Evaluate(n, x);
  for (unsigned j = 0; j < m; ++j) {
    const Dual& one = client.g[static_cast<unsigned>(first) + j + 1];
    values[j] = sign * one.value;
    for (unsigned i = 0; i < n && gradient != nullptr; ++i)
      gradient[j * n + i] = sign * one.slope[i];
  }
}

void Equalities(unsigned m, double* values, unsigned n, const double* x, double* gradient,
                void* data) {
  Constraints(*static_cast<Client*>(data), 0, m, 1.0, values, n, x, gradient);
}

void Inequalities(unsigned m, double* values, unsigned n, const double* x, double* gradient,
                  void* data) {  // here feasible means <= 0
  auto& client = *static_cast<Client*>(data);
  Constraints(client, client.problem.num_equalities, m, -1.0, values, n, x, gradient);
}

}  // namespace

bool HasYardstick() {
  return true;
}

YardstickRun RunYardstick(const CollectedProblem& problem) {
  const int n = problem.NumVariables();
  Client client(problem);
  const nlopt_opt code = nlopt_create(NLOPT_LD_SLSQP, static_cast<unsigned>(n));
  std::vector<double> x;
  for (int i = 0; i < n; ++i) {
    const double lower = problem.Lower(i), upper = problem.Upper(i);
    if (lower > -literature::kNone) nlopt_set_lower_bound(code, i, lower);
    if (upper < literature::kNone) nlopt_set_upper_bound(code, i, upper);
    x.push_back(std::clamp(problem.start[static_cast<std::size_t>(i)], lower, upper));
  }
  nlopt_set_min_objective(code, Objective, &client);
  const std::vector<double> tolerances(literature::kMaxConstraints, 1e-8);
  if (problem.num_equalities > 0)
    nlopt_add_equality_mconstraint(code, static_cast<unsigned>(problem.num_equalities), Equalities,
                                   &client, tolerances.data());
  if (problem.num_inequalities > 0)
    nlopt_add_inequality_mconstraint(code, static_cast<unsigned>(problem.num_inequalities),
                                     Inequalities, &client, tolerances.data());
  nlopt_set_ftol_rel(code, 1e-10);
  nlopt_set_xtol_rel(code, 1e-10);
  nlopt_set_maxeval(code, 2000);
  nlopt_optimize(code, x.data(), &client.run.f);
  nlopt_destroy(code);
  Dual g[literature::kMaxConstraints + 1];
  client.run.f = literature::EvaluateAt(problem, x.data(), g).value;
  double values[literature::kMaxConstraints];
  for (int j = 0; j < problem.NumConstraints(); ++j) values[j] = g[j + 1].value;
  client.run.violation = literature::Violation(problem, values);
  return client.run;
}

}  // namespace bench

#else

namespace bench {

bool HasYardstick() {
  return false;
}
YardstickRun RunYardstick(const literature::CollectedProblem&) {
  return {};
}

}  // namespace bench

#endif
