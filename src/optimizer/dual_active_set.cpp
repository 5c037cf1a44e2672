#include "optimizer/dual_active_set.h"

#include "foundation/constants.h"
#include "optimizer/qp_solver.h"
#include "optimizer/small_product.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvath::algorithm::optimizer {

namespace {

using math::kInfinity;
constexpr double kEps = std::numeric_limits<double>::epsilon();

/// A normal whose part outside the active normals is below this share of what its terms could have
/// given depends on them: rounding reaches a few hundred eps after many rotations.
constexpr double kDependent = 1e-13;

/// Restarts of the factorisation; each at least doubles the enlargement.
constexpr int kMaxEnlargements = 200;

/// Squared norms between this and its inverse have lost nothing to underflow or overflow.
constexpr double kSmallestSquare = 1e-280;

/// Share of the farthest point of the walk below which x is worked out anew.
constexpr double kComeDown = 0.01;

/// Residuals of active constraints above this share of max(1, |x|) make a solution worthless.
constexpr double kUseless = 1e-7;

/// Whether `quantity` stands out of the rounding of a sum of the magnitude `reference`.
bool IsSignificant(double quantity, double reference) {
  const double tenth = reference + 0.1 * quantity;
  return tenth > reference && reference + 0.2 * quantity > tenth;
}

}  // namespace

DualActiveSet::DualActiveSet(const QuadraticProgram& program, double accuracy, double* work,
                             std::int32_t* active)
    : program_(program),
      accuracy_(accuracy),
      n_(program.num_variables),
      m_(program.num_constraints),
      active_(active),
      j_(work, n_, n_),
      triangle_(work + n_ * n_),
      x_(triangle_ + n_ * (n_ + 1) / 2, n_),
      multipliers_(x_.data() + n_, n_),
      normal_(multipliers_.data() + n_, n_),
      projected_(normal_.data() + n_, n_),
      direction_(projected_.data() + n_, n_),
      change_(direction_.data() + n_, n_),
      bound_flags_(change_.data() + n_, n_),
      diagonal_(bound_flags_.data() + n_, n_),
      scales_(diagonal_.data() + n_, m_),
      residuals_(scales_.data() + m_, m_) {}

double DualActiveSet::Multiplier(std::int32_t k) const {
  const std::int32_t constraint = active_[k];
  return constraint <= m_ ? multipliers_(k) * std::abs(scales_(constraint - 1)) : multipliers_(k);
}

std::int32_t DualActiveSet::Solve(bool factorise, std::int32_t limit, double* x) {
  bound_flags_.setZero();
  x_.setZero();
  if (const std::int32_t answer = ScaleRows(); answer != 0) {
    std::copy_n(x_.data(), n_, x);
    return answer;
  }
  if (factorise && !Factorise()) return 3;
  InvertFactor();

  const Eigen::Map<const Eigen::VectorXd> linear(program_.linear, n_);
  Multiply(j_.transpose(), linear, projected_);
  Multiply(j_, projected_, x_);
  x_ = -x_;
  farthest_ = x_.norm();
  norm_of_j_ = j_.norm();

  std::int32_t answer = 0;
  for (bool refined = false; answer == 0;) {
    const std::int32_t constraint = MostViolated();
    if (constraint != 0) {
      answer = AddConstraint(constraint, limit);
      refined = false;
    } else if (!refined) {
      refined = true;
      if (!Refine()) answer = 2;
    } else {
      break;
    }
  }
  if (!IsFinite()) answer = 3;
  for (std::int32_t k = 0; k < num_active_; ++k) {  // active bounds hold to the bit
    const Eigen::Index bound = active_[k] - 1 - m_;
    if (bound >= 0)
      x_(bound % n_) = bound < n_ ? program_.lower[bound] : program_.upper[bound - n_];
  }
  std::copy_n(x_.data(), n_, x);
  return answer;
}

/// Scales the rows to unit normals. A row of zeros that its constant violates is the answer -j;
/// constraints that are no numbers, which no comparison would ever find violated, are 3.
std::int32_t DualActiveSet::ScaleRows() {
  const Eigen::Map<const Eigen::MatrixXd, 0, Eigen::OuterStride<>> rows(
      program_.rows, m_, n_, Eigen::OuterStride<>(program_.row_dimension));
  residuals_.setZero();  // squares of the norms
  for (Eigen::Index i = 0; i < n_; ++i) residuals_ += rows.col(i).cwiseAbs2();
  for (Eigen::Index j = 0; j < m_; ++j) {
    const bool is_exact = residuals_(j) > kSmallestSquare && residuals_(j) < 1.0 / kSmallestSquare;
    const double norm = is_exact ? std::sqrt(residuals_(j)) : rows.row(j).stableNorm();
    const double b = program_.constants[j];
    if (std::isnan(residuals_(j)) || !std::isfinite(norm) || std::isnan(b)) return 3;
    scales_(j) = norm > 0.0 ? 1.0 / norm : 0.0;
    if (norm > 0.0) continue;
    if (j < program_.num_equalities ? b != 0.0 : b < 0.0) return -static_cast<std::int32_t>(j + 1);
  }
  for (Eigen::Index i = 0; i < n_; ++i)
    if (std::isnan(program_.lower[i]) || std::isnan(program_.upper[i])) return 3;
  return 0;
}

/// R of C = R'R into the upper triangle; false if C is not finite.
bool DualActiveSet::Factorise() {
  Eigen::Map<Eigen::MatrixXd, 0, Eigen::OuterStride<>> c(
      program_.matrix, n_, n_, Eigen::OuterStride<>(program_.matrix_dimension));
  diagonal_ = c.diagonal();
  for (int attempt = 0; attempt < kMaxEnlargements; ++attempt) {
    Eigen::Index k = 0;
    for (; k < n_; ++k) {
      for (Eigen::Index i = 0; i < k; ++i)
        c(i, k) = (c(k, i) - Dot(i, c.col(i).data(), c.col(k).data())) / c(i, i);
      const double full = diagonal_(k) + enlargement_;
      const double pivot = full - Dot(k, c.col(k).data(), c.col(k).data());
      if (!std::isfinite(pivot)) return false;
      if (pivot <= 0.0 || !IsSignificant(pivot, std::abs(full))) {
        enlargement_ = std::max(2.0 * enlargement_, enlargement_ + FailedPivotShortfall(k, pivot));
        break;
      }
      c(k, k) = std::sqrt(pivot);
    }
    if (k == n_) return true;
  }
  return false;
}

/// Twice the curvature that C lacks along the vector v with v_k = 1 that makes the failed pivot its
/// quadratic form: v'Cv / v'v bounds the smallest eigenvalue from above.
double DualActiveSet::FailedPivotShortfall(Eigen::Index pivot, double value) {
  const Eigen::Map<const Eigen::MatrixXd, 0, Eigen::OuterStride<>> c(
      program_.matrix, n_, n_, Eigen::OuterStride<>(program_.matrix_dimension));
  auto v = normal_.head(pivot);
  v = c.col(pivot).head(pivot);
  for (Eigen::Index k = pivot - 1; k >= 0; --k) {
    v(k) /= c(k, k);
    v.head(k) -= v(k) * c.col(k).head(k);
  }
  const double largest = diagonal_.cwiseAbs().maxCoeff();
  const double floor = largest > 0.0 ? 1e-10 * largest : 1.0;
  return std::max(2.0 * -value / (1.0 + v.squaredNorm()), floor);
}

/// J = R^-1, column by column; no constraint is active yet.
void DualActiveSet::InvertFactor() {
  const Eigen::Map<const Eigen::MatrixXd, 0, Eigen::OuterStride<>> r(
      program_.matrix, n_, n_, Eigen::OuterStride<>(program_.matrix_dimension));
  j_.setZero();
  for (Eigen::Index k = 0; k < n_; ++k) {
    auto y = j_.col(k);
    y(k) = 1.0;
    for (Eigen::Index i = k; i >= 0; --i) {
      y(i) /= r(i, i);
      AddMultiple(i, -y(i), r.col(i).data(), y.data());
    }
  }
}

/// The accuracy asked for, but no less than what rounding leaves of a distance.
double DualActiveSet::Tolerance() const {
  return std::max(accuracy_, static_cast<double>(n_ + 8) * kEps * x_.norm());
}

/// Distance to the constraint, negative outside.
double DualActiveSet::Residual(std::int32_t constraint) const {
  const Eigen::Index k = constraint - 1;
  if (k < m_) {
    const Eigen::Map<const Eigen::VectorXd, 0, Eigen::InnerStride<>> row(
        program_.rows + k, n_, Eigen::InnerStride<>(program_.row_dimension));
    return (row.dot(x_) + program_.constants[k]) * std::abs(scales_(k));
  }
  if (k < m_ + n_) return x_(k - m_) - program_.lower[k - m_];
  return program_.upper[k - m_ - n_] - x_(k - m_ - n_);
}

/// The inactive constraint farthest from being satisfied, equalities first; 0 if all are satisfied.
std::int32_t DualActiveSet::MostViolated() {
  const double tolerance = Tolerance();
  if (m_ > 0) {
    const Eigen::Map<const Eigen::MatrixXd, 0, Eigen::OuterStride<>> rows(
        program_.rows, m_, n_, Eigen::OuterStride<>(program_.row_dimension));
    residuals_ = Eigen::Map<const Eigen::VectorXd>(program_.constants, m_);
    AddProduct(rows, x_, residuals_);
  }
  double worst = tolerance;
  std::int32_t found = 0;
  const auto try_one = [&](double violation, Eigen::Index constraint) {
    if (!(violation > worst)) return;
    worst = violation;
    found = static_cast<std::int32_t>(constraint + 1);
  };
  for (Eigen::Index j = 0; j < program_.num_equalities; ++j)
    if (scales_(j) > 0.0) try_one(std::abs(residuals_(j)) * scales_(j), j);
  if (found != 0) return found;
  for (Eigen::Index j = program_.num_equalities; j < m_; ++j)
    if (scales_(j) > 0.0) try_one(-residuals_(j) * scales_(j), j);
  for (Eigen::Index i = 0; i < n_; ++i) {
    const int flags = static_cast<int>(bound_flags_(i));
    if ((flags & 1) == 0 && program_.lower[i] > -kNoBound)
      try_one(program_.lower[i] - x_(i), m_ + i);
    if ((flags & 2) == 0 && program_.upper[i] < kNoBound)
      try_one(x_(i) - program_.upper[i], m_ + n_ + i);
  }
  return found;
}

/// Brings a violated constraint into the active set, dropping others where their multipliers reach
/// zero on the way. 0, or an answer of Solve.
std::int32_t DualActiveSet::AddConstraint(std::int32_t constraint, std::int32_t limit) {
  const double side = Residual(constraint) < 0.0 ? 1.0 : -1.0;  // -1: an equality from above
  double multiplier = 0.0;
  for (;;) {
    if (++num_changes_ > limit) return 1;
    const bool independent = StepDirections(constraint);

    // How far the multipliers of the active inequalities stay non-negative.
    double dual_step = kInfinity;
    std::int32_t blocking = -1;
    const double noise =
        num_active_ > 0 ? 10.0 * kEps * change_.head(num_active_).cwiseAbs().maxCoeff() : 0.0;
    for (std::int32_t k = 0; k < num_active_; ++k) {
      const double rate = side * change_(k);
      if (IsEquality(active_[k]) || rate <= noise) continue;
      const double step = multipliers_(k) / rate;
      if (step < dual_step) {
        dual_step = step;
        blocking = k;
      }
    }
    double full_step = kInfinity;
    if (independent) {
      const double curvature = projected_.tail(n_ - num_active_).squaredNorm();
      full_step = std::max(-side * Residual(constraint), 0.0) / curvature;
      if (!std::isfinite(full_step)) return 3;
    }
    if (blocking < 0 && !independent) {
      if (multiplier == 0.0) Recompute();  // it may hold but for the rounding of the walk
      const double violation = -side * Residual(constraint);
      if (multiplier == 0.0 && violation <= Tolerance()) return 0;
      return violation > RoundingOfDependence() ? -constraint : 2;
    }

    const double step = std::min(dual_step, full_step);
    multipliers_.head(num_active_) -= side * step * change_.head(num_active_);
    multiplier += side * step;
    if (independent) x_ += side * step * direction_;
    if (independent && full_step <= dual_step) {
      Append(constraint, multiplier);
      const double norm = x_.norm();
      farthest_ = std::max(farthest_, norm);
      if (norm < kComeDown * farthest_) Recompute();
      return 0;
    }
    Drop(blocking);
  }
}

void DualActiveSet::LoadNormal(std::int32_t constraint) {
  const Eigen::Index k = constraint - 1;
  if (k < m_) {
    const Eigen::Map<const Eigen::VectorXd, 0, Eigen::InnerStride<>> row(
        program_.rows + k, n_, Eigen::InnerStride<>(program_.row_dimension));
    normal_ = row * std::abs(scales_(k));
    return;
  }
  normal_.setZero();
  if (k < m_ + n_)
    normal_(k - m_) = 1.0;
  else
    normal_(k - m_ - n_) = -1.0;
}

/// What the projection on column k of J could have been without cancellation.
double DualActiveSet::LargestProjection(Eigen::Index k) const {
  return j_.col(k).cwiseProduct(normal_).cwiseAbs().sum();
}

/// The primal direction J2 J2' n and the dual one T^-1 J1' n of a normal n. False if n depends on
/// the active normals; then there is no primal direction.
bool DualActiveSet::StepDirections(std::int32_t constraint) {
  LoadNormal(constraint);
  const Eigen::Index bound = constraint - 1 - m_;
  if (bound >= n_)
    projected_ = -j_.row(bound - n_).transpose();
  else if (bound >= 0)
    projected_ = j_.row(bound).transpose();
  else
    Multiply(j_.transpose(), normal_, projected_);
  const Eigen::Index q = num_active_;

  change_.head(q) = projected_.head(q);
  for (Eigen::Index k = q - 1; k >= 0; --k) {
    const double* const column = Column(k);
    change_(k) /= column[k];
    AddMultiple(k, -change_(k), column, change_.data());
  }

  // No column of J is longer than J, whose norm neither reflections nor rotations change: what
  // stands out against that needs no closer look.
  const double plain = 100.0 * kEps * norm_of_j_;
  for (Eigen::Index k = q; k < n_; ++k)
    if (!(std::abs(projected_(k)) > plain) &&
        !IsSignificant(std::abs(projected_(k)), LargestProjection(k)))
      projected_(k) = 0.0;
  const double free = projected_.tail(n_ - q).squaredNorm();
  if (!(free > kDependent * kDependent * norm_of_j_ * norm_of_j_)) {
    double reference = 0.0;
    for (Eigen::Index k = q; k < n_; ++k) {
      const double largest = LargestProjection(k);
      reference += largest * largest;
    }
    if (!(free > kDependent * kDependent * reference)) return false;
  }
  Multiply(j_.rightCols(n_ - q), projected_.tail(n_ - q), direction_);
  return true;
}

/// Makes the constraint of the last StepDirections the (q + 1)-th active one: a reflection of the
/// free columns of J turns J2' n into a multiple of the first unit vector.
void DualActiveSet::Append(std::int32_t constraint, double multiplier) {
  const Eigen::Index q = num_active_;
  auto tail = projected_.tail(n_ - q);
  const double norm = tail.norm();
  const double target = tail(0) > 0.0 ? -norm : norm;
  tail(0) -= target;  // v, with J2 v = direction - target J e_q
  const double square = tail.squaredNorm();
  if (square > 0.0) {
    normal_ = direction_ - target * j_.col(q);
    for (Eigen::Index k = q; k < n_; ++k)
      AddMultiple(n_, -2.0 / square * tail(k - q), normal_.data(), j_.col(k).data());
  }
  double* const column = Column(q);
  std::copy_n(projected_.data(), q, column);
  column[q] = target;
  active_[q] = constraint;
  multipliers_(q) = multiplier;
  ++num_active_;
  SetActiveFlag(constraint, true);
}

/// Takes the active constraint at `position` out; rotations make T triangular again.
void DualActiveSet::Drop(std::int32_t position) {
  SetActiveFlag(active_[position], false);
  for (Eigen::Index k = position + 1; k < num_active_; ++k) {
    double* const column = Column(k);
    const double r = std::hypot(column[k - 1], column[k]);
    const double c = column[k - 1] / r, s = column[k] / r;
    column[k - 1] = r;
    for (Eigen::Index l = k + 1; l < num_active_; ++l) {
      double* const later = Column(l);
      const double upper = later[k - 1], lower = later[k];
      later[k - 1] = c * upper + s * lower;
      later[k] = c * lower - s * upper;
    }
    for (Eigen::Index i = 0; i < n_; ++i) {
      const double left = j_(i, k - 1), right = j_(i, k);
      j_(i, k - 1) = c * left + s * right;
      j_(i, k) = c * right - s * left;
    }
    std::copy_n(column, k, Column(k - 1));
    active_[k - 1] = active_[k];
    multipliers_(k - 1) = multipliers_(k);
  }
  --num_active_;
}

void DualActiveSet::SetActiveFlag(std::int32_t constraint, bool active) {
  const Eigen::Index k = constraint - 1;
  if (k < m_) {
    scales_(k) = active ? -std::abs(scales_(k)) : std::abs(scales_(k));
    return;
  }
  const bool is_lower = k < m_ + n_;
  bound_flags_(is_lower ? k - m_ : k - m_ - n_) += (active ? 1.0 : -1.0) * (is_lower ? 1.0 : 2.0);
}

/// What rounding may leave of a constraint whose normal is the combination `change_` of the active
/// normals: the coefficients are large where the active normals nearly depend on each other.
double DualActiveSet::RoundingOfDependence() const {
  return 100.0 * kEps * (1.0 + change_.head(num_active_).lpNorm<1>()) * std::max(1.0, x_.norm());
}

/// x and the multipliers from the active set alone. A walk that starts afar, where C is nearly
/// singular, leaves the rounding of its first points in later ones.
void DualActiveSet::Recompute() {
  const Eigen::Index q = num_active_;

  // x = J y with T'y1 = -b of the unit normals and y2 = -J2'd; multipliers T^-1 (y1 + J1'd).
  x_.setZero();
  for (Eigen::Index k = 0; k < q; ++k) {
    const double* const column = Column(k);
    projected_(k) = -Residual(active_[k]);
    projected_(k) -= Dot(k, column, projected_.data());
    projected_(k) /= column[k];
  }
  Multiply(j_.transpose(), Eigen::Map<const Eigen::VectorXd>(program_.linear, n_), direction_);
  projected_.tail(n_ - q) = -direction_.tail(n_ - q);
  Multiply(j_, projected_, x_);
  multipliers_.head(q) = projected_.head(q) + direction_.head(q);
  for (Eigen::Index k = q - 1; k >= 0; --k) {
    const double* const column = Column(k);
    multipliers_(k) /= column[k];
    AddMultiple(k, -multipliers_(k), column, multipliers_.data());
  }
  for (Eigen::Index k = 0; k < q; ++k)
    if (!IsEquality(active_[k])) multipliers_(k) = std::max(multipliers_(k), 0.0);
  farthest_ = x_.norm();
}

/// One Newton step on the optimality conditions of the active set takes out the rounding of the
/// walk. False if the active constraints do not even nearly hold.
bool DualActiveSet::Refine() {
  const Eigen::Map<const Eigen::MatrixXd, 0, Eigen::OuterStride<>> r(
      program_.matrix, n_, n_, Eigen::OuterStride<>(program_.matrix_dimension));
  const Eigen::Index q = num_active_;

  // Gradient of the Lagrangian, with C = R'R.
  for (Eigen::Index i = 0; i < n_; ++i) direction_(i) = r.row(i).tail(n_ - i).dot(x_.tail(n_ - i));
  for (Eigen::Index i = 0; i < n_; ++i)
    projected_(i) = Dot(i + 1, r.col(i).data(), direction_.data()) + program_.linear[i];
  double worst = 0.0;
  for (Eigen::Index k = 0; k < q; ++k) {
    LoadNormal(active_[k]);
    projected_ -= multipliers_(k) * normal_;
    change_(k) = -Residual(active_[k]);
    worst = std::max(worst, std::abs(change_(k)));
  }
  if (!(worst <= std::max(kUseless, 1e3 * accuracy_) * std::max(1.0, x_.norm()))) return false;
  Multiply(j_.transpose(), projected_, direction_);

  // dx = J (y1, -J2'g) with T'y1 = -residual; the multipliers change by T^-1 (J1'g + y1).
  for (Eigen::Index k = 0; k < q; ++k) {
    const double* const column = Column(k);
    change_(k) -= Dot(k, column, change_.data());
    change_(k) /= column[k];
  }
  projected_.head(q) = change_.head(q);
  projected_.tail(n_ - q) = -direction_.tail(n_ - q);
  change_.head(q) += direction_.head(q);
  for (Eigen::Index k = q - 1; k >= 0; --k) {
    const double* const column = Column(k);
    change_(k) /= column[k];
    AddMultiple(k, -change_(k), column, change_.data());
  }
  AddProduct(j_, projected_, x_);
  multipliers_.head(q) += change_.head(q);
  for (Eigen::Index k = 0; k < q; ++k)
    if (!IsEquality(active_[k])) multipliers_(k) = std::max(multipliers_(k), 0.0);
  return true;
}

bool DualActiveSet::IsFinite() const {
  return x_.allFinite() && multipliers_.head(num_active_).allFinite();
}

}  // namespace corvath::algorithm::optimizer
