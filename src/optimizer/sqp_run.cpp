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
constexpr Eigen::Index kNumScalars = 13;  ///< of WA, in front of its vectors
constexpr std::int32_t kNumKept = 10;     ///< integers of KWA in front of the QP solver's
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

SqpRun::SqpRun(const SqpArguments& a)
    : a_(a),
      n_(a.N),
      m_(a.M),
      iteration_(a.KWA[0]),
      num_functions_(a.KWA[1]),
      num_gradients_(a.KWA[2]),
      num_qps_(a.KWA[3]),
      trial_(a.KWA[4]),
      num_pushed_(a.KWA[5]),
      used_reference_(a.KWA[6]),
      num_stationary_(a.KWA[7]),
      best_iteration_(a.KWA[8]),
      alpha_(a.WA[0]),
      merit_(a.WA[1]),
      reference_(a.WA[2]),
      slope_(a.WA[3]),
      trial_slope_(a.WA[4]),
      dbd_(a.WA[5]),
      multiplier_slope_(a.WA[6]),
      f_(a.WA[7]),
      best_kkt_(a.WA[8]),
      best_f_(a.WA[9]),
      stack_(a.WA + kNumScalars, a.MAX_NM),
      r_(stack_.data() + a.MAX_NM, m_ + 2 * n_),
      v_(r_.data() + r_.size(), m_ + 2 * n_),
      x_(v_.data() + v_.size(), n_),
      g_(x_.data() + n_, m_),
      d_(g_.data() + m_, n_ + 1),
      lagrangian_(d_.data() + n_ + 1, n_),
      best_x_(lagrangian_.data() + n_, n_),
      best_u_(best_x_.data() + n_, m_ + 2 * n_),
      best_g_(best_u_.data() + best_u_.size(), m_),
      qp_lower_(best_g_.data() + m_, n_ + 1),
      qp_upper_(qp_lower_.data() + n_ + 1, n_ + 1),
      diagonal_(qp_upper_.data() + n_ + 1, n_ + 1),
      gradient_(diagonal_.data() + n_ + 1, n_),
      product_(gradient_.data() + n_, n_),
      weights_(product_.data() + n_, m_),
      qp_work_(weights_.data() + m_),
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
}

void SqpRun::Continue() {
  if (a_.IFAIL == 0) {
    Start();
    Iterate();
  } else if (a_.IFAIL == -1) {
    ++num_functions_;
    JudgePoints();
  } else {
    ++num_gradients_;
    UpdateMatrix();
  }
}

void SqpRun::Start() {
  std::fill_n(a_.KWA, kNumKept, 0);
  num_functions_ = num_gradients_ = 1;
  std::fill_n(a_.ACTIVE, m_, 1);
  if (a_.MODE == 0) {
    c_.setIdentity();
    u_.setZero();
  } else {  // only its lower triangle counts, as everywhere
    for (Eigen::Index k = 0; k < n_; ++k) c_.row(k).tail(n_ + 1 - k) = c_.col(k).tail(n_ + 1 - k);
    c_.col(n_).setZero();
    c_.row(n_).setZero();
  }
  v_ = u_;
  Rho() = kStartRho;
  r_.setConstant(kStartPenalty);
  dbd_ = multiplier_slope_ = 0.0;
  best_kkt_ = std::numeric_limits<double>::infinity();
  x_ = points_.col(0);
  g_ = values_.col(0);
  f_ = a_.F[0];
  merit_ = Merit().Value(f_, g_, x_, u_, 0.0);
}

MeritFunction SqpRun::Merit() const {
  return {a_.ME, Eigen::Map<const Eigen::VectorXd>(a_.XL, n_),
          Eigen::Map<const Eigen::VectorXd>(a_.XU, n_), v_, r_};
}

void SqpRun::Iterate() {
  if (++iteration_ >= a_.MAXIT) return Finish(1);
  for (Direction first = Direction::kPlain;;) {
    fall_back_ = false;
    if (!FindDirection(first)) return;
    Measure();
    if (dbd_ < -tol_) return Finish(2, "D*B*D =", &dbd_);
    KeepBest();
    bool stop = false;
    const bool usable = Decide(stop);
    if (stop) return;
    if (usable) {
      UpdatePenalties();
      if (MakeDescent()) break;
      if (fall_back_) return Finish(2, "DPHI*P =", &slope_);
    }
    if (usable && Rho() < kMaxRho) {
      Rho() = std::min(kMaxRho, 100.0 * Rho());
      first = Direction::kRelaxed;
    } else {
      first = Direction::kAugmentedLagrangian;
    }
  }
  used_reference_ = 0;
  merit_ = Merit().Value(f_, g_, x_, u_, 0.0);
  if (a_.MAX_NM > 0) stack_(num_pushed_++ % a_.MAX_NM) = merit_;
  StartSearch(merit_);
  AskForPoints();
}

/// A direction of kind `first` or, where that fails, of a later kind. False if the run has ended.
bool SqpRun::FindDirection(Direction first) {
  delta_ = 0.0;
  if (first == Direction::kPlain) {
    const std::int32_t answer = SolveQp(n_, m_, a_.DF);
    if (answer == 0) return true;
    if (answer == 5) return ReportQpFailure(answer);
    if (iteration_ > 1) {
      // The published rule, from the values of the last iteration.
      const double s = dbd_ > 0.0 ? 2.0 * std::abs(multiplier_slope_) / std::sqrt(dbd_) : 0.0;
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
  for (Eigen::Index j = 0; j < m_; ++j) dg_(j, n_) = a_.ACTIVE[j] != 0 ? -g_(j) : 0.0;
  for (;; Rho() = std::min(kMaxRho, 100.0 * Rho())) {
    const std::int32_t answer = SolveQp(n_ + 1, m_, a_.DF);
    if (answer == 3 || answer == 5 || answer > 100) return ReportQpFailure(answer);
    if (answer == 0) {
      delta_ = d_(n_);
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
  Merit().Gradient(df_, dg_.leftCols(n_), g_, x_, weights_, gradient_);
  const std::int32_t answer = SolveQp(n_, 0, gradient_.data());
  if (answer != 0) return ReportQpFailure(answer);
  // The QP's multipliers of the bounds stand where those of the constraints belong. The estimates
  // of the constraints stay as they are: moving them would raise the merit function.
  std::copy_backward(a_.U, a_.U + 2 * n_, a_.U + m_ + 2 * n_);
  u_.head(m_) = v_.head(m_);
  return true;
}

/// d within the bounds from a QP in `num_variables` variables; U in the order of this method. The
/// answer of the QP solver.
std::int32_t SqpRun::SolveQp(Eigen::Index num_variables, Eigen::Index num_rows,
                             const double* linear) {
  for (Eigen::Index i = 0; i < n_; ++i) {
    qp_lower_(i) = a_.XL[i] - x_(i);
    qp_upper_(i) = a_.XU[i] - x_(i);
  }
  qp_lower_(n_) = 0.0;
  qp_upper_(n_) = 1.0;
  d_(n_) = 0.0;
  diagonal_ = c_.diagonal();

  std::int32_t answer = 0;
  const std::int32_t num_equalities = num_rows > 0 ? a_.ME : 0;
  const auto used = static_cast<std::int32_t>(qp_work_ - a_.WA);
  a_.QPSOLVE(static_cast<std::int32_t>(num_rows), num_equalities, a_.MMAX,
             static_cast<std::int32_t>(num_variables), a_.NMAX, a_.MNN2, a_.C, linear, a_.DG,
             g_.data(), qp_lower_.data(), qp_upper_.data(), d_.data(), a_.U, accqp_, 1, a_.IOUT,
             answer, a_.IPRINT, qp_work_, a_.LWA - used, a_.KWA + kNumKept, a_.LKWA - kNumKept);
  ++num_qps_;

  // The factor stands in the upper triangle and on the diagonal.
  for (Eigen::Index k = 0; k <= n_; ++k) c_.col(k).head(k) = c_.row(k).head(k);
  c_.diagonal() = diagonal_;
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
  const auto d = d_.head(n_);
  Multiply(c_.topLeftCorner(n_, n_), d, product_);
  dbd_ = d.dot(product_);

  lagrangian_ = df_;
  for (Eigen::Index i = 0; i < n_; ++i) lagrangian_(i) -= dg_.col(i).dot(u_.head(m_));
  lagrangian_norm_ = (lagrangian_ - u_.segment(m_, n_) + u_.tail(n_)).norm();
  multiplier_slope_ = (df_.dot(d) - lagrangian_.dot(d)) / (1.0 - delta_);

  kkt_ = std::abs(df_.dot(d)) + u_.head(m_).cwiseProduct(g_).cwiseAbs().sum();
  for (Eigen::Index i = 0; i < n_; ++i) {
    const double lower = u_(m_ + i), upper = u_(m_ + n_ + i);
    if (lower != 0.0) kkt_ += std::abs(lower * (a_.XL[i] - x_(i)));
    if (upper != 0.0) kkt_ += std::abs(upper * (a_.XU[i] - x_(i)));
  }
  violation_ = 0.0;
  for (Eigen::Index j = 0; j < m_; ++j)
    if (j < a_.ME || g_(j) < 0.0) violation_ += std::abs(g_(j));
}

void SqpRun::KeepBest() {
  if (a_.MAX_NM == 0 || !(kkt_ < best_kkt_)) return;
  best_kkt_ = kkt_;
  best_iteration_ = iteration_;
  best_f_ = f_;
  best_x_ = x_;
  best_u_ = u_;
  best_g_ = g_;
}

/// Ends the run where the iterate is optimal (`stop`). Otherwise whether the direction is of use.
bool SqpRun::Decide(bool& stop) {
  const double root = std::sqrt(a_.ACC);
  if (dbd_ < tol_) {
    if (violation_ < root) {
      stop = true;
      Finish(0);
    } else if (dbd_ <= 0.0 && fall_back_) {
      stop = true;
      Finish(7);
    }
    return dbd_ > 0.0;
  }
  if (kkt_ < a_.ACC && violation_ <= root) {
    ++num_stationary_;
    if (lagrangian_norm_ <= std::sqrt(root) || dbd_ <= a_.ACC || num_stationary_ >= 3) {
      stop = true;
      Finish(0);
    }
  }
  return true;
}

void SqpRun::UpdatePenalties() {
  const Eigen::Index count = m_ + 2 * n_;
  if (!fall_back_) {
    const double sigma = dbd_ > accqp_ * accqp_
                             ? 2.0 * static_cast<double>(m_) / ((1.0 - delta_) + dbd_)
                             : kMaxPenalty;
    for (Eigen::Index j = 0; j < count; ++j) {
      const double change = u_(j) - v_(j);
      r_(j) = std::max(std::min(kMaxPenalty, sigma * change * change),
                       std::min(r_(j), std::sqrt(r_(j)) * iteration_));
    }
    return;
  }
  double sum = gradient_.dot(d_.head(n_));
  for (Eigen::Index i = 0; i < n_; ++i) {
    const double lower = u_(m_ + i), upper = u_(m_ + n_ + i);
    if (lower != 0.0) sum += std::abs(lower * (a_.XL[i] - x_(i)));
    if (upper != 0.0) sum += std::abs(upper * (a_.XU[i] - x_(i)));
  }
  if (sum <= std::sqrt(std::sqrt(a_.ACC))) r_ = (10.0 * r_).cwiseMin(kMaxFallBackPenalty);
}

double SqpRun::Slope() {
  Merit().Gradient(df_, dg_.leftCols(n_), g_, x_, weights_, gradient_);
  return gradient_.dot(d_.head(n_)) + Merit().MultiplierSlope(g_, x_, u_);
}

/// Raises the penalties until the merit function falls along the direction; false if they reach
/// their limit first.
bool SqpRun::MakeDescent() {
  for (;;) {
    slope_ = Slope();
    if (slope_ < 0.0) return true;
    if (!(r_.maxCoeff() < kMaxPenalty)) return false;
    r_ = (10.0 * r_).cwiseMin(kMaxPenalty);
  }
}

void SqpRun::StartSearch(double reference) {
  alpha_ = 1.0;
  reference_ = reference;
  trial_slope_ = slope_ * alpha_;
  trial_ = 1;
}

/// The next trial point, or all points of a parallel round, cut to the bounds.
void SqpRun::AskForPoints() {
  double alpha = alpha_;
  for (Eigen::Index column = 0; column < a_.L; ++column, alpha *= beta_)
    for (Eigen::Index i = 0; i < n_; ++i)
      points_(i, column) = std::min(std::max(x_(i) + alpha * d_(i), a_.XL[i]), a_.XU[i]);
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
        merit.Value(a_.F[column], values_.col(column), points_.col(column), u_, alpha_);
    const double rise = value - reference_;
    const bool is_last = trial_ >= max_trials_;
    if (rise <= armijo * trial_slope_ && !(is_last && a_.L == 1)) return Accept(column, alpha_);
    if (is_last) {
      if (!UseOlderReference()) return Finish(4);
      if (a_.L == 1) return AskForPoints();
      column = 0;  // the points of the round stay, judged more mildly
      continue;
    }
    const double quotient = interpolation * trial_slope_ / (trial_slope_ - rise);
    const double factor = quotient > beta_ ? quotient : beta_;  // for a NaN the limit
    alpha_ *= factor;
    trial_slope_ *= factor;
    ++trial_;
    if (a_.L == 1) return AskForPoints();
    ++column;
  }
}

/// Starts the search again against an older merit value, once for each step.
bool SqpRun::UseOlderReference() {
  if (a_.MAX_NM == 0 || used_reference_ != 0) return false;
  PrintSqpWarning(a_, "Starting non-monotone line search");
  used_reference_ = 1;
  double reference = a_.TOL_NM;
  if (iteration_ > 1)
    reference = stack_.head(std::min(num_pushed_, a_.MAX_NM)).maxCoeff();
  else if (f_ > a_.ACC)
    reference = (1.0 + a_.TOL_NM) * f_;
  else if (f_ < -a_.ACC)
    reference = (1.0 - a_.TOL_NM) * f_;
  StartSearch(reference);
  return true;
}

void SqpRun::Accept(Eigen::Index column, double alpha) {
  x_ = points_.col(column);
  g_ = values_.col(column);
  f_ = a_.F[column];
  points_.col(0) = x_;
  values_.col(0) = g_;
  a_.F[0] = f_;
  d_.head(n_) *= alpha;  // the step, for the update of the matrix
  v_ += alpha * (u_ - v_);
  for (Eigen::Index j = a_.ME; j < m_; ++j) a_.ACTIVE[j] = v_(j) <= 0.0 && g_(j) > a_.ACC ? 0 : 1;
  a_.IFAIL = -2;
}

void SqpRun::UpdateMatrix() {
  // Change of the gradient of the Lagrangian; that of the old point stands in lagrangian_.
  for (Eigen::Index i = 0; i < n_; ++i)
    gradient_(i) = df_(i) - dg_.col(i).dot(u_.head(m_)) - lagrangian_(i);
  if (!UpdateDampedBfgs(c_.topLeftCorner(n_, n_), d_.head(n_), gradient_, product_))
    return Finish(3);
  Iterate();
}

void SqpRun::Finish(std::int32_t ifail, const char* detail, const double* number) {
  a_.IFAIL = ifail;
  points_.col(0) = x_;
  values_.col(0) = g_;
  a_.F[0] = f_;
  if (ifail != 0) PrintSqpError(a_, detail, number);
  if (a_.IPRINT > 0) PrintSqpResult(*this);
}

}  // namespace corvath::algorithm::optimizer
