#include "analysis/function_model.h"

#include "metamodel/local_errors.h"
#include "solver/row_ranges.h"

#include <stdexcept>
#include <utility>

namespace corvath::analysis {
namespace {

using Eigen::Index;

/// Calls `body(first, count)` for ranges of rows, side by side.
template <class Body>
void ForRanges(Index rows, const Body& body) {
  if (rows == 0) return;
  const zel::RowRanges ranges(static_cast<std::size_t>(rows));
  ranges.Run(ranges.GetCount(), [&](std::size_t range) {
    body(static_cast<Index>(ranges.GetBegin(range)), static_cast<Index>(ranges.GetSize(range)));
  });
}

}  // namespace

FunctionModel::FunctionModel(std::vector<StudyInput> inputs, std::vector<StudyQuantity> quantities,
                             Function function, Eigen::MatrixXd correlations)
    : function_(std::move(function)) {
  Describe(std::move(inputs), std::move(quantities), std::move(correlations));
  standard_errors_ = Eigen::VectorXd::Zero(GetNumResponses());
  designs_.inputs.resize(0, GetNumInputs());
  designs_.values.resize(0, GetNumQuantities());
}

void FunctionModel::SetErrors(
    Eigen::VectorXd standard_errors,
    std::function<Eigen::MatrixXd(const ConstPoints&, const ConstPoints&)> criteria) {
  if (standard_errors.size() != GetNumResponses())
    throw std::logic_error("FunctionModel: errors of another number of responses.");
  standard_errors_ = std::move(standard_errors);
  criteria_ = std::move(criteria);
}

Eigen::MatrixXd FunctionModel::Responses(const ConstPoints& x) const {
  Eigen::MatrixXd values(x.rows(), GetNumResponses());
  if (GetNumResponses() == 0) return values;
  ForRanges(x.rows(), [&](Index first, Index count) {
    values.middleRows(first, count) =
        function_(x.middleRows(first, count)).leftCols(GetNumResponses());
  });
  return values;
}

Eigen::MatrixXd FunctionModel::Criteria(const ConstPoints& x, const ConstPoints& responses) const {
  const Index num_criteria = GetNumQuantities() - GetNumResponses();
  Eigen::MatrixXd values(x.rows(), num_criteria);
  ForRanges(x.rows(), [&](Index first, Index count) {
    const auto rows = x.middleRows(first, count);
    values.middleRows(first, count) = criteria_
                                          ? criteria_(rows, responses.middleRows(first, count))
                                          : function_(rows).rightCols(num_criteria);
  });
  return values;
}

Eigen::MatrixXd FunctionModel::LocalErrors(Index, const ConstPoints& x) const {
  return Eigen::MatrixXd::Constant(x.rows(), math::metamodel::kNumErrorColumns,
                                   std::numeric_limits<double>::quiet_NaN());
}

}  // namespace corvath::analysis
