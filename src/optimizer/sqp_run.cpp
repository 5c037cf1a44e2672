#include "optimizer/sqp_run.h"

#include "optimizer/quasi_newton.h"
#include "optimizer/small_product.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvath::algorithm::optimizer {

namespace {

constexpr double kStartPenalty = 0.01;
constexpr double kMaxPenalty = 1e9;
constexpr double kMaxFallBackPenalty = 1e6;
constexpr double kStartRho = 1.0;  ///< weight of delta in the QP
constexpr double kMaxRho = 1e6;
constexpr double kMaxDelta = 0.9;  ///< a direction that leaves more of the constraints is refused

/// Rounding unit of the machine as the method measures it, a power of ten.
double RoundingUnit() {
  volatile double sum = 2.0;  // kept in memory: no longer registers
  double eps = 1e-10;
  while (sum > 1.0) {
    eps *= 0.1;
    sum = 1.0 + eps;
  }
  return 10.0 * eps;
}

/// What d'Bd may be rounded to: the highest power of the QP's accuracy that does not underflow.
double CurvatureTolerance(double accqp) {
  const double square = accqp * accqp;
  double tol = 0.0;
  for (int power = 6; power >= 2 && tol == 0.0; --power) {
    tol = square;
    for (int k = 2; k < power; ++k) tol *= accqp;
  }
  return tol;
}

}  // namespace

SqpRun::SqpRun(const SqpArguments& a, SqpMemory& memory)
    : a_(a),
      n_(a.N),
      m_(a.M),
      memory_(memory),
      points_(a.X, n_, a.L, Eigen::OuterStride<>(a.NMAX)),
      values_(a.G, m_, a.L, Eigen::OuterStride<>(a.MMAX)),
      dg_(a.DG, m_, n_ + 1, Eigen::OuterStride<>(a.MMAX)),
      c_(a.C, n_ + 1, n_ + 1, Eigen::OuterStride<>(a.NMAX)),
      df_(a.DF, n_),
      u_(a.U, m_ + 2 * n_) {
  static const double eps = RoundingUnit();
  accqp_ = a.ACCQP > eps ? a.ACCQP : 1e4 * eps;
  tol_ = CurvatureTolerance(accqp_);
  const double stpmin = a.STPMIN > eps ? a.STPMIN : a.ACC;
  beta_ = a.L == 1 ? 0.1 : std::pow(stpmin, 1.0 / (a.L - 1));
  max_trials_ = a.L == 1 ? a.MAXFUN : a.L;
  memory_.Load(numbers_, counts_);
}

void SqpRun::Continue() {
  if (a_.IFAIL == 0) {
    Start();
    Iterate();
  } else if (a_.IFAIL == -1) {
    ++counts_.num_functions;
    JudgePoints();
  } else {
    ++counts_.num_gradients;
    UpdateMatrix();
  }
  memory_.Store(numbers_, counts_);
}

void SqpRun::Start() {
  counts_ = {};
  counts_.num_functions = counts_.num_gradients = 1;
  std::fill_n(memory_.active, m_, 1);
  if (a_.MODE == 0) {
    c_.setIdentity();
    u_.setZero();
  } else {  // only its lower triangle counts, as everywhere
    for (Eigen::Index k = 0; k < n_; ++k) c_.row(k).tail(n_ + 1 - k) = c_.col(k).tail(n_ + 1 - k);
    c_.col(n_).setZero();
    c_.row(n_).setZero();
  }
  memory_.v = u_;
  Rho() = kStartRho;
  memory_.r.setConstant(kStartPenalty);
  numbers_.dbd = numbers_.multiplier_slope = 0.0;
  numbers_.best_kkt = std::numeric_limits<double>::infinity();
  memory_.x = points_.col(0);
  memory_.g = values_.col(0);
  numbers_.f = a_.F[0];
  numbers_.merit = Merit().Value(numbers_.f, memory_.g, memory_.x, u_, 0.0);
}

MeritFunction SqpRun::Merit() const {
  return {a_.ME, Eigen::Map<const Eigen::VectorXd>(a_.XL, n_),
          Eigen::Map<const Eigen::VectorXd>(a_.XU, n_), memory_.v, memory_.r};
}

void SqpRun::Iterate() {
  if (++counts_.iteration >= a_.MAXIT) return Finish(1);
  for (Direction first = Direction::kPlain;;) {
    fall_back_ = false;
    if (!FindDirection(first)) return;
    Measure();
    if (numbers_.dbd < -tol_) return Finish(2, "D*B*D =", &numbers_.dbd);
    KeepBest();
    bool stop = false;
    const bool usable = Decide(stop);
    if (stop) return;
    if (usable) {
      UpdatePenalties();
      if (MakeDescent()) break;
      if (fall_back_) return Finish(2, "DPHI*P =", &numbers_.slope);
    }
    if (usable && Rho() < kMaxRho) {
      Rho() = std::min(kMaxRho, 100.0 * Rho());
      first = Direction::kRelaxed;
    } else {
      first = Direction::kAugmentedLagrangian;
    }
  }
  counts_.used_reference = 0;
  numbers_.merit = Merit().Value(numbers_.f, memory_.g, memory_.x, u_, 0.0);
  if (a_.MAX_NM > 0) memory_.stack(counts_.num_pushed++ % a_.MAX_NM) = numbers_.merit;
  StartSearch(numbers_.merit);
  AskForPoints();
}

/// A direction of kind `first` or, where that fails, of a later kind. False if the run has ended.
bool SqpRun::FindDirection(Direction first) {
  delta_ = 0.0;
  if (first == Direction::kPlain) {
    const std::int32_t answer = SolveQp(n_, m_, a_.DF);
    if (answer == 0) return true;
    if (answer == 5) return ReportQpFailure(answer);
    if (counts_.iteration > 1) {
      // The published rule, from the values of the last iteration.
      const double s = numbers_.dbd > 0.0
                           ? 2.0 * std::abs(numbers_.multiplier_slope) / std::sqrt(numbers_.dbd)
                           : 0.0;
      Rho() = std::min(kMaxRho, std::max(kStartRho, s * s));
    }
  }
  if (first != Direction::kAugmentedLagrangian) {
    if (FindRelaxedDirection()) return true;
    if (a_.IFAIL > 0) return false;
  }
  return FindFallBackDirection();
}

/// With delta as a variable, which gives up a share of the active constraints, weighed ever more.
/// False if the run has ended or if delta stays large.
bool SqpRun::FindRelaxedDirection() {
  a_.DF[n_] = 0.0;
  for (Eigen::Index j = 0; j < m_; ++j) dg_(j, n_) = memory_.active[j] != 0 ? -memory_.g(j) : 0.0;
  for (;; Rho() = std::min(kMaxRho, 100.0 * Rho())) {
    const std::int32_t answer = SolveQp(n_ + 1, m_, a_.DF);
    if (answer == 3 || answer == 5 || answer > 100) return ReportQpFailure(answer);
    if (answer == 0) {
      delta_ = memory_.d(n_);
      if (delta_ < kMaxDelta) return true;
    }
    if (Rho() >= kMaxRho) return false;
  }
}

/// A descent direction of the merit function within the bounds; the constraints are left to it.
bool SqpRun::FindFallBackDirection() {
  fall_back_ = true;
  delta_ = 0.0;
  PrintSqpWarning(a_, "Augmented Lagrangian search direction");
  Merit().Gradient(df_, {a_.DG, m_, n_, dg_.outerStride()}, memory_.g, memory_.x, memory_.weights,
                   memory_.gradient);
  const std::int32_t answer = SolveQp(n_, 0, memory_.gradient.data());
  if (answer != 0) return ReportQpFailure(answer);
  // The QP's multipliers of the bounds stand where those of the constraints belong. The estimates
  // of the constraints stay as they are: moving them would raise the merit function.
  std::copy_backward(a_.U, a_.U + 2 * n_, a_.U + m_ + 2 * n_);
  u_.head(m_) = memory_.v.head(m_);
  return true;
}

/// d within the bounds from a QP in `num_variables` variables; U in the order of this method. The
/// answer of the QP solver.
std::int32_t SqpRun::SolveQp(Eigen::Index num_variables, Eigen::Index num_rows,
                             const double* linear) {
  for (Eigen::Index i = 0; i < n_; ++i) {
    memory_.qp_lower(i) = a_.XL[i] - memory_.x(i);
    memory_.qp_upper(i) = a_.XU[i] - memory_.x(i);
  }
  memory_.qp_lower(n_) = 0.0;
  memory_.qp_upper(n_) = 1.0;
  memory_.d(n_) = 0.0;
  memory_.diagonal = c_.diagonal();

  std::int32_t answer = 0;
  const std::int32_t num_equalities = num_rows > 0 ? a_.ME : 0;
  a_.QPSOLVE(static_cast<std::int32_t>(num_rows), num_equalities, a_.MMAX,
             static_cast<std::int32_t>(num_variables), a_.NMAX, a_.MNN2, a_.C, linear, a_.DG,
             memory_.g.data(), memory_.qp_lower.data(), memory_.qp_upper.data(), memory_.d.data(),
             a_.U, accqp_, 1, a_.IOUT, answer, a_.IPRINT, memory_.qp_work, memory_.qp_work_size,
             memory_.qp_integers, memory_.qp_integers_size);
  ++counts_.num_qps;

  // The factor stands in the upper triangle and on the diagonal.
  for (Eigen::Index k = 0; k <= n_; ++k) c_.col(k).head(k) = c_.row(k).head(k);
  c_.diagonal() = memory_.diagonal;
  if (num_variables > n_) {  // the multipliers of delta go behind those of x
    double* const bounds = a_.U + num_rows;
    const double delta_lower = bounds[n_];
    std::copy(bounds + n_ + 1, bounds + 2 * n_ + 1, bounds + n_);
    bounds[2 * n_] = delta_lower;
  }
  return answer;
}

/// Ends the run for an answer of the QP solver; always false.
bool SqpRun::ReportQpFailure(std::int32_t answer) {
  if (answer == 5)
    Finish(5, "Insufficient working space for QPSOLVE. Either LKWA or LWA to small");
  else
    Finish(answer > 100 ? answer : 10);
  return false;
}

void SqpRun::Measure() {
  const auto d = memory_.d.head(n_);
  Multiply(c_.topLeftCorner(n_, n_), d, memory_.product);
  numbers_.dbd = d.dot(memory_.product);

  memory_.lagrangian = df_;
  for (Eigen::Index i = 0; i < n_; ++i) memory_.lagrangian(i) -= dg_.col(i).dot(u_.head(m_));
  lagrangian_norm_ = (memory_.lagrangian - u_.segment(m_, n_) + u_.tail(n_)).norm();
  numbers_.multiplier_slope = (df_.dot(d) - memory_.lagrangian.dot(d)) / (1.0 - delta_);

  kkt_ = std::abs(df_.dot(d)) + u_.head(m_).cwiseProduct(memory_.g).cwiseAbs().sum();
  for (Eigen::Index i = 0; i < n_; ++i) {
    const double lower = u_(m_ + i), upper = u_(m_ + n_ + i);
    if (lower != 0.0) kkt_ += std::abs(lower * (a_.XL[i] - memory_.x(i)));
    if (upper != 0.0) kkt_ += std::abs(upper * (a_.XU[i] - memory_.x(i)));
  }
  violation_ = 0.0;
  for (Eigen::Index j = 0; j < m_; ++j)
    if (j < a_.ME || memory_.g(j) < 0.0) violation_ += std::abs(memory_.g(j));
}

void SqpRun::KeepBest() {
  if (a_.MAX_NM == 0 || !(kkt_ < numbers_.best_kkt)) return;
  numbers_.best_kkt = kkt_;
  counts_.best_iteration = counts_.iteration;
  numbers_.best_f = numbers_.f;
  memory_.best_x = memory_.x;
  memory_.best_u = u_;
  memory_.best_g = memory_.g;
}

/// Ends the run where the iterate is optimal (`stop`). Otherwise whether the direction is of use.
bool SqpRun::Decide(bool& stop) {
  const double root = std::sqrt(a_.ACC);
  if (numbers_.dbd < tol_) {
    if (violation_ < root) {
      stop = true;
      Finish(0);
    } else if (numbers_.dbd <= 0.0 && fall_back_) {
      stop = true;
      Finish(7);
    }
    return numbers_.dbd > 0.0;
  }
  if (kkt_ < a_.ACC && violation_ <= root) {
    ++counts_.num_stationary;
    if (lagrangian_norm_ <= std::sqrt(root) || numbers_.dbd <= a_.ACC ||
        counts_.num_stationary >= 3) {
      stop = true;
      Finish(0);
    }
  }
  return true;
}

void SqpRun::UpdatePenalties() {
  const Eigen::Index count = m_ + 2 * n_;
  if (!fall_back_) {
    const double sigma = numbers_.dbd > accqp_ * accqp_
                             ? 2.0 * static_cast<double>(m_) / ((1.0 - delta_) + numbers_.dbd)
                             : kMaxPenalty;
    for (Eigen::Index j = 0; j < count; ++j) {
      const double change = u_(j) - memory_.v(j);
      memory_.r(j) = std::max(std::min(kMaxPenalty, sigma * change * change),
                              std::min(memory_.r(j), std::sqrt(memory_.r(j)) * counts_.iteration));
    }
    return;
  }
  double sum = memory_.gradient.dot(memory_.d.head(n_));
  for (Eigen::Index i = 0; i < n_; ++i) {
    const double lower = u_(m_ + i), upper = u_(m_ + n_ + i);
    if (lower != 0.0) sum += std::abs(lower * (a_.XL[i] - memory_.x(i)));
    if (upper != 0.0) sum += std::abs(upper * (a_.XU[i] - memory_.x(i)));
  }
  if (sum <= std::sqrt(std::sqrt(a_.ACC)))
    memory_.r = (10.0 * memory_.r).cwiseMin(kMaxFallBackPenalty);
}

double SqpRun::Slope() {
  Merit().Gradient(df_, {a_.DG, m_, n_, dg_.outerStride()}, memory_.g, memory_.x, memory_.weights,
                   memory_.gradient);
  return memory_.gradient.dot(memory_.d.head(n_)) +
         Merit().MultiplierSlope(memory_.g, memory_.x, u_);
}

/// Raises the penalties until the merit function falls along the direction; false if they reach
/// their limit first.
bool SqpRun::MakeDescent() {
  for (;;) {
    numbers_.slope = Slope();
    if (numbers_.slope < 0.0) return true;
    if (!(memory_.r.maxCoeff() < kMaxPenalty)) return false;
    memory_.r = (10.0 * memory_.r).cwiseMin(kMaxPenalty);
  }
}

void SqpRun::StartSearch(double reference) {
  numbers_.alpha = 1.0;
  numbers_.reference = reference;
  numbers_.trial_slope = numbers_.slope * numbers_.alpha;
  counts_.trial = 1;
}

/// The next trial point, or all points of a parallel round, cut to the bounds.
void SqpRun::AskForPoints() {
  double alpha = numbers_.alpha;
  for (Eigen::Index column = 0; column < a_.L; ++column, alpha *= beta_)
    for (Eigen::Index i = 0; i < n_; ++i)
      points_(i, column) =
          std::min(std::max(memory_.x(i) + alpha * memory_.d(i), a_.XL[i]), a_.XU[i]);
  a_.IFAIL = -1;
}

/// Accepts the first trial that falls enough, or reduces the step. One trial at a time, the last one
/// allowed ends the search whatever its value; of a round of trials the last one counts too.
void SqpRun::JudgePoints() {
  const double armijo = 0.01;
  const double interpolation = a_.L == 1 ? 0.5 : 0.0;
  const MeritFunction merit = Merit();
  for (Eigen::Index column = 0;;) {
    const double value =
        merit.Value(a_.F[column], values_.col(column), points_.col(column), u_, numbers_.alpha);
    const double rise = value - numbers_.reference;
    const bool is_last = counts_.trial >= max_trials_;
    if (rise <= armijo * numbers_.trial_slope && !(is_last && a_.L == 1))
      return Accept(column, numbers_.alpha);
    if (is_last) {
      if (!UseOlderReference()) return Finish(4);
      if (a_.L == 1) return AskForPoints();
      column = 0;  // the points of the round stay, judged more mildly
      continue;
    }
    const double quotient = interpolation * numbers_.trial_slope / (numbers_.trial_slope - rise);
    const double factor = quotient > beta_ ? quotient : beta_;  // for a NaN the limit
    numbers_.alpha *= factor;
    numbers_.trial_slope *= factor;
    ++counts_.trial;
    if (a_.L == 1) return AskForPoints();
    ++column;
  }
}

/// Starts the search again against an older merit value, once for each step.
bool SqpRun::UseOlderReference() {
  if (a_.MAX_NM == 0 || counts_.used_reference != 0) return false;
  PrintSqpWarning(a_, "Starting non-monotone line search");
  counts_.used_reference = 1;
  double reference = a_.TOL_NM;
  if (counts_.iteration > 1)
    reference = memory_.stack.head(std::min(counts_.num_pushed, a_.MAX_NM)).maxCoeff();
  else if (numbers_.f > a_.ACC)
    reference = (1.0 + a_.TOL_NM) * numbers_.f;
  else if (numbers_.f < -a_.ACC)
    reference = (1.0 - a_.TOL_NM) * numbers_.f;
  StartSearch(reference);
  return true;
}

void SqpRun::Accept(Eigen::Index column, double alpha) {
  memory_.x = points_.col(column);
  memory_.g = values_.col(column);
  numbers_.f = a_.F[column];
  points_.col(0) = memory_.x;
  values_.col(0) = memory_.g;
  a_.F[0] = numbers_.f;
  memory_.d.head(n_) *= alpha;  // the step, for the update of the matrix
  memory_.v += alpha * (u_ - memory_.v);
  for (Eigen::Index j = a_.ME; j < m_; ++j)
    memory_.active[j] = memory_.v(j) <= 0.0 && memory_.g(j) > a_.ACC ? 0 : 1;
  a_.IFAIL = -2;
}

void SqpRun::UpdateMatrix() {
  // Change of the gradient of the Lagrangian; that of the old point stands in memory_.lagrangian.
  for (Eigen::Index i = 0; i < n_; ++i)
    memory_.gradient(i) = df_(i) - dg_.col(i).dot(u_.head(m_)) - memory_.lagrangian(i);
  if (!UpdateDampedBfgs(c_.topLeftCorner(n_, n_), memory_.d.head(n_), memory_.gradient,
                        memory_.product))
    return Finish(3);
  Iterate();
}

void SqpRun::Finish(std::int32_t ifail, const char* detail, const double* number) {
  points_.col(0) = memory_.x;
  values_.col(0) = memory_.g;
  a_.F[0] = numbers_.f;
  a_.IFAIL = ifail;
  if (ifail != 0) Fail(a_, ifail, detail, number);
  if (a_.IPRINT > 0) PrintSqpResult(*this);
}

}  // namespace corvath::algorithm::optimizer
