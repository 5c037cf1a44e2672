#include "foundation/exception.h"
#include "foundation/log_line.h"
#include "foundation/text_stream.h"
#include "solver/zel_solver.h"

#include <zelsolver/zelsolver.h>

namespace corvath::zel {
namespace {

using algorithm::datatypes::CDesignEntry;

/// Whether a value of the column is outside. One pass without a branch per value: that there is
/// none is the rule.
bool HasOutside(const Eigen::Ref<const Eigen::VectorXd>& column, double lower, double upper) {
  const double lowest = lower - ZEL_BOUNDS_TOLERANCE;
  const double highest = upper + ZEL_BOUNDS_TOLERANCE;
  const double* const x = column.data();
  unsigned int outside = 0;
  for (Eigen::Index d = 0; d < column.size(); ++d)
    outside |= static_cast<unsigned int>(x[d] < lowest) | static_cast<unsigned int>(x[d] > highest);
  return outside != 0;
}

/// Numbers as "%g" prints them, whatever the locale.
std::wstring DescribeViolation(double value, const std::wstring& name, double lower, double upper) {
  utils::WideTextStream text;
  text << L"Value " << value << L" of Parameter " << name << L" violates bounds: [" << lower
       << L", " << upper << L"]";
  return text.str();
}

}  // namespace

std::optional<double> ScalarNumber(const CDesignEntry& entry) {
  switch (entry.GetType()) {
    case algorithm::datatypes::CDesignEntry::eType::REAL:
    case algorithm::datatypes::CDesignEntry::eType::INTEGER:
      return entry.GetScalar();
    case algorithm::datatypes::CDesignEntry::eType::VARIANT:
      if (entry.Peek<CDesignEntry::Variant>()->IsScalar()) return entry.GetScalar();
      return std::nullopt;
    default:
      return std::nullopt;
  }
}

bool ZELSolver::CheckBounds(const ConstPoints& matrix, ExtrapolationType type,
                            bool throw_on_error) {
  if (type == ExtrapolationType::kUnbounded) return false;
  const std::wstring violation = FindViolation(matrix, type);
  if (violation.empty()) return false;
  if (throw_on_error) throw utils::runtime_error(violation);
  utils::log::LogLine(GetLogger(), utils::log::kError) << violation;
  return true;
}

/// What is wrong with the first value out of bounds; empty if there is none.
std::wstring ZELSolver::FindViolation(const ConstPoints& matrix, ExtrapolationType type) {
  const auto& inputs = GetInputNames();
  if (type != ExtrapolationType::kParameterLimits && type != ExtrapolationType::kDataBounds)
    return L"Extrapolation type is not defined.";
  if (matrix.cols() != static_cast<Eigen::Index>(inputs.size()))
    return std::to_wstring(inputs.size()) + L" input columns expected.";

  Limits parameter_limits;
  const Limits* limits = &parameter_limits;
  if (type == ExtrapolationType::kDataBounds) {
    const Bounds& bounds = GetInputBounds();
    limits = &Once(data_limits_, [&] { return FindLimits(type, inputs, bounds); });
  } else {
    parameter_limits = FindLimits(type, inputs, {});
  }

  bool has_violation = false;
  for (const Limit& limit : *limits)
    has_violation |= HasOutside(matrix.col(limit.column), limit.lower, limit.upper);
  if (!has_violation) return {};

  // The first one design by design.
  for (Eigen::Index d = 0; d < matrix.rows(); ++d)
    for (const Limit& limit : *limits)
      if (HasOutside(matrix.col(limit.column).segment(d, 1), limit.lower, limit.upper))
        return DescribeViolation(matrix(d, limit.column),
                                 inputs[static_cast<std::size_t>(limit.column)], limit.lower,
                                 limit.upper);
  return {};
}

ZELSolver::Limits ZELSolver::FindLimits(ExtrapolationType type,
                                        const std::vector<std::wstring>& inputs,
                                        const Bounds& data_bounds) const {
  Limits limits;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    CDesignEntry lower_entry;
    CDesignEntry upper_entry;
    if (type == ExtrapolationType::kDataBounds) {
      const auto found = data_bounds.find(inputs[i]);
      if (found == data_bounds.end()) continue;
      std::tie(lower_entry, upper_entry) = found->second;
    } else {
      const auto* const parameter = vrdb_.GetParameterManager().FindParameter(inputs[i]);
      if (parameter == nullptr || !parameter->IsOptimization()) continue;
      parameter->GetBounds(lower_entry, upper_entry);
    }
    const auto lower = ScalarNumber(lower_entry);
    const auto upper = ScalarNumber(upper_entry);
    if (lower && upper) limits.push_back({static_cast<Eigen::Index>(i), *lower, *upper});
  }
  return limits;
}

}  // namespace corvath::zel
