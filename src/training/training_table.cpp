#include "training/training_table.h"

#include "foundation/closeness.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace corvath::training {
namespace {

/// Two inputs whose squared correlation differs from 1 by less than this tell the same thing.
constexpr double kSameInput = 1e-10;

void RequireNames(const std::vector<std::wstring>& names, const wchar_t* what,
                  std::set<std::wstring>& known) {
  if (names.empty()) throw TrainingError(std::wstring(L"The table has no ") + what + L"s.");
  for (const std::wstring& name : names) {
    if (name.empty()) throw TrainingError(L"A column has no name.");
    if (!known.insert(name).second)
      throw TrainingError(L"The name \"" + name + L"\" occurs twice.", name);
  }
}

void RequireFinite(const TrainingTable& table) {
  for (Eigen::Index row = 0; row < table.points.rows(); ++row)
    for (Eigen::Index column = 0; column < table.points.cols(); ++column) {
      if (std::isfinite(table.points(row, column))) continue;
      const std::wstring& name = table.inputs[static_cast<std::size_t>(column)];
      throw TrainingError(
          L"Input \"" + name + L"\" of design " + std::to_wstring(row + 1) + L" is not a number.",
          name, row);
    }
}

/// The column about its mean, of length 1; zero for a constant one.
Eigen::VectorXd Direction(const Eigen::Ref<const Eigen::VectorXd>& column) {
  if (IsConstantColumn(column)) return Eigen::VectorXd::Zero(column.size());
  const double scale = column.cwiseAbs().maxCoeff();
  const Eigen::VectorXd scaled = column / scale;
  return (scaled.array() - scaled.mean()).matrix().normalized();
}

/// Models scale each input to a range of 1, and bounds that are the same to the project are none.
void RequireRanges(const TrainingTable& table) {
  for (Eigen::Index j = 0; j < table.points.cols(); ++j) {
    const auto column = table.points.col(j);
    if (IsConstantColumn(column)) continue;
    const double range = column.maxCoeff() - column.minCoeff();
    if (std::isnormal(range) && std::isnormal(1.0 / range) &&
        !math::IsClose(column.minCoeff(), column.maxCoeff()))
      continue;
    const std::wstring& name = table.inputs[static_cast<std::size_t>(j)];
    throw TrainingError(
        L"Input \"" + name +
            L"\" has values that are too large, or too close to 0 to be told apart; "
            L"change its unit.",
        name);
  }
}

/// No two inputs may be multiples of each other: the data could not tell which of them counts.
void RequireDifferentInputs(const TrainingTable& table) {
  const Eigen::Index m = table.points.cols();
  Eigen::MatrixXd directions(table.points.rows(), m);
  for (Eigen::Index j = 0; j < m; ++j) directions.col(j) = Direction(table.points.col(j));
  for (Eigen::Index j = 1; j < m; ++j)
    for (Eigen::Index i = 0; i < j; ++i) {
      const double correlation = directions.col(i).dot(directions.col(j));
      if (correlation * correlation < 1.0 - kSameInput) continue;
      const std::wstring& name = table.inputs[static_cast<std::size_t>(j)];
      throw TrainingError(L"Input \"" + name + L"\" repeats input \"" +
                              table.inputs[static_cast<std::size_t>(i)] +
                              L"\": leave one of them out.",
                          name);
    }
}

}  // namespace

bool IsConstantColumn(const Eigen::Ref<const Eigen::VectorXd>& column) {
  double lower = HUGE_VAL;
  double upper = -HUGE_VAL;
  for (const double value : column) {
    if (!std::isfinite(value)) continue;
    lower = std::min(lower, value);
    upper = std::max(upper, value);
  }
  constexpr double kRounding = 1e-12;           // as the scaling of inputs takes a range for none
  if (upper - lower == HUGE_VAL) return false;  // so is the other side
  return !(upper - lower > kRounding * (std::abs(lower) + std::abs(upper)));
}

void RequireTrainable(const TrainingTable& table) {
  std::set<std::wstring> known;
  RequireNames(table.inputs, L"input", known);
  RequireNames(table.responses, L"response", known);
  const auto m = static_cast<Eigen::Index>(table.inputs.size());
  const auto r = static_cast<Eigen::Index>(table.responses.size());
  if (table.points.cols() != m || table.values.cols() != r ||
      table.points.rows() != table.values.rows())
    throw TrainingError(L"The table's sizes do not fit its names.");
  if (table.points.rows() == 0) throw TrainingError(L"The table has no designs.");
  for (const std::wstring& name : table.discrete)
    if (std::find(table.inputs.begin(), table.inputs.end(), name) == table.inputs.end())
      throw TrainingError(L"The discrete input \"" + name + L"\" is none of the inputs.", name);
  RequireFinite(table);
  bool all_constant = true;
  for (Eigen::Index j = 0; j < m; ++j)
    all_constant = all_constant && IsConstantColumn(table.points.col(j));
  if (all_constant) throw TrainingError(L"All inputs are constant.");
  RequireRanges(table);
  RequireDifferentInputs(table);
}

}  // namespace corvath::training
