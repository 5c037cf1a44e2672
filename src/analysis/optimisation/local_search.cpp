#include "analysis/optimisation/local_search.h"

#include "foundation/constants.h"

#include <algorithm>
#include <cmath>

namespace corvath::analysis {
namespace {

using math::kInfinity;
constexpr int kMaxRounds = 10;
/// Beyond it a breach, in units of the scales, is no matter of tolerances.
constexpr double kSmallBreach = 1e-3;
/// Margins grow from here until the method, which tolerates a little, moves inside.
constexpr double kLeastMargin = 1e-12;

SqpForm EmptyForm(const NonlinearProgram& program) {
  SqpForm form;
  form.weights = Eigen::VectorXd::Zero(program.NumColumns());
  return form;
}

void AddLimits(const NonlinearProgram& program, SqpForm& form) {
  for (Eigen::Index j = 0; j < program.num_limits; ++j)
    form.rows.push_back({program.NumTerms() + j, 1.0, 0.0, 0.0});
}

Eigen::Index FirstTerm(const NonlinearProgram& program, Eigen::Index objective) {
  Eigen::Index first = 0;
  for (Eigen::Index i = 0; i < objective; ++i)
    first += program.num_terms[static_cast<std::size_t>(i)];
  return first;
}

LocalOptimum Judge(const NonlinearProgram& program, const SqpForm& form,
                   const Eigen::VectorXd& scales, SqpOutcome outcome) {
  LocalOptimum optimum;
  optimum.objective = form.Objective(outcome.point.columns);
  if (std::isnan(optimum.objective)) optimum.objective = kInfinity;
  optimum.breach = LargestBreach(program, scales, outcome.point.columns);
  if (!outcome.point.IsFinite()) optimum.breach.relative = kInfinity;
  optimum.converged = outcome.converged;
  optimum.point = std::move(outcome.point);
  return optimum;
}

LocalOptimum Unmoved(const NonlinearProgram& program, const SqpForm& form,
                     const Eigen::VectorXd& scales, const Evaluated& point) {
  return Judge(program, form, scales, {point, false});
}

/// The point with the least breach that SQP finds from `start`.
Evaluated TowardsLimits(const NonlinearProgram& program, const Eigen::VectorXd& scales,
                        const std::vector<bool>& held, const Evaluated& start) {
  const SqpForm form = FeasibilityForm(program, scales);
  return RunSqp(program, form, scales, held, start, 0.0).point;
}

// Discrete inputs.

/// Position of the state nearest to `value`.
Eigen::Index StateOf(const Eigen::VectorXd& states, double value) {
  Eigen::Index nearest = 0;
  (states.array() - value).abs().minCoeff(&nearest);
  return nearest;
}

/// The points whose ordered discrete inputs take the states below and above `x`; all combinations
/// for the inputs that are farthest from a state, the nearest state for the others.
Eigen::MatrixXd RoundedPoints(const NonlinearProgram& program, const Eigen::RowVectorXd& x) {
  constexpr std::size_t kMaxSplit = 6;  // 64 combinations
  struct Split {
    Eigen::Index input;
    double below, above, distance;
  };
  std::vector<Split> splits;
  for (Eigen::Index i = 0; i < x.size(); ++i) {
    if (!program.IsDiscrete(i) || program.IsUnordered(i)) continue;
    const Eigen::VectorXd& states = program.states[static_cast<std::size_t>(i)];
    const double* const end = states.data() + states.size();
    const double* const above = std::lower_bound(states.data(), end, x(i));
    if (above == end || above == states.data()) continue;
    const double range = states(states.size() - 1) - states(0);
    splits.push_back({i, above[-1], *above, std::min(*above - x(i), x(i) - above[-1]) / range});
  }
  std::sort(splits.begin(), splits.end(),
            [](const Split& a, const Split& b) { return a.distance > b.distance; });
  if (splits.size() > kMaxSplit) splits.resize(kMaxSplit);
  const auto count = Eigen::Index{1} << splits.size();
  Eigen::MatrixXd points = program.Admit(x).replicate(count, 1);
  for (Eigen::Index k = 0; k < count; ++k)
    for (std::size_t s = 0; s < splits.size(); ++s)
      points(k, splits[s].input) = (k >> s & 1) != 0 ? splits[s].above : splits[s].below;
  return points;
}

/// Number of combinations of states, `limit` if there are more.
Eigen::Index NumCombinations(const NonlinearProgram& program, Eigen::Index limit) {
  Eigen::Index count = 1;
  for (const auto& states : program.states)
    if (states.size() > 0) count = std::min(limit, count * states.size());
  return count;
}

/// All other combinations of the states, if they are few; otherwise one step of each discrete input
/// (any step of an unordered one), and steps of two ordered ones at once.
Eigen::MatrixXd Neighbours(const NonlinearProgram& program, const Eigen::RowVectorXd& x) {
  constexpr Eigen::Index kFewCombinations = 16;
  constexpr std::size_t kMaxPaired = 8;
  std::vector<Eigen::RowVectorXd> points;
  std::vector<Eigen::Index> discrete, ordered;
  for (Eigen::Index i = 0; i < x.size(); ++i) {
    if (program.IsDiscrete(i)) discrete.push_back(i);
    if (program.IsDiscrete(i) && !program.IsUnordered(i)) ordered.push_back(i);
  }
  const auto states = [&](Eigen::Index i) -> const Eigen::VectorXd& {
    return program.states[static_cast<std::size_t>(i)];
  };
  if (NumCombinations(program, kFewCombinations + 1) <= kFewCombinations) {
    points.push_back(x);
    for (const Eigen::Index i : discrete) {
      std::vector<Eigen::RowVectorXd> grown;
      for (const auto& point : points)
        for (const double state : states(i)) {
          grown.push_back(point);
          grown.back()(i) = state;
        }
      points = std::move(grown);
    }
    points.erase(std::remove(points.begin(), points.end(), x), points.end());
  } else {
    const auto step = [&](Eigen::RowVectorXd& point, Eigen::Index i, Eigen::Index by) {
      const Eigen::Index to = StateOf(states(i), point(i)) + by;
      if (to < 0 || to >= states(i).size()) return false;
      point(i) = states(i)(to);
      return true;
    };
    for (const Eigen::Index i : discrete) {
      const Eigen::Index reach = program.IsUnordered(i) ? states(i).size() : 1;
      for (Eigen::Index by = -reach; by <= reach; ++by) {
        Eigen::RowVectorXd point = x;
        if (by != 0 && step(point, i, by)) points.push_back(point);
      }
    }
    if (ordered.size() <= kMaxPaired)
      for (std::size_t a = 0; a < ordered.size(); ++a)
        for (std::size_t b = a + 1; b < ordered.size(); ++b)
          for (const Eigen::Index by_a : {-1, 1})
            for (const Eigen::Index by_b : {-1, 1}) {
              Eigen::RowVectorXd point = x;
              if (step(point, ordered[a], by_a) && step(point, ordered[b], by_b))
                points.push_back(point);
            }
  }
  Eigen::MatrixXd rows(static_cast<Eigen::Index>(points.size()), x.size());
  for (std::size_t k = 0; k < points.size(); ++k)
    rows.row(static_cast<Eigen::Index>(k)) = points[k];
  return rows;
}

/// The best that SQP on the continuous inputs makes of the most promising `points`, or `best`.
LocalOptimum TryStates(const NonlinearProgram& program, const SqpForm& form,
                       const Eigen::VectorXd& scales, const Eigen::MatrixXd& points,
                       LocalOptimum best) {
  constexpr std::size_t kMaxTries = 12;
  if (points.rows() == 0) return best;
  const Eigen::MatrixXd values = program.values(points);
  std::vector<LocalOptimum> candidates;
  for (Eigen::Index k = 0; k < points.rows(); ++k)
    candidates.push_back(Unmoved(program, form, scales, {points.row(k), values.row(k)}));
  std::sort(candidates.begin(), candidates.end(), IsBetter);
  const std::vector<bool> held = HeldDiscrete(program);
  if (std::all_of(held.begin(), held.end(), [](bool is_held) { return is_held; })) {
    candidates.front().converged = true;
    return IsBetter(candidates.front(), best) ? candidates.front() : best;
  }
  for (std::size_t k = 0; k < std::min(candidates.size(), kMaxTries); ++k) {
    LocalOptimum found = SearchLocally(program, form, scales, held, candidates[k].point);
    if (IsBetter(found, best)) best = std::move(found);
  }
  return best;
}

}  // namespace

SqpForm ObjectiveForm(const NonlinearProgram& program, const Eigen::VectorXd& scales,
                      Eigen::Index objective) {
  SqpForm form = EmptyForm(program);
  const Eigen::Index first = FirstTerm(program, objective);
  const Eigen::Index count = program.num_terms[static_cast<std::size_t>(objective)];
  if (count == 1) {
    form.weights(first) = 1.0;
  } else {
    form.has_t = true;
    form.t_weight = 1.0;
    form.t_unit = scales.segment(first, count).maxCoeff();
    for (Eigen::Index k = 0; k < count; ++k) form.rows.push_back({first + k, -1.0, 0.0, 1.0});
  }
  AddLimits(program, form);
  return form;
}

SqpForm ReferenceForm(const NonlinearProgram& program, const Eigen::VectorXd& scales,
                      const Eigen::VectorXd& reference, const Eigen::VectorXd& direction) {
  constexpr double kShareOfSum = 1e-4;
  SqpForm form = EmptyForm(program);
  form.has_t = true;
  form.t_weight = 1.0;
  form.t_unit = 0.0;
  for (Eigen::Index i = 0; i < program.NumObjectives(); ++i) {
    const Eigen::Index first = FirstTerm(program, i);
    const Eigen::Index count = program.num_terms[static_cast<std::size_t>(i)];
    for (Eigen::Index k = first; k < first + count; ++k) {
      form.rows.push_back({k, -1.0, reference(i), direction(i)});
      form.t_unit = std::max(form.t_unit, scales(k) / direction(i));
    }
    // The largest of several terms has no single column.
    if (count == 1) form.weights(first) = kShareOfSum / direction(i);
  }
  AddLimits(program, form);
  return form;
}

SqpForm FeasibilityForm(const NonlinearProgram& program, const Eigen::VectorXd& scales) {
  constexpr double kInside = 1e-4;
  SqpForm form = EmptyForm(program);
  form.has_t = true;
  form.t_weight = 1.0;
  form.t_lower = -kInside;
  for (Eigen::Index j = program.NumTerms(); j < program.NumColumns(); ++j)
    form.rows.push_back({j, 1.0 / scales(j), 0.0, 1.0});
  return form;
}

std::vector<bool> HeldDiscrete(const NonlinearProgram& program, bool unordered_alone) {
  std::vector<bool> held(static_cast<std::size_t>(program.NumInputs()));
  for (Eigen::Index i = 0; i < program.NumInputs(); ++i)
    held[static_cast<std::size_t>(i)] =
        unordered_alone ? program.IsUnordered(i) : program.IsDiscrete(i);
  return held;
}

bool IsBetter(const LocalOptimum& a, const LocalOptimum& b) {
  const auto rank = [](const LocalOptimum& optimum) {
    return optimum.breach.relative <= 0.0 ? 0 : optimum.IsFeasible() ? 1 : 2;
  };
  if (rank(a) != rank(b)) return rank(a) < rank(b);
  return a.IsFeasible() ? a.objective < b.objective : a.breach.relative < b.breach.relative;
}

LocalOptimum SearchLocally(const NonlinearProgram& program, const SqpForm& form,
                           const Eigen::VectorXd& scales, const std::vector<bool>& held,
                           const Evaluated& start) {
  LocalOptimum best = Unmoved(program, form, scales, start);
  if (!start.IsFinite()) return best;
  Evaluated from = start;
  double margin = 0.0;
  bool restored = false;
  for (int round = 0; round < kMaxRounds; ++round) {
    LocalOptimum found =
        Judge(program, form, scales, RunSqp(program, form, scales, held, from, margin));
    const double breach = found.breach.relative;
    const bool improved = IsBetter(found, best);
    const double gain = best.objective - found.objective;
    const bool was_feasible = best.IsFeasible();
    from = found.point;
    if (improved || (found.IsFeasible() && found.converged && found.objective <= best.objective))
      best = found;
    if (breach > kSmallBreach) {
      if (restored) break;
      restored = true;
      from = TowardsLimits(program, scales, held, from);
      const LocalOptimum nearest = Unmoved(program, form, scales, from);
      if (IsBetter(nearest, best)) best = nearest;
      if (!nearest.IsFeasible()) break;
    } else if (breach > 0.0) {
      margin = std::max(10.0 * margin + 1.5 * breach, kLeastMargin);
    } else if (found.converged) {
      break;
    } else if (!improved || (was_feasible && gain <= 1e-9 * std::abs(best.objective))) {
      break;  // where differences end: the method could not go on from there
    }
  }
  return best;
}

LocalOptimum SearchMixed(const NonlinearProgram& program, const SqpForm& form,
                         const Eigen::VectorXd& scales, const Evaluated& start) {
  constexpr int kMaxMoves = 100;
  if (!program.HasDiscrete())
    return SearchLocally(program, form, scales, HeldDiscrete(program), start);
  const LocalOptimum relaxed =
      SearchLocally(program, form, scales, HeldDiscrete(program, true), start);
  LocalOptimum best = Unmoved(program, form, scales, start);
  best = TryStates(program, form, scales, RoundedPoints(program, relaxed.point.x), std::move(best));
  for (int move = 0; move < kMaxMoves; ++move) {
    LocalOptimum next = TryStates(program, form, scales, Neighbours(program, best.point.x), best);
    if (!IsBetter(next, best)) break;
    best = std::move(next);
  }
  return best;
}

}  // namespace corvath::analysis
