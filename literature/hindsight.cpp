#include "literature/hindsight.h"

#include <algorithm>
#include <cmath>

namespace literature {

Hindsight LookBack(const PublishedFunction& function, const corvath::training::ChosenModel& chosen,
                   const corvath::training::ResponseData& data, std::uint32_t seed) {
  constexpr Eigen::Index kFresh = 2000;
  const Sample fresh = UniformSample(function, kFresh, seed);
  const Eigen::VectorXd predicted = chosen.model->Approximate(fresh.points);
  double smallest = HUGE_VAL;
  for (const auto& tried : chosen.tried) {
    const auto model = corvath::training::MakeModel(*tried.settings, data.points, data.values);
    if (!model->Build()) continue;
    const double error = (model->Approximate(fresh.points) - fresh.values).norm();
    if (error < smallest) smallest = error;  // a NaN is not
  }
  const double exact = 1e-9 * fresh.values.norm();  // errors below are rounding
  return {corvath::training::Determination(fresh.values, predicted),
          ((predicted - fresh.values).norm() + exact) / (smallest + exact)};
}

}  // namespace literature
