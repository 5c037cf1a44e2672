#pragma once

#include <Eigen/Core>

#include <vector>

namespace corvath::zel {

/// A matrix of inputs as a model takes it: in place, or a copy in the model's order of columns.
class ModelPoints {
 public:
  /// @param columns  of each column of the model the column of `inputs`; empty for the same order
  /// `inputs` must outlive this object.
  ModelPoints(const Eigen::Ref<const Eigen::MatrixXd>& inputs,
              const std::vector<Eigen::Index>& columns)
      : inputs_(inputs) {
    if (columns.empty()) return;
    reordered_.resize(inputs.rows(), inputs.cols());
    for (std::size_t c = 0; c < columns.size(); ++c)
      reordered_.col(static_cast<Eigen::Index>(c)) = inputs.col(columns[c]);
  }

  const Eigen::Ref<const Eigen::MatrixXd> Get() const {
    if (reordered_.size() == 0) return inputs_;
    return reordered_;
  }

 private:
  const Eigen::Ref<const Eigen::MatrixXd>& inputs_;
  Eigen::MatrixXd reordered_;
};

}  // namespace corvath::zel
