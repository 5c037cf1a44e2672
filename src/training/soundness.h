#pragma once

#include "metamodel/surrogate.h"
#include "metamodel/types.h"

#include <Eigen/Core>

namespace corvath::training {

/// Where models must behave: between the designs, where nothing is known, a pole of a transform or a
/// hole of a local model would be met by a user first.
class ProbePoints {
 public:
  /// @param points  n x m: the designs
  explicit ProbePoints(const Eigen::MatrixXd& points);

  /// 2000 points at random in the bounds of the designs and, for up to six inputs, the corners of the
  /// subspace. The same at every call and on every machine.
  Eigen::MatrixXd Of(const math::metamodel::BitVector& subspace) const;

 private:
  Eigen::RowVectorXd lower_;
  Eigen::RowVectorXd upper_;
  Eigen::MatrixXd inside_;
};

/// Whether a built model has predictions at all probes, none of which leaves the range of its values
/// by more than twice that range.
bool IsSound(const math::metamodel::SurrogateBase& model, const Eigen::MatrixXd& probes);

/// Widens the radius of a moving least squares model until every probe has a prediction, up to
/// ninefold: the radius that predicts the designs best may leave holes between them.
void CloseHoles(math::metamodel::SurrogateBase& model, const Eigen::MatrixXd& probes);

}  // namespace corvath::training
