#pragma once

#include <Eigen/Core>

namespace corvath::algorithm::optimizer {

/// A vector of someone else's, without the room for a copy that Eigen::Ref<const> brings along.
class VectorView : public Eigen::Map<const Eigen::VectorXd> {
 public:
  template <class Vector>
  VectorView(const Eigen::MatrixBase<Vector>& vector)
      : Map(vector.derived().data(), vector.size()) {
    static_assert(Vector::InnerStrideAtCompileTime == 1, "entries side by side");
  }
};

}  // namespace corvath::algorithm::optimizer
