#include "optimizer/stencil.h"

#include "optimizer/refuse.h"

#include <cmath>

namespace corvath::algorithm::optimizer {

namespace {

/// Designs per input beside the centre.
int PerInput(NumericalDifferences type) {
  switch (type) {
    case NumericalDifferences::kCentral:
      return 2;
    case NumericalDifferences::kForward:
    case NumericalDifferences::kBackward:
      return 1;
    case NumericalDifferences::kFivePoint:
      return 4;
  }
  Refuse(L"Programming error in NLPQLP: Numerical Differences Type does not fit.");
}

}  // namespace

bool Stencil::HasCentre() const {
  return type_ == NumericalDifferences::kForward || type_ == NumericalDifferences::kBackward;
}

Eigen::Index Stencil::Size(bool with_start) const {
  return PerInput(type_) * step_.size() + (with_start || HasCentre() ? 1 : 0);
}

Eigen::MatrixXd Stencil::Designs(const Eigen::VectorXd& centre, bool with_start) const {
  Eigen::MatrixXd designs = centre.transpose().replicate(Size(with_start), 1);
  const Eigen::Index first = with_start || HasCentre() ? 1 : 0;
  const int per_input = PerInput(type_);
  for (Eigen::Index i = 0; i < step_.size(); ++i) {
    const double h = step_(i), x = centre(i), lower = lower_(i), upper = upper_(i);
    auto column = designs.col(i);
    auto own = column.segment(first + per_input * i, per_input);
    // One-sided types move the base of this input in all designs where the step leaves the bounds.
    const auto one_sided = [&](double base, double value) {
      column.setConstant(base);
      own(0) = value;
    };
    switch (type_) {
      case NumericalDifferences::kForward:
        if (x + h > upper)
          one_sided(upper - h, upper);
        else if (x + h < lower)
          one_sided(lower + h, lower);
        else
          own(0) = x + h;
        break;
      case NumericalDifferences::kBackward:
        if (x - h < lower)
          one_sided(lower + h, lower);
        else if (x - h > upper)
          one_sided(upper - h, upper - 2.0 * h);
        else
          own(0) = x - h;
        break;
      case NumericalDifferences::kCentral:
        if (x - h < lower)
          own << lower, lower + 2.0 * h;
        else if (x + h > upper)
          own << upper - 2.0 * h, upper;
        else
          own << x - h, x + h;
        break;
      case NumericalDifferences::kFivePoint:
        if (x - 2.0 * h < lower)
          own << lower, lower + h, lower + 3.0 * h, lower + 4.0 * h;
        else if (x + 2.0 * h > upper)
          own << upper - 4.0 * h, upper - 3.0 * h, upper - h, upper;
        else
          own << x - 2.0 * h, x - h, x + h, x + 2.0 * h;
        break;
    }
  }
  return designs;
}

bool Stencil::Fits(const Eigen::MatrixXd& designs, bool with_start) const {
  if (designs.rows() != Size(with_start)) return false;
  const Eigen::Index first = with_start || HasCentre() ? 1 : 0;
  const int per_input = PerInput(type_);
  for (Eigen::Index i = 0; i < step_.size(); ++i) {
    const double h = step_(i);
    const auto gap_fits = [&](Eigen::Index from, Eigen::Index to, double expected) {
      return std::abs(std::abs(designs(to, i) - designs(from, i)) - expected) <= 0.5 * expected;
    };
    const Eigen::Index row = first + per_input * i;
    bool good = true;
    switch (type_) {
      case NumericalDifferences::kForward:
      case NumericalDifferences::kBackward:
        good = gap_fits(0, row, h);
        break;
      case NumericalDifferences::kCentral:
        good = gap_fits(row, row + 1, 2.0 * h);
        break;
      case NumericalDifferences::kFivePoint:
        good = gap_fits(row, row + 1, h) && gap_fits(row + 2, row + 3, h);
        break;
    }
    if (!good) return false;
  }
  return true;
}

}  // namespace corvath::algorithm::optimizer
