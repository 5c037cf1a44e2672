#include "stochastics/distributions/rv_kernel.h"

#include "foundation/exception.h"
#include "stochastics/distributions/persisted_form.h"
#include "stochastics/normal_quantile.h"

#include <cmath>

namespace corvath::algorithm {

namespace {

std::wstring TypeNumber() {
  return std::to_wstring(static_cast<int>(enums::RandomVariable::KERNEL));
}

}  // namespace

void RV_Kernel::RequireWidth() const {
  if (!(Kernel_width > 0.0))
    throw utils::runtime_error(L"RV '" + GetName() + L"' of type '" + TypeNumber() +
                               L"': The samples have no spread, so there is no kernel density.");
}

double RV_Kernel::PDF(double x) const {
  RequireWidth();
  double sum = 0.0;
  for (const double sample : RV_Parameter) sum += RV_Gauss.PDF((x - sample) / Kernel_width);
  return sum / Kernel_width / static_cast<double>(RV_Parameter.size());
}

double RV_Kernel::CDF(double x) const {
  RequireWidth();
  double sum = 0.0;
  for (const double sample : RV_Parameter) sum += RV_Gauss.CDF((x - sample) / Kernel_width);
  return sum / static_cast<double>(RV_Parameter.size());
}

// Newton's method from the mean, to a hundredth of the standard deviation: within about its square
// of the quantile, since the convergence is quadratic. Far out, next to gaps between samples, it may
// run away; such quantiles are refused.
double RV_Kernel::InverseCDF(double p) const {
  RequireWidth();
  if (std::isnan(p)) return p;
  constexpr int kMaxSteps = 151;
  constexpr double kTolerance = 0.01;
  const double bounded = math::ClampProbability(p);
  double x = RV_Statistical_Moments(0);
  for (int i = 1; i < kMaxSteps && std::isfinite(x); ++i) {
    const double step = (CDF(x) - bounded) / PDF(x);
    x -= step;
    if (std::abs(step / RV_Statistical_Moments(1)) < kTolerance) return x;
  }
  throw utils::runtime_error(L"RV '" + GetName() + L"' of type '" + TypeNumber() +
                             L"': Iteration does not converge.");
}

std::vector<std::wstring> RV_Kernel::GetParameterNames() const {
  return {L"Samples"};
}

void RV_Kernel::SetParameters(const Eigen::VectorXd& samples) {
  if (samples.size() < 1)
    throw utils::runtime_error(L"RV " + GetName() + L" of type " + TypeNumber() +
                               L": Too few input samples given, expected: 1, obtained: " +
                               std::to_wstring(samples.size()));
  RequireMagnitude(samples);
  const auto n = static_cast<double>(samples.size());
  const double mean = samples.sum() / n;
  const double sd =
      samples.size() < 2 ? 0.0 : std::sqrt((samples.array() - mean).square().sum() / (n - 1.0));
  Store(samples, Eigen::Vector2d(mean, sd));
  Kernel_width = sd / std::sqrt(n);
}

void RV_Kernel::SetStats(const Eigen::VectorXd&) {
  throw utils::runtime_error(L"RV " + GetName() + L" of type " + TypeNumber() +
                             L": SetStats cannot be used for kernel density.");
}

void RV_Kernel::Reset() {
  RV_Kernel::SetParameters((Eigen::VectorXd(5) << -1.0, 1.0, -0.25, 0.25, 0.0).finished());
}

Eigen::Index RV_Kernel::NumParameters() const {
  return std::max<Eigen::Index>(RV_Parameter.size(), 1);
}

template <class Archive>
void RV_Kernel::SerializeFurther(Archive& ar) {
  ar& BOOST_SERIALIZATION_NVP(RV_Gauss);
  ar& BOOST_SERIALIZATION_NVP(Kernel_width);
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_Kernel)
