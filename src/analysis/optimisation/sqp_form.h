#pragma once

#include "analysis/optimisation/nonlinear_program.h"

#include <Eigen/Core>

#include <limits>
#include <vector>

namespace corvath::analysis {

/// One smooth problem over the columns of a program, with or without an extra variable t:
///
///     minimise   w . columns(x) + v t
///     subject to   factor columns(x)[column] + offset + slope t >= 0   for each row
///
/// The forms of this folder: an objective itself; the largest of several terms, or of weighed
/// objectives, as t with a row for each (the epigraph); the least breach of the limits, as t.
struct SqpForm {
  struct Row {
    Eigen::Index column;
    double factor;
    double offset;
    double slope;
  };

  Eigen::VectorXd weights;  ///< w, one of each column
  bool has_t = false;
  double t_weight = 0.0;
  double t_unit = 1.0;  ///< how large differences in t are
  double t_lower = std::numeric_limits<double>::lowest();
  std::vector<Row> rows;

  /// The least t that its bound and all rows with a positive slope allow, the others left aside.
  double LeastT(const Eigen::RowVectorXd& columns) const;
  double Objective(const Eigen::RowVectorXd& columns) const;
};

struct SqpOutcome {
  Evaluated point;         ///< the last accepted iterate; its columns may be empty
  bool converged = false;  ///< at a point that meets the conditions of optimality
};

/// One run of the SQP core from `x`, with central differences within the bounds, in a box scaled by
/// the units of the inputs and with functions scaled by their slopes at the start.
/// @param held    inputs that keep their value
/// @param scales  see ColumnScales
/// @param margin  what each limit is to keep beyond its bound, in units of the scales
SqpOutcome RunSqp(const NonlinearProgram& program, const SqpForm& form,
                  const Eigen::VectorXd& scales, const std::vector<bool>& held,
                  const Evaluated& start, double margin);

/// What the objective of a form gains per unit of room.
struct Multipliers {
  Eigen::VectorXd rows;
  Eigen::VectorXd at_lower, at_upper;  ///< of the bounds, per input's unit; 0 where fixed
};

/// The non-negative multipliers of the rows and bounds that have no room at a point with which the
/// conditions of optimality hold best there, in least squares. They do not depend on how a search came
/// to the point: one that began there has moved no multiplier.
/// @param held, scales  as for RunSqp
Multipliers FindMultipliers(const NonlinearProgram& program, const SqpForm& form,
                            const Eigen::VectorXd& scales, const std::vector<bool>& held,
                            const Evaluated& at);

}  // namespace corvath::analysis
