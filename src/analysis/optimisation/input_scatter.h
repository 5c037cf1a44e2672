#pragma once

#include "analysis/input_space.h"
#include "analysis/study_model.h"

#include <Eigen/Core>

#include <functional>

namespace corvath::analysis {

/// How inputs scatter around a design, and what values make of it. The scatter keeps its shape
/// wherever the design lies: deviations are those of the distributions from their means.
class InputScatter {
 public:
  /// @throws AnalysisError  see InputSpace
  InputScatter(const StudyModel& model, const InputSpace::Choice& choice);

  /// Mean values and standard deviations at one design each.
  struct Moments {
    Eigen::MatrixXd mean, deviation;  ///< n x q
  };

  /// Moments of the columns of `values` around the rows of `x`, from a parabola along each axis of the
  /// independent standard normal space through 0 and +-sqrt(3), the nodes of the Gauss-Hermite
  /// quadrature with three points:
  ///
  ///     mean = f(0) + sum b_i,   variance = sum (a_i^2 + 2 b_i^2)   for f = f(0) + a_i u + b_i u^2
  ///
  /// Exact for a sum of parabolas in independent normal inputs; products of inputs are left out. Takes
  /// 2 d + 1 designs for each row, for d inputs that scatter, and is as smooth as the values.
  Moments Propagate(const Eigen::MatrixXd& x,
                    const std::function<Eigen::MatrixXd(const Eigen::MatrixXd&)>& values) const;

 private:
  Eigen::MatrixXd deviations_;  ///< 2 d x m: at +sqrt(3) and -sqrt(3) of each axis
};

}  // namespace corvath::analysis
