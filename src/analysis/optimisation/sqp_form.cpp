#include "analysis/optimisation/sqp_form.h"

#include "optimizer/nlpqlp_interface.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvath::analysis {
namespace {

using Core = algorithm::optimizer::NLPQLPInterface;

/// Of the stopping test, whose square root is the breach that it tolerates in scaled rows.
constexpr double kAccuracy = 1e-13;
constexpr int kMaxIterations = 200;
constexpr int kMaxTrials = 20;  // of a line search

/// The run of one form: between the core, which moves the inputs that are free, as shares of their
/// ranges, and t in its unit, and the program.
class FormRun {
 public:
  FormRun(const NonlinearProgram& program, const SqpForm& form, const Eigen::VectorXd& scales,
          const std::vector<bool>& held, const Evaluated& start, double margin)
      : program_(program), form_(form), scales_(scales), margin_(margin), x_(start.x) {
    for (Eigen::Index i = 0; i < program.NumInputs(); ++i)
      if (!held[static_cast<std::size_t>(i)] && program.upper(i) > program.lower(i))
        free_.push_back(i);
    num_free_ = static_cast<Eigen::Index>(free_.size());
  }

  SqpOutcome Run(const Evaluated& start) {
    SqpOutcome outcome;
    const Eigen::Index n = program_.NumInputs();
    outcome.at_lower = outcome.at_upper = Eigen::VectorXd::Zero(n);
    outcome.multipliers = Eigen::VectorXd::Zero(NumRows());
    outcome.point = start;
    outcome.converged = num_free_ == 0;
    if (num_free_ == 0 || !start.IsFinite()) return outcome;

    Eigen::MatrixXd slopes;
    if (!Slopes(start, slopes)) return outcome;
    SetUnits(start, slopes);
    const Eigen::Index n_core = num_free_ + (form_.has_t ? 1 : 0);
    Core core(static_cast<std::int32_t>(n_core), 0, static_cast<std::int32_t>(NumRows()), 1);
    core.ACC = kAccuracy;
    core.MAXIT = kMaxIterations;
    core.MAXFUN = kMaxTrials;
    core.XL.head(num_free_).setZero();
    core.XU.head(num_free_).setOnes();
    core.X.col(0).head(num_free_) = ToShares(start.x);
    if (form_.has_t) {
      core.XL(num_free_) = std::max(form_.t_lower / form_.t_unit, core.XL(num_free_));
      core.X(num_free_, 0) = form_.LeastT(start.columns) / form_.t_unit;
    }
    current_ = start;
    SetValues(core, start.columns);
    SetSlopes(core, slopes);
    Evaluated trial;
    for (core.Step(); core.IFAIL < 0; core.Step()) {
      if (core.IFAIL == -1) {
        trial = EvaluateAt(program_, FromShares(core));
        SetValues(core, trial.columns);
      } else {
        current_ = trial;  // the core accepts what it asked for last
        if (!Slopes(current_, slopes)) break;
        SetSlopes(core, slopes);
      }
    }
    outcome.point = current_;
    outcome.converged = core.IFAIL == 0;
    if (core.IFAIL < 0) return outcome;  // no gradient there
    for (Eigen::Index k = 0; k < NumRows(); ++k)
      outcome.multipliers(k) = core.U(k) * f_unit_ / row_units_(k);
    for (Eigen::Index i = 0; i < num_free_; ++i) {
      const Eigen::Index input = free_[static_cast<std::size_t>(i)];
      const double per_unit = f_unit_ / (program_.upper(input) - program_.lower(input));
      outcome.at_lower(input) = core.U(NumRows() + i) * per_unit;
      outcome.at_upper(input) = core.U(NumRows() + n_core + i) * per_unit;
    }
    return outcome;
  }

 private:
  Eigen::Index NumRows() const { return static_cast<Eigen::Index>(form_.rows.size()); }

  Eigen::VectorXd ToShares(const Eigen::RowVectorXd& x) const {
    Eigen::VectorXd shares(num_free_);
    for (Eigen::Index i = 0; i < num_free_; ++i) {
      const Eigen::Index input = free_[static_cast<std::size_t>(i)];
      shares(i) = std::clamp(
          (x(input) - program_.lower(input)) / (program_.upper(input) - program_.lower(input)), 0.0,
          1.0);
    }
    return shares;
  }

  Eigen::RowVectorXd FromShares(const Core& core) const {
    Eigen::RowVectorXd x = x_;
    for (Eigen::Index i = 0; i < num_free_; ++i) {
      const Eigen::Index input = free_[static_cast<std::size_t>(i)];
      const double share = core.X(i, 0), lower = program_.lower(input),
                   upper = program_.upper(input);
      x(input) = share == 1.0 ? upper : std::clamp(lower + share * (upper - lower), lower, upper);
    }
    return x;
  }

  /// Slopes of the columns by the shares of the free inputs, columns x free. Central differences;
  /// at a bound, or where one side fails, over two steps to the other side. False where an input has
  /// no usable neighbours.
  bool Slopes(const Evaluated& at, Eigen::MatrixXd& slopes) const {
    const double h = program_.difference;
    Eigen::MatrixXd points = at.x.replicate(2 * num_free_, 1);
    Eigen::VectorXd first(num_free_), second(num_free_);
    for (Eigen::Index i = 0; i < num_free_; ++i) {
      const Eigen::Index input = free_[static_cast<std::size_t>(i)];
      const double range = program_.upper(input) - program_.lower(input);
      const bool low = at.x(input) - h * range < program_.lower(input);
      const bool high = at.x(input) + h * range > program_.upper(input);
      first(i) = low ? h : -h;
      second(i) = low ? 2.0 * h : high ? -2.0 * h : h;
      points(2 * i, input) += first(i) * range;
      points(2 * i + 1, input) += second(i) * range;
    }
    const Eigen::MatrixXd values = program_.values(points);
    slopes.resize(program_.NumColumns(), num_free_);
    for (Eigen::Index i = 0; i < num_free_; ++i) {
      const double a = first(i), b = second(i);
      const Eigen::RowVectorXd da = (values.row(2 * i) - at.columns) / a;
      const Eigen::RowVectorXd db = (values.row(2 * i + 1) - at.columns) / b;
      // The parabola through the three points; over both sides alike it is the central difference.
      slopes.col(i) = ((b * da - a * db) / (b - a)).transpose();
      if (!slopes.col(i).allFinite()) slopes.col(i) = (da.allFinite() ? da : db).transpose();
      if (!slopes.col(i).allFinite()) return false;
    }
    return true;
  }

  /// Rows and objective come to slopes of about 1 at the start, so that the first step, along the
  /// gradient, crosses a fair part of the box; a row that is flat there goes by its scale.
  void SetUnits(const Evaluated& at, const Eigen::MatrixXd& slopes) {
    constexpr double kFlat = 1e-3;
    row_units_.resize(NumRows());
    for (Eigen::Index k = 0; k < NumRows(); ++k) {
      const SqpForm::Row& row = form_.rows[static_cast<std::size_t>(k)];
      const double slope = slopes.row(row.column).cwiseAbs().maxCoeff();
      row_units_(k) = std::abs(row.factor) * std::max(slope, kFlat * scales_(row.column));
      if (form_.has_t && row.slope != 0.0)
        row_units_(k) = std::max(row_units_(k), std::abs(row.slope) * form_.t_unit * kFlat);
    }
    const Eigen::RowVectorXd gradient = form_.weights.transpose() * slopes;
    double scale = form_.weights.cwiseAbs().dot(scales_);
    if (form_.has_t) scale += std::abs(form_.t_weight) * form_.t_unit;
    f_unit_ = std::max(gradient.size() > 0 ? gradient.cwiseAbs().maxCoeff() : 0.0, kFlat * scale);
    if (form_.has_t) f_unit_ = std::max(f_unit_, std::abs(form_.t_weight) * form_.t_unit);
    // Values beside their differences: an offset of 1e9 must not drown them.
    f_origin_ = form_.weights.dot(at.columns.transpose());
  }

  void SetValues(Core& core, const Eigen::RowVectorXd& columns) const {
    if (!columns.allFinite()) {  // so terrible that the line search backs away
      core.F(0) = std::numeric_limits<double>::max();
      core.G.col(0).setConstant(std::numeric_limits<double>::lowest());
      return;
    }
    const double t = form_.has_t ? core.X(num_free_, 0) * form_.t_unit : 0.0;
    core.F(0) = (columns.dot(form_.weights) - f_origin_ + form_.t_weight * t) / f_unit_;
    for (Eigen::Index k = 0; k < NumRows(); ++k) {
      const SqpForm::Row& row = form_.rows[static_cast<std::size_t>(k)];
      const double kept =
          row.slope == 0.0 ? margin_ * std::abs(row.factor) * scales_(row.column) : 0.0;
      core.G(k, 0) =
          (row.factor * columns(row.column) + row.offset + row.slope * t - kept) / row_units_(k);
    }
  }

  void SetSlopes(Core& core, const Eigen::MatrixXd& slopes) const {
    core.DF.head(num_free_) = (form_.weights.transpose() * slopes).transpose() / f_unit_;
    if (form_.has_t) core.DF(num_free_) = form_.t_weight * form_.t_unit / f_unit_;
    for (Eigen::Index k = 0; k < NumRows(); ++k) {
      const SqpForm::Row& row = form_.rows[static_cast<std::size_t>(k)];
      core.DG.row(k).head(num_free_) = row.factor / row_units_(k) * slopes.row(row.column);
      if (form_.has_t) core.DG(k, num_free_) = row.slope * form_.t_unit / row_units_(k);
    }
  }

  const NonlinearProgram& program_;
  const SqpForm& form_;
  const Eigen::VectorXd& scales_;
  double margin_;
  Eigen::RowVectorXd x_;  ///< where the inputs stand that are held
  std::vector<Eigen::Index> free_;
  Eigen::Index num_free_ = 0;
  Eigen::VectorXd row_units_;
  double f_unit_ = 1.0, f_origin_ = 0.0;
  Evaluated current_;
};

}  // namespace

double SqpForm::LeastT(const Eigen::RowVectorXd& columns) const {
  double least = t_lower;
  for (const Row& row : rows)
    if (row.slope > 0.0)
      least = std::max(least, -(row.factor * columns(row.column) + row.offset) / row.slope);
  return least;
}

double SqpForm::Objective(const Eigen::RowVectorXd& columns) const {
  return columns.dot(weights) + (has_t ? t_weight * LeastT(columns) : 0.0);
}

SqpOutcome RunSqp(const NonlinearProgram& program, const SqpForm& form,
                  const Eigen::VectorXd& scales, const std::vector<bool>& held,
                  const Evaluated& start, double margin) {
  return FormRun(program, form, scales, held, start, margin).Run(start);
}

}  // namespace corvath::analysis
