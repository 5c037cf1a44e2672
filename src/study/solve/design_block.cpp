#include "study/solve/design_block.h"

#include "foundation/exception.h"
#include "foundation/text.h"
#include "study/project/input_reach.h"

#include <zelsolver/zelsolver.h>

#include <charconv>
#include <cmath>

namespace corvath::study {
namespace {

std::string Number(double value) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

bool IsOutside(double value, const Bounds& bounds) {
  return value < bounds.lower - ZEL_BOUNDS_TOLERANCE || value > bounds.upper + ZEL_BOUNDS_TOLERANCE;
}

const char* NameOf(Extra::Kind kind) {
  if (kind == Extra::Kind::kGradients) return "gradients";
  return kind == Extra::Kind::kDensity ? "density" : "errors";
}

std::size_t WidthOf(Extra::Kind kind, const Project& project) {
  if (kind == Extra::Kind::kGradients) return project.GetInputs().size();
  return kind == Extra::Kind::kDensity ? 1 : Extra::kNumErrors;
}

/// Errors without the density behind them, or the density alone.
std::vector<double> Pick(const std::vector<double>& groups, Extra::Kind kind) {
  constexpr std::size_t kGroup = Extra::kNumErrors + 1;
  std::vector<double> picked;
  for (std::size_t i = 0; i + kGroup <= groups.size(); i += kGroup) {
    const auto group = groups.begin() + static_cast<std::ptrdiff_t>(i);
    if (kind == Extra::Kind::kDensity)
      picked.push_back(group[Extra::kNumErrors]);
    else
      picked.insert(picked.end(), group, group + Extra::kNumErrors);
  }
  return picked;
}

}  // namespace

InputRanges::InputRanges(const Project& project, bool extrapolate)
    : bounds_(project.GetBounds()),
      reach_(extrapolate ? std::vector<Bounds>(bounds_.size(), {-HUGE_VAL, HUGE_VAL})
                         : ReachOfInputs(project, bounds_)) {}

void InputRanges::Count(
    const Project::Points& designs, std::vector<std::uint64_t>& outside,
    const std::function<void(std::size_t, std::size_t, const std::string&)>& refuse) const {
  bool is_refused = false;
  for (std::size_t i = 0; i < bounds_.size(); ++i) {
    const double* const values = designs.col(static_cast<Eigen::Index>(i)).data();
    for (Eigen::Index d = 0; d < designs.rows(); ++d) {
      outside[i] += IsOutside(values[d], bounds_[i]) ? 1 : 0;
      is_refused |= IsOutside(values[d], reach_[i]);
    }
  }
  if (!is_refused) return;
  for (Eigen::Index d = 0; d < designs.rows(); ++d)
    for (std::size_t i = 0; i < bounds_.size(); ++i) {
      const double value = designs(d, static_cast<Eigen::Index>(i));
      if (IsOutside(value, reach_[i]))
        refuse(static_cast<std::size_t>(d), i,
               Number(value) + " is outside [" + Number(bounds_[i].lower) + ", " +
                   Number(bounds_[i].upper) + ']');
    }
}

Extra::Extra(const Project& project, std::string output, Kind kind)
    : project_(project), output_(std::move(output)), kind_(kind), width_(WidthOf(kind, project)) {}

std::vector<double> Extra::Solve(const Project::Points& designs, std::vector<std::string>& notes) {
  const std::size_t size = static_cast<std::size_t>(designs.rows()) * width_;
  std::vector<double> values;
  if (!is_refused_) {
    try {
      values = kind_ == Kind::kGradients ? project_.Gradients(output_, designs)
                                         : Pick(project_.Errors(output_, designs), kind_);
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception& error) {
      if (!is_refused_.exchange(true))
        notes.push_back(std::string("no ") + NameOf(kind_) + " of " + output_ + ": " +
                        project_.GetName() + ": " + utils::ToUtf8(utils::MessageOf(error)));
    }
  }
  if (values.size() != size) values.assign(size, std::nan(""));
  return values;
}

}  // namespace corvath::study
