#include "variant/signals/peaks.h"

#include "foundation/math_exception.h"

#include <cmath>
#include <utility>
#include <vector>

namespace corvath::math::functions {

namespace {

using Vector = Value::Vector;

/// The one row of numbers that has peaks, as real parts or absolute values.
std::vector<double> Heights(const Value& x, bool magnitude) {
  if (x.IsBoolean()) throw CTypeException("Invalid type BOOLEAN for findpeaks-function.");
  if (x.IsScalar()) throw CTypeException("Invalid type Scalar for findpeaks-function.");
  if (!x.IsVector() && x.Size1() != 1)
    throw CTypeException("Number of rows is not 1 for findpeaks-function.");
  if (x.IsMatrix())  // has a row, but no channel behind a timeline
    throw CDomainException("This row index doesn't exist in this matrix. \n");
  std::vector<double> heights;
  const auto add = [&](const Value::Complex& z) {
    heights.push_back(magnitude ? std::abs(z) : z.real());
  };
  if (x.IsVector())
    for (const auto& z : x.GetVector()) add(z);
  else
    for (const auto& z : x.GetMatrix().data()) add(z);
  if (heights.empty()) throw CTypeException("Data is empty for findpeaks-function.");
  return heights;
}

}  // namespace

void findpeaks(Value& result, const Value& x, std::int32_t mode, std::int32_t mind, double minh,
               double th, std::uint64_t num) {
  const std::vector<double> y = Heights(x, mode == kMagPeaks);
  const bool maxima = mode >= kPeaks;
  const bool minima = mode < kMaxPeaks;
  std::vector<std::size_t> peaks;
  bool up = false;
  bool down = false;
  std::size_t last = 0;
  for (std::size_t i = 1; i < y.size() && peaks.size() < num; ++i) {
    const double before = y[i - 1];
    bool turned = false;
    if (y[i] > before && !up) {
      turned = std::exchange(down, false);
      up = true;
    } else if (y[i] < before && !down) {
      turned = std::exchange(up, false);
      down = true;
    }
    if (!turned) continue;
    if (!peaks.empty() && static_cast<std::int64_t>(i) <= static_cast<std::int64_t>(last) + mind)
      continue;
    const bool wanted = down ? maxima : minima;
    if (wanted && before > minh && std::abs(before - y[last]) >= std::abs(th)) {
      last = i - 1;
      peaks.push_back(last);
    }
  }

  Vector abscissae(peaks.size());
  Vector ordinates(peaks.size());
  for (std::size_t k = 0; k < peaks.size(); ++k) {
    abscissae(k) =
        x.IsVector() ? Value::Complex(static_cast<double>(peaks[k])) : x.GetVector()(peaks[k]);
    ordinates(k) = y[peaks[k]];
  }
  result = Value::XYData(abscissae, ordinates);
}

}  // namespace corvath::math::functions
