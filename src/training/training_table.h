#pragma once

#include "foundation/exception.h"

#include <Eigen/Core>

#include <optional>
#include <string>
#include <vector>

namespace corvath::training {

/// Measured or simulated designs: one row per design.
struct TrainingTable {
  std::vector<std::wstring> inputs;     ///< m names
  Eigen::MatrixXd points;               ///< n x m: the designs, every cell finite
  std::vector<std::wstring> responses;  ///< r names; "s[0]", "s[1]", ... make one vector response s
  Eigen::MatrixXd values;               ///< n x r; not finite: the design failed for this response
  std::vector<std::wstring> discrete;   ///< inputs that take the table's values and no others
};

/// The data or the settings cannot be trained on. It tells where in the table, for a caller that
/// knows which file and line that is.
class TrainingError : public utils::runtime_error {
 public:
  explicit TrainingError(const std::wstring& message, std::wstring column = {},
                         std::optional<Eigen::Index> row = std::nullopt)
      : utils::runtime_error(message), column_(std::move(column)), row_(row) {}

  /// The input or response concerned; empty if none by itself.
  const std::wstring& GetColumn() const { return column_; }
  /// The row of the table, from 0.
  const std::optional<Eigen::Index>& GetRow() const { return row_; }

 private:
  std::wstring column_;
  std::optional<Eigen::Index> row_;
};

/// Checks sizes, names and cells.
/// @throws TrainingError  sizes that do not fit; no inputs or responses; an empty or doubled name;
///                        an unknown discrete one; an input cell that is not finite; inputs that are
///                        all constant; inputs that repeat each other
void RequireTrainable(const TrainingTable& table);

/// Whether all finite values of a column agree up to rounding.
bool IsConstantColumn(const Eigen::Ref<const Eigen::VectorXd>& column);

}  // namespace corvath::training
