#include "stochastics/rv_set_nataf.h"

#include "archive/instantiate.h"
#include "foundation/exception.h"
#include "foundation/log.h"
#include "stochastics/nataf_adjustment.h"
#include "stochastics/normal_quantile.h"

#include <Eigen/Eigenvalues>

#include <cmath>
#include <limits>

namespace corvath::algorithm {

namespace {

constexpr double kMatrixTolerance = 1e-12;

[[noreturn]] void Fail(const std::wstring& reason) {
  throw utils::runtime_error(L"Can not set correlation matrix for Nataf model: " + reason);
}

bool IsCorrelationMatrix(const Eigen::MatrixXd& matrix) {
  // Written so that NaN is refused too.
  return ((matrix.diagonal().array() - 1.0).abs() < kMatrixTolerance).all() &&
         ((matrix - matrix.transpose()).array().abs() < kMatrixTolerance).all() &&
         ((matrix.array().abs() <= 1.0) ||
          Eigen::MatrixXd::Identity(matrix.rows(), matrix.cols()).array() == 1.0)
             .all();
}

std::wstring SizeMessage(const wchar_t* function, Eigen::Index size, std::size_t n) {
  return std::wstring(L"Can not compute joint ") + function +
         L" by Nataf model: Vector size of input design (=" + std::to_wstring(size) +
         L") must match number of random variables (=" + std::to_wstring(n) + L")";
}

}  // namespace

void RVSet_Nataf::SetCorrelationMatrix(const Eigen::MatrixXd& matrix) {
  if (matrix.rows() != matrix.cols())
    Fail(L"Correlation matrix must be square, obtained a " + std::to_wstring(matrix.rows()) +
         L" x " + std::to_wstring(matrix.cols()) + L" matrix.");
  if (matrix.rows() != Size())
    Fail(L"Dimensions of correlation matrix (=" + std::to_wstring(matrix.rows()) +
         L") must match number of random variables (=" + std::to_wstring(RVs.size()) + L")");
  if (!IsCorrelationMatrix(matrix)) Fail(L"invalid correlation matrix used.");

  const Eigen::MatrixXd adjusted = AdjustCorrelations(RVs, matrix);
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(adjusted);
  if (solver.info() != Eigen::Success)
    Fail(L"Eigen decomposition of correlation matrix could not be performed.");
  const Eigen::VectorXd& values = solver.eigenvalues();
  // The eigenvalue 0 of fully correlated variables comes out as a rounding error of either sign.
  const double zero = static_cast<double>(Size()) * std::numeric_limits<double>::epsilon();
  if (!(values.array() > zero).all()) Fail(L"Correlation matrix is not positive definite.");

  const Eigen::MatrixXd& vectors = solver.eigenvectors();
  Correlation_matrix = matrix;
  Correlation_determinant = values.prod();
  m_c_sq = vectors * values.cwiseSqrt().asDiagonal() * vectors.transpose();
  m_c_sq_inv = vectors * values.cwiseSqrt().cwiseInverse().asDiagonal() * vectors.transpose();
}

bool RVSet_Nataf::HasModel() const {
  const auto fits = [n = Size()](const Eigen::MatrixXd& m) {
    return m.rows() == n && m.cols() == n;
  };
  return fits(Correlation_matrix) && fits(m_c_sq) && fits(m_c_sq_inv);
}

Eigen::MatrixXd RVSet_Nataf::GetStandardCorrelationMatrix() const {
  if (!HasModel()) return {};  // a damaged file may hold any shape
  return m_c_sq * m_c_sq.transpose();
}

double RVSet_Nataf::PDF(const Eigen::VectorXd& x) const {
  if (x.size() != Size()) throw utils::runtime_error(SizeMessage(L"PDF", x.size(), RVs.size()));
  double density = ProductOfDensities(x);
  Eigen::VectorXd z(Size());
  for (Eigen::Index i = 0; i < Size(); ++i) {
    z(i) = math::NormalQuantile(RVs[static_cast<std::size_t>(i)]->CDF(x(i)));
    density /= math::NormalPdf(z(i));
  }
  return density * JointNormalDensity(z);
}

double RVSet_Nataf::JointNormalDensity(const Eigen::VectorXd& z) const {
  if (z.size() != Size())
    throw utils::runtime_error(
        L"The size of the input vector must match the number of random variables defining this "
        L"RVSet. Obtained a vector of size '" +
        std::to_wstring(z.size()) + L"', expected a vector of size '" +
        std::to_wstring(RVs.size()) + L"'");
  const double independent =
      std::exp(-0.5 * z.squaredNorm()) * std::pow(math::kInverseSqrtTwoPi, Size());
  if (!HasModel()) {
    utils::log::GetSharedStreamLog()->Write(
        utils::log::kWarning,
        L"You missed defining/updating the correlation matrix for the Nataf model. Assuming an "
        L"independent set definition for the returned PDF value.");
    return independent;
  }
  if (Correlation_matrix == Eigen::MatrixXd::Identity(Size(), Size())) return independent;
  const Eigen::VectorXd w = m_c_sq_inv * z;
  return std::exp(-0.5 * w.squaredNorm()) / std::sqrt(Correlation_determinant) *
         std::pow(math::kInverseSqrtTwoPi, Size());
}

double RVSet_Nataf::CDF(const Eigen::VectorXd& x) const {
  if (x.size() != Size()) throw utils::runtime_error(SizeMessage(L"CDF", x.size(), RVs.size()));
  const Eigen::MatrixXd u = ToStandardGauss(x);
  double product = 1.0;
  for (const double value : u.col(0)) product *= math::NormalCdf(value);
  return product;
}

Eigen::MatrixXd RVSet_Nataf::ToStandardGauss(const Eigen::MatrixXd& x) const {
  const Eigen::MatrixXd u = RVSet::ToStandardGauss(x);
  return HasModel() ? Eigen::MatrixXd(m_c_sq_inv * u) : u;
}

Eigen::MatrixXd RVSet_Nataf::FromStandardGauss(const Eigen::MatrixXd& u) const {
  return RVSet::FromStandardGauss(CorrelateStandardGauss(u));
}

Eigen::MatrixXd RVSet_Nataf::CorrelateStandardGauss(const Eigen::MatrixXd& u) const {
  // A matrix with another number of rows is left to whoever uses the result to refuse.
  return HasModel() && u.rows() == Size() ? Eigen::MatrixXd(m_c_sq * u) : u;
}

boost::shared_ptr<RVSet> RVSet_Nataf::Clone() const {
  auto copy = boost::make_shared<RVSet_Nataf>(*this);
  copy->CloneVariables();
  return copy;
}

template <class Archive>
void RVSet_Nataf::serialize(Archive& ar, const unsigned int) {
  ar& boost::serialization::make_nvp("RVSet", boost::serialization::base_object<RVSet>(*this));
}

}  // namespace corvath::algorithm

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::RVSet_Nataf)
ZEL_EXPORT_IMPLEMENT(corvath::algorithm::RVSet_Nataf)
