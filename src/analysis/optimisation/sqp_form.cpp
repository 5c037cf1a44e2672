#include "analysis/optimisation/sqp_form.h"

#include "optimizer/nlpqlp_interface.h"
#include "optimizer/qp_solver.h"

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

/// What is left of a limit or a bound, in shares of its scale or range, that counts as nothing.
constexpr double kNoRoom = 1e-6;

/// The least |a x - b| over x >= 0; of columns that depend on each other all have a part.
Eigen::VectorXd NonNegativeLeastSquares(const Eigen::MatrixXd& a, const Eigen::VectorXd& b) {
  constexpr double kRidge = 1e-12;
  const Eigen::Index n = a.cols();
  Eigen::VectorXd x = Eigen::VectorXd::Zero(n);
  if (n == 0) return x;
  Eigen::MatrixXd c = a.transpose() * a;
  c.diagonal().array() += kRidge * std::max(c.trace(), 1e-100);
  const Eigen::VectorXd d = -a.transpose() * b;
  const Eigen::VectorXd lower = Eigen::VectorXd::Zero(n);
  const Eigen::VectorXd upper = Eigen::VectorXd::Constant(n, algorithm::optimizer::kNoBound);
  const auto size = static_cast<std::int32_t>(n);
  Eigen::VectorXd no_rows = Eigen::VectorXd::Zero(n), multipliers(2 * n);
  const auto work = algorithm::optimizer::QlWorkSize(0, 1, n);
  Eigen::VectorXd war(static_cast<Eigen::Index>(work));
  std::vector<std::int32_t> active(static_cast<std::size_t>(n));
  std::int32_t failure = 0;
  algorithm::optimizer::QL(0, 0, 1, size, size, 2 * size, c.data(), d.data(), no_rows.data(),
                           no_rows.data(), lower.data(), upper.data(), x.data(), multipliers.data(),
                           1e-15, 1, 6, failure, 0, war.data(), static_cast<std::int32_t>(work),
                           active.data(), size);
  return failure == 0 ? Eigen::VectorXd(x.unaryExpr([](double u) { return u > 0.0 ? u : 0.0; }))
                      : lower;
}

/// The run of one form: between the core, which moves the inputs that are free, as shares of their
/// units, and t in its unit, and the program.
class FormRun {
 public:
  FormRun(const NonlinearProgram& program, const SqpForm& form, const Eigen::VectorXd& scales,
          const std::vector<bool>& held, const Evaluated& start, double margin)
      : program_(program), form_(form), scales_(scales), margin_(margin), x_(start.x) {
    for (Eigen::Index i = 0; i < program.NumInputs(); ++i)
      if (!held[static_cast<std::size_t>(i)] && program.upper(i) > program.lower(i))
        free_.push_back(i);
    num_free_ = static_cast<Eigen::Index>(free_.size());
    units_.resize(num_free_);
    for (Eigen::Index i = 0; i < num_free_; ++i)
      units_(i) = program.GetUnit(free_[static_cast<std::size_t>(i)]);
  }

  SqpOutcome Run(const Evaluated& start) {
    SqpOutcome outcome;
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
    for (Eigen::Index i = 0; i < num_free_; ++i) core.XU(i) = Width(i);
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
    return outcome;
  }

  Multipliers MultipliersAt(const Evaluated& at) {
    const Eigen::Index n = program_.NumInputs();
    Multipliers found{Eigen::VectorXd::Zero(NumRows()), Eigen::VectorXd::Zero(n),
                      Eigen::VectorXd::Zero(n)};
    Eigen::MatrixXd slopes;
    if (num_free_ == 0 || !at.IsFinite() || !Slopes(at, slopes)) return found;
    SetUnits(at, slopes);
    // One column for each row and bound without room: its slopes by the free inputs and t.
    struct Stop {
      double* multiplier;
      double unit;
    };
    std::vector<Stop> stops;
    Eigen::MatrixXd normals(num_free_ + 1, NumRows() + 2 * num_free_);
    normals.setZero();
    const auto add = [&](double& multiplier, double unit) {
      stops.push_back({&multiplier, unit});
      return normals.col(static_cast<Eigen::Index>(stops.size()) - 1);
    };
    const double t = form_.has_t ? form_.LeastT(at.columns) : 0.0;
    for (Eigen::Index k = 0; k < NumRows(); ++k) {
      const SqpForm::Row& row = form_.rows[static_cast<std::size_t>(k)];
      const double room = row.factor * at.columns(row.column) + row.offset + row.slope * t;
      if (room > kNoRoom * std::abs(row.factor) * scales_(row.column)) continue;
      auto normal = add(found.rows(k), f_unit_ / row_units_(k));
      normal.head(num_free_) = row.factor / row_units_(k) * slopes.row(row.column).transpose();
      normal(num_free_) = row.slope * form_.t_unit / row_units_(k);
    }
    const Eigen::VectorXd shares = ToShares(at.x);
    for (Eigen::Index i = 0; i < num_free_; ++i) {
      const Eigen::Index input = free_[static_cast<std::size_t>(i)];
      const double unit = f_unit_ / units_(i), width = Width(i);
      if (shares(i) <= kNoRoom * width) add(found.at_lower(input), unit)(i) = 1.0;
      if (shares(i) >= (1.0 - kNoRoom) * width) add(found.at_upper(input), unit)(i) = -1.0;
    }
    Eigen::VectorXd gradient(num_free_ + 1);
    gradient.head(num_free_) = (form_.weights.transpose() * slopes).transpose() / f_unit_;
    gradient(num_free_) = form_.has_t ? form_.t_weight * form_.t_unit / f_unit_ : 0.0;
    const Eigen::VectorXd shares_of_stops = NonNegativeLeastSquares(
        normals.leftCols(static_cast<Eigen::Index>(stops.size())), gradient);
    for (std::size_t k = 0; k < stops.size(); ++k)
      *stops[k].multiplier = shares_of_stops(static_cast<Eigen::Index>(k)) * stops[k].unit;
    return found;
  }

 private:
  Eigen::Index NumRows() const { return static_cast<Eigen::Index>(form_.rows.size()); }

  /// The range of a free input in its unit.
  double Width(Eigen::Index i) const {
    const Eigen::Index input = free_[static_cast<std::size_t>(i)];
    return (program_.upper(input) - program_.lower(input)) / units_(i);
  }

  Eigen::VectorXd ToShares(const Eigen::RowVectorXd& x) const {
    Eigen::VectorXd shares(num_free_);
    for (Eigen::Index i = 0; i < num_free_; ++i) {
      const Eigen::Index input = free_[static_cast<std::size_t>(i)];
      shares(i) = std::clamp((x(input) - program_.lower(input)) / units_(i), 0.0, Width(i));
    }
    return shares;
  }

  Eigen::RowVectorXd FromShares(const Core& core) const {
    Eigen::RowVectorXd x = x_;
    for (Eigen::Index i = 0; i < num_free_; ++i) {
      const Eigen::Index input = free_[static_cast<std::size_t>(i)];
      const double share = core.X(i, 0), lower = program_.lower(input),
                   upper = program_.upper(input);
      x(input) = share == core.XU(i) ? upper : std::clamp(lower + share * units_(i), lower, upper);
    }
    return x;
  }

  /// The models' own gradients are central differences as well (metamodel/central_differences.h), of
  /// one response each and before criteria; here 2 n designs in one block serve all columns.
  ///
  /// Slopes of the columns by the shares of the free inputs, columns x free. Central differences;
  /// at a bound, or where one side fails, over two steps to the other side. False where an input has
  /// no usable neighbours.
  bool Slopes(const Evaluated& at, Eigen::MatrixXd& slopes) const {
    Eigen::MatrixXd points = at.x.replicate(2 * num_free_, 1);
    Eigen::VectorXd first(num_free_), second(num_free_);
    for (Eigen::Index i = 0; i < num_free_; ++i) {
      const Eigen::Index input = free_[static_cast<std::size_t>(i)];
      const double h = program_.GetStep(input) / units_(i);
      const bool low = at.x(input) - h * units_(i) < program_.lower(input);
      const bool high = at.x(input) + h * units_(i) > program_.upper(input);
      first(i) = low ? h : -h;
      second(i) = low ? 2.0 * h : high ? -2.0 * h : h;
      points(2 * i, input) += first(i) * units_(i);
      points(2 * i + 1, input) += second(i) * units_(i);
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
  Eigen::VectorXd units_;  ///< of the free inputs
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

Multipliers FindMultipliers(const NonlinearProgram& program, const SqpForm& form,
                            const Eigen::VectorXd& scales, const std::vector<bool>& held,
                            const Evaluated& at) {
  return FormRun(program, form, scales, held, at, 0.0).MultipliersAt(at);
}

}  // namespace corvath::analysis
