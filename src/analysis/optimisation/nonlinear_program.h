#pragma once

#include <Eigen/Core>

#include <functional>
#include <string>
#include <vector>

namespace corvath::analysis {

/// What an optimisation is about, free of where its numbers come from:
///
///     minimise f_1(x), ..., f_k(x)   subject to   g_j(x) >= 0,   lower <= x <= upper,
///                                                 x_i among its states, where it has some
///
/// An objective is the largest of its terms, so that the largest of many stresses stays a smooth
/// problem: each term is a column of its own. Columns of `values`: the terms of the first objective,
/// of the next ones, then the limits.
struct NonlinearProgram {
  Eigen::VectorXd lower, upper;         ///< n, finite, in the inputs' units
  std::vector<Eigen::VectorXd> states;  ///< none, or n: ascending; no entries: continuous
  /// Whether there is no order in the states of an input (words, for example), so that nothing
  /// between them means anything. None, or n.
  std::vector<bool> unordered;
  std::vector<Eigen::Index> num_terms{1};  ///< of each objective
  Eigen::Index num_limits = 0;
  /// From points (k x n) to k x NumColumns() values; NaN where a point fails. Several threads call
  /// it at once. What it throws ends the search.
  std::function<Eigen::MatrixXd(const Eigen::MatrixXd& x)> values;
  /// Step of the differences for gradients, as a share of each range, or of its span if that is
  /// wider: within a narrow range rounding would be all that they show.
  double difference = 1e-4;
  Eigen::VectorXd
      spans;  ///< none, or n: over which the values vary noticeably, in the inputs' units

  Eigen::Index NumInputs() const { return lower.size(); }
  Eigen::Index NumObjectives() const { return static_cast<Eigen::Index>(num_terms.size()); }
  Eigen::Index NumTerms() const;
  Eigen::Index NumColumns() const { return NumTerms() + num_limits; }
  bool IsDiscrete(Eigen::Index input) const {
    return !states.empty() && states[static_cast<std::size_t>(input)].size() > 0;
  }
  bool IsUnordered(Eigen::Index input) const {
    return IsDiscrete(input) && !unordered.empty() && unordered[static_cast<std::size_t>(input)];
  }
  bool HasDiscrete() const;
  double GetSpan(Eigen::Index input) const { return spans.size() > 0 ? spans(input) : 0.0; }
  /// In which an input moves: its range, unless that is a small part of its span. The gradient over a
  /// share of such a range would be too small for a stopping test to see.
  double GetUnit(Eigen::Index input) const;
  /// Of the differences, such that two of them fit beside any point of the range.
  double GetStep(Eigen::Index input) const;

  /// The objectives of one row of `values`.
  Eigen::VectorXd Objectives(const Eigen::RowVectorXd& columns) const;

  /// Each discrete input to its nearest state, the others into their bounds.
  Eigen::RowVectorXd Admit(Eigen::RowVectorXd x) const;

  /// @throws std::logic_error  sizes disagree, a bound is not finite or above its partner, there is
  ///                           no objective or no function
  void Check() const;
};

/// A point and its row of values.
struct Evaluated {
  Eigen::RowVectorXd x;
  Eigen::RowVectorXd columns;

  bool IsFinite() const { return columns.size() > 0 && columns.allFinite(); }
};

/// Evaluates one point.
Evaluated EvaluateAt(const NonlinearProgram& program, const Eigen::RowVectorXd& x);

/// How large differences in each column are: the standard deviation over a sample, so that breaches
/// of limits in different units compare. Never 0.
Eigen::VectorXd ColumnScales(const Eigen::MatrixXd& values);

/// By how much a point breaks limits.
struct Breach {
  double relative = 0.0;    ///< the largest, in units of the scales; infinite where a value is NaN
  Eigen::Index limit = -1;  ///< whose; -1: none is broken
};
Breach LargestBreach(const NonlinearProgram& program, const Eigen::VectorXd& scales,
                     const Eigen::RowVectorXd& columns);

/// A limit that is missed by less than this share of its scale counts as kept: rounding.
constexpr double kRounding = 1e-10;

}  // namespace corvath::analysis
