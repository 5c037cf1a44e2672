#include "analysis/study_model.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace corvath::analysis {
namespace {

using Eigen::Index;

/// Relative step of the differences: that of the models' own gradients.
constexpr double kStep = 1e-4;

double StepOf(const StudyInput& input, double x) {
  double range = input.upper - input.lower;
  if (input.variable && !(range > 0.0 && std::isfinite(range)))
    range = input.variable->InverseCDF(0.975) - input.variable->InverseCDF(0.025);
  if (!(range > 0.0 && std::isfinite(range))) range = std::max(std::abs(x), 1.0);
  return kStep * range;
}

template <class Items>
std::optional<Index> Find(const Items& items, const std::wstring& name) {
  const auto found =
      std::find_if(items.begin(), items.end(), [&](const auto& item) { return item.name == name; });
  if (found == items.end()) return std::nullopt;
  return found - items.begin();
}

}  // namespace

StudyModel::~StudyModel() = default;

void StudyModel::Describe(std::vector<StudyInput> inputs, std::vector<StudyQuantity> quantities,
                          Eigen::MatrixXd correlations) {
  const auto is_response = [](const StudyQuantity& quantity) {
    return quantity.kind == StudyQuantity::Kind::kResponse;
  };
  if (!std::is_partitioned(quantities.begin(), quantities.end(), is_response))
    throw std::logic_error("StudyModel: a response behind a criterion.");
  const auto m = static_cast<Index>(inputs.size());
  if (correlations.size() == 0) correlations = Eigen::MatrixXd::Identity(m, m);
  if (correlations.rows() != m || correlations.cols() != m)
    throw std::logic_error("StudyModel: correlations of another number of inputs.");
  inputs_ = std::move(inputs);
  quantities_ = std::move(quantities);
  num_responses_ = std::count_if(quantities_.begin(), quantities_.end(), is_response);
  correlations_ = std::move(correlations);
}

std::optional<Index> StudyModel::FindQuantity(const std::wstring& name) const {
  return Find(quantities_, name);
}

std::optional<Index> StudyModel::FindInput(const std::wstring& name) const {
  return Find(inputs_, name);
}

Eigen::MatrixXd StudyModel::Evaluate(const ConstPoints& x) const {
  Eigen::MatrixXd values(x.rows(), GetNumQuantities());
  values.leftCols(num_responses_) = Responses(x);
  if (num_responses_ < GetNumQuantities())
    values.rightCols(GetNumQuantities() - num_responses_) =
        Criteria(x, values.leftCols(num_responses_));
  return values;
}

Eigen::MatrixXd StudyModel::Gradients(const Eigen::VectorXd& x) const {
  const Index m = GetNumInputs();
  // Of each input three points at x + k h: k = -1, 0, 1, or 0, 1, 2 to the inside of an end.
  Eigen::MatrixXd points = x.transpose().replicate(2 * m + 1, 1);
  Eigen::VectorXd steps(m);
  std::vector<bool> one_sided(static_cast<std::size_t>(m));
  for (Index i = 0; i < m; ++i) {
    const StudyInput& input = inputs_[static_cast<std::size_t>(i)];
    const double h = StepOf(input, x(i));
    const bool at_lower = x(i) >= input.GetHardLower() && x(i) - h < input.GetHardLower();
    const bool at_upper = x(i) <= input.GetHardUpper() && x(i) + h > input.GetHardUpper();
    one_sided[static_cast<std::size_t>(i)] = at_lower != at_upper;
    steps(i) = at_upper && !at_lower ? -h : h;
    points(2 * i, i) = at_lower != at_upper ? x(i) + 2.0 * steps(i) : x(i) - h;
    points(2 * i + 1, i) = x(i) + steps(i);
  }
  const Eigen::MatrixXd values = Evaluate(points);
  Eigen::MatrixXd gradients(GetNumQuantities(), m);
  for (Index i = 0; i < m; ++i) {
    const auto first = values.row(2 * i).array();
    const auto second = values.row(2 * i + 1).array();
    if (one_sided[static_cast<std::size_t>(i)])
      gradients.col(i) =
          (4.0 * second - first - 3.0 * values.row(2 * m).array()) / (2.0 * steps(i));
    else
      gradients.col(i) = (second - first) / (2.0 * steps(i));
  }
  return gradients;
}

}  // namespace corvath::analysis
