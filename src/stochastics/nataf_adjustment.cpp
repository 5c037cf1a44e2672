#include "stochastics/nataf_adjustment.h"

#include "foundation/closeness.h"
#include "foundation/exception.h"
#include "foundation/text_stream.h"
#include "stochastics/normal_quantile.h"

#include <array>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <utility>

namespace corvath::algorithm {

namespace {

namespace types = enums::RandomVariable;

[[noreturn]] void Fail(const wchar_t* reason) {
  throw utils::runtime_error(std::wstring(L"Can not set correlation matrix for Nataf model: ") +
                             reason);
}

bool IsNotContinuous(const RV& variable) {
  const int type = variable.GetTypeId();
  return type == types::BERNOULLI || type == types::DISCRETE || type == types::POISSON;
}

double CoefficientOfVariation(const RV& variable) {
  return variable.GetStats()(1) / variable.GetStats()(0);
}

/// Fit to the exact factor rho' / rho of two marginals, as a polynomial in rho. The quadratic term
/// of uniform with exponential is the one that projects are made with; the published one has a
/// plus, which comes nearer to the exact factor (by 0.01 at rho = 0.6).
struct Polynomial {
  int first;
  int second;
  std::array<double, 4> coefficients;
};

constexpr Polynomial kPolynomials[] = {
    {types::NORMAL, types::NORMAL, {1.0}},
    {types::NORMAL, types::UNIFORM, {1.0233267}},
    {types::NORMAL, types::EXPONENTIAL, {1.10717781}},
    {types::NORMAL, types::GUMBEL, {1.03149756}},
    {types::UNIFORM, types::UNIFORM, {1.04706351, 0.0, -0.0471729}},
    {types::UNIFORM, types::EXPONENTIAL, {1.1326662, 0.0, -0.02902534}},
    {types::UNIFORM, types::GUMBEL, {1.05541677, 0.0, 0.01456204}},
    {types::EXPONENTIAL, types::EXPONENTIAL, {1.2210871, -0.3371724, 0.20027882, -0.0882202}},
    {types::EXPONENTIAL, types::GUMBEL, {1.14182991, -0.15003895, 0.03303221, 0.0073382}},
    {types::GUMBEL, types::GUMBEL, {1.06400528, -0.06878942, 0.00482021}},
};

std::optional<double> ClosedForm(const RV& x, const RV& y, double rho) {
  const int first = x.GetTypeId();
  const int second = y.GetTypeId();
  if (first == types::LOGNORMAL && second == types::LOGNORMAL) {
    const double d1 = CoefficientOfVariation(x);
    const double d2 = CoefficientOfVariation(y);
    return std::log1p(rho * d1 * d2) / std::sqrt(std::log1p(d1 * d1) * std::log1p(d2 * d2));
  }
  if ((first == types::NORMAL && second == types::LOGNORMAL) ||
      (first == types::LOGNORMAL && second == types::NORMAL)) {
    const double d = CoefficientOfVariation(first == types::LOGNORMAL ? x : y);
    return rho * d / std::sqrt(std::log1p(d * d));
  }
  for (const auto& [one, other, c] : kPolynomials)
    if ((first == one && second == other) || (first == other && second == one))
      return (c[0] + rho * (c[1] + rho * (c[2] + rho * c[3]))) * rho;
  return std::nullopt;
}

/// The mid-point rule over the plane of two standard normal variables, each mapped to (-1, 1) by
/// u = 1.75 ln((1 + t) / (1 - t)).
constexpr Eigen::Index kCells = 50;
constexpr double kCellWidth = 0.04;
constexpr double kStretch = 1.75;  // du / dt = 3.5 / (1 - t^2)
constexpr double kTolerance = 1e-8;
constexpr int kMaxPasses = 51;

using Nodes = Eigen::Array<double, kCells, 1>;

Nodes MakeNodes() {
  return (Nodes::LinSpaced(0.0, static_cast<double>(kCells - 1)) + 0.5) * kCellWidth - 1.0;
}

/// Standardised values of a marginal at the nodes times their weights.
Nodes WeightedValues(const RV& variable, const Nodes& t, const Nodes& u) {
  const double mean = variable.GetStats()(0);
  const double sd = variable.GetStats()(1);
  Nodes result;
  for (Eigen::Index i = 0; i < kCells; ++i)
    result(i) = (variable.InverseCDF(math::NormalCdf(u(i))) - mean) / sd;
  return result * (kCellWidth * 2.0 * kStretch) / (1.0 - t.square());
}

void RequireCorrelation(double rho) {
  if (std::abs(rho) <= 1.0 || math::IsClose(std::abs(rho), 1.0)) return;
  utils::TextStream message;
  message << "_rho (" << rho << ") is outside of its domain";
  throw std::domain_error(message.str());
}

double NormalisingFactor(double rho) {
  return math::kInverseSqrtTwoPi * math::kInverseSqrtTwoPi / std::sqrt(1.0 - rho * rho);
}

/// Solves the integral equation of pairs without a closed form. What depends on one marginal alone
/// is worked out once for all its pairs.
class NumericAdjustment {
 public:
  explicit NumericAdjustment(const std::vector<boost::shared_ptr<RV>>& variables)
      : variables_(variables),
        t_(MakeNodes()),
        u_(kStretch * ((1.0 + t_) / (1.0 - t_)).log()),
        values_(variables.size()) {}

  double Adjust(std::size_t i, std::size_t j, double rho) {
    double rho0 = rho;
    for (int pass = 1; pass < kMaxPasses; ++pass) {
      const double error = rho - PhysicalCorrelation(Values(i), Values(j), rho0);
      rho0 += error;
      if (std::abs(error) <= kTolerance) return rho0;
      if (std::isnan(rho0)) break;
    }
    utils::WideTextStream message;
    message << L"Can not adjust correlation matrix for Nataf model: Error computing modified "
               L"correlation (rho = "
            << rho0 << L")";
    throw utils::runtime_error(message.str());
  }

 private:
  const Nodes& Values(std::size_t i) {
    if (!values_[i]) values_[i] = WeightedValues(*variables_[i], t_, u_);
    return *values_[i];
  }

  double PhysicalCorrelation(const Nodes& a, const Nodes& b, double rho) const {
    RequireCorrelation(rho);
    const double scale = -0.5 / (1.0 - rho * rho);
    double sum = 0.0;
    for (Eigen::Index j = 0; j < kCells; ++j) {
      const double v = u_(j);
      const Nodes exponent = scale * (u_ * (u_ - 2.0 * rho * v) + v * v);
      sum += b(j) * (a * exponent.exp()).sum();
    }
    return sum * NormalisingFactor(rho);
  }

  const std::vector<boost::shared_ptr<RV>>& variables_;
  const Nodes t_;
  const Nodes u_;
  std::vector<std::optional<Nodes>> values_;
};

}  // namespace

double BivariateNormalPdf(double u, double v, double rho) {
  RequireCorrelation(rho);
  const double exponent = (u * u - 2.0 * rho * u * v + v * v) / (2.0 * (1.0 - rho * rho));
  return std::exp(-exponent) * NormalisingFactor(rho);
}

Eigen::MatrixXd AdjustCorrelations(const std::vector<boost::shared_ptr<RV>>& variables,
                                   const Eigen::MatrixXd& matrix) {
  const std::size_t n = variables.size();
  Eigen::MatrixXd result = Eigen::MatrixXd::Identity(matrix.rows(), matrix.cols());
  NumericAdjustment numeric(variables);
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = i + 1; j < n; ++j) {
      const auto row = static_cast<Eigen::Index>(i);
      const auto column = static_cast<Eigen::Index>(j);
      double rho = matrix(row, column);
      if (std::abs(rho) > kNegligibleCorrelation) {
        if (IsNotContinuous(*variables[i]) || IsNotContinuous(*variables[j]))
          Fail(L"At least one random variable is not continuous (e.g. Bernoulli distribution).");
        const std::optional<double> closed = ClosedForm(*variables[i], *variables[j], rho);
        rho = closed ? *closed : numeric.Adjust(i, j, rho);
        if (!(std::abs(rho) <= 1.0))  // NaN as well: a logarithm of a negative number
          Fail(L"Correlations can not be calculated in standard normal space.");
      }
      result(row, column) = result(column, row) = rho;
    }
  }
  return result;
}

}  // namespace corvath::algorithm
