#include "metamodel/thin_plate_splines.h"

#include "archive/instantiate.h"
#include "foundation/exception.h"
#include "foundation/same_figures.h"
#include "foundation/text_stream.h"
#include "metamodel/kernels/kernel.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>
#include <new>
#include <stdexcept>

namespace corvath::math::metamodel {

namespace {

/// Rows predicted at once: bounds the memory of the transformed copies.
constexpr Eigen::Index kBlockRows = 256;

/// Regularisation per squared sum of all distances.
constexpr double kRegularisation = 1e-8;

/// phi of the square roots of `squared`: s ln(s) / 2 is r^2 ln r without the root. Where s is 0, phi
/// is 0.
template <class Array>
auto PhiOfSquared(const Array& squared) {
  return (squared == 0.0).select(0.0, 0.5 * squared * squared.log());
}

/// The symmetric system of the coefficients for support points `p` (m x N).
Eigen::MatrixXd BuildSystem(const Eigen::MatrixXd& p) {
  const Eigen::Index m = p.rows();
  const Eigen::Index n = p.cols();
  Eigen::MatrixXd system = Eigen::MatrixXd::Zero(n + 1 + m, n + 1 + m);
  const Eigen::MatrixXd support = p.transpose();
  double sum = 0.0;  // over ordered pairs: each distance counts twice
  Eigen::VectorXd squared(n);
  for (Eigen::Index j = 0; j < n; ++j) {
    SquaredDistancesTo(p.col(j), support, squared);
    system.col(j).head(n) = PhiOfSquared(squared.array());
    sum += squared.cwiseSqrt().sum();
  }
  system.diagonal().head(n).array() += sum * sum * kRegularisation;
  system.col(n).head(n).setOnes();
  system.row(n).head(n).setOnes();
  system.topRightCorner(n, m) = p.transpose();
  system.bottomLeftCorner(m, n) = p;
  return system;
}

Eigen::FullPivLU<Eigen::MatrixXd> Factorise(const Eigen::MatrixXd& scaled_points) {
  Eigen::FullPivLU<Eigen::MatrixXd> factors(BuildSystem(scaled_points));
  if (factors.rank() != factors.rows()) {
    utils::WideTextStream message;
    message << L"Surrogate can not compute the internal coefficients. The support points correlate "
               L"and lead to a non-invertible matrix (rank "
            << factors.rank() << L", matrix dimension " << factors.rows() << L").";
    throw utils::runtime_error(message.str());
  }
  return factors;
}

void RequireValuePerPoint(const Eigen::MatrixXd& points, const Eigen::VectorXd& values) {
  if (points.rows() == values.size() && points.rows() > 0) return;
  utils::WideTextStream message;
  message << L"Surrogate needs the same number of support points (=" << points.rows()
          << L") and values (=" << values.size() << L").";
  throw utils::runtime_error(message.str());
}

}  // namespace

SurrogateTPS::SurrogateTPS(const Eigen::MatrixXd& points, const Eigen::VectorXd& values)
    : SurrogateBase(points, values) {}

double SurrogateTPS::Phi(double r) const {
  return r > 0.0 ? r * r * std::log(r) : 0.0;
}

bool SurrogateTPS::IsBuilt() const {
  return !need_build_ && !NeedsBuild(trans_coord_) && coeffs_.size() > 0;
}

bool SurrogateTPS::Build() {
  if (!need_build_ && !NeedsBuild(trans_coord_)) return true;
  residuals_.resize(0);
  RequireValuePerPoint(*points_, values_);
  const Eigen::MatrixXd scaled_points = TransformedPoints().transpose();
  const auto factors = Factorise(scaled_points);
  Eigen::VectorXd right_side = Eigen::VectorXd::Zero(factors.rows());
  right_side.head(values_.size()) = values_;
  coeffs_ = factors.solve(right_side);
  scaled_points_ = scaled_points;
  need_build_ = false;
  return true;
}

bool SurrogateTPS::IsSolvable() const {
  try {
    RequireValuePerPoint(*points_, values_);
    Factorise(PreviewTransformedPoints().transpose());
    return true;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    return false;
  }
}

bool SurrogateTPS::BuildOptimal(const IndexVector& /*subsets*/) {
  residuals_.resize(0);
  return Build();
}

Eigen::VectorXd SurrogateTPS::Approximate(const ConstPoints& points) const {
  if (!IsBuilt())
    throw utils::runtime_error(
        L"Surrogate can not approximate any values before the regression was performed.");
  const Eigen::Index m = scaled_points_.rows();
  const Eigen::Index n = scaled_points_.cols();
  if (points.cols() != m) {
    utils::WideTextStream message;
    message << L"Surrogate expected another dimension of points (obtained " << points.cols()
            << L", expected " << m << L").";
    throw utils::runtime_error(message.str());
  }
  if (coeffs_.size() != n + 1 + m) {
    utils::WideTextStream message;
    message << L"Thin Plate Splines: " << coeffs_.size() << L" coefficients for " << n
            << L" support points and " << m << L" inputs";
    throw utils::runtime_error(message.str());
  }
  const Eigen::MatrixXd support = scaled_points_.transpose();
  Eigen::VectorXd values(points.rows());
  Eigen::MatrixXd block;
  Eigen::VectorXd squared(n);
  for (Eigen::Index begin = 0; begin < points.rows(); begin += kBlockRows) {
    const Eigen::Index rows = std::min(kBlockRows, points.rows() - begin);
    block = points.middleRows(begin, rows);
    if (trans_coord_) trans_coord_->ForwardInPlace(block);
    auto result = values.segment(begin, rows);
    result = (block * coeffs_.tail(m)).array() + coeffs_(n);
    for (Eigen::Index row = 0; row < rows; ++row) {
      SquaredDistancesTo(block.row(row).transpose(), support, squared);
      result(row) += coeffs_.head(n).dot(PhiOfSquared(squared.array()).matrix());
    }
  }
  return values;
}

std::wstring SurrogateTPS::GetName(bool /*short_form*/) const {
  return L"Thin Plate Splines";
}

void SurrogateTPS::SetSettings(const SurrogateSettingsBase& /*settings*/) {}

bool SurrogateTPS::Equals(const SurrogateBase& other) const {
  if (!SurrogateBase::Equals(other)) return false;
  const auto* own = dynamic_cast<const SurrogateTPS*>(&other);
  return own && SameFigures(coeffs_, own->coeffs_) &&
         SameFigures(scaled_points_, own->scaled_points_);
}

template <class Archive>
void SurrogateTPS::serialize(Archive& ar, unsigned int /*version*/) {
  ar& boost::serialization::make_nvp("SurrogateBase",
                                     boost::serialization::base_object<SurrogateBase>(*this));
  ar& BOOST_SERIALIZATION_NVP(coeffs_) & BOOST_SERIALIZATION_NVP(scaled_points_);
}

}  // namespace corvath::math::metamodel

ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::SurrogateTPS)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::SurrogateTPS)
