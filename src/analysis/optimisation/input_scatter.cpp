#include "analysis/optimisation/input_scatter.h"

#include <cmath>

namespace corvath::analysis {
namespace {

const double kNode = std::sqrt(3.0);

}  // namespace

InputScatter::InputScatter(const StudyModel& model, const InputSpace::Choice& choice) {
  const InputSpace space(model, choice);
  const Eigen::Index d = space.GetDim();
  Eigen::MatrixXd nodes = Eigen::MatrixXd::Zero(2 * d, d);
  for (Eigen::Index i = 0; i < d; ++i) {
    nodes(2 * i, i) = kNode;
    nodes(2 * i + 1, i) = -kNode;
  }
  deviations_ = Eigen::MatrixXd::Zero(2 * d, model.GetNumInputs());
  const Eigen::MatrixXd designs = space.FromGauss(nodes);
  const Eigen::RowVectorXd centre = space.FromGauss(Eigen::MatrixXd::Zero(1, d));
  for (const Eigen::Index column : space.GetColumns())
    deviations_.col(column) = designs.col(column).array() - centre(column);
}

InputScatter::Moments InputScatter::Propagate(
    const Eigen::MatrixXd& x,
    const std::function<Eigen::MatrixXd(const Eigen::MatrixXd&)>& values) const {
  const Eigen::Index n = x.rows(), num = deviations_.rows() + 1;
  Eigen::MatrixXd points(n * num, x.cols());
  for (Eigen::Index k = 0; k < n; ++k) {
    points.row(k * num) = x.row(k);
    points.middleRows(k * num + 1, num - 1) = deviations_.rowwise() + x.row(k);
  }
  const Eigen::MatrixXd all = values(points);
  Moments moments{Eigen::MatrixXd(n, all.cols()), Eigen::MatrixXd::Zero(n, all.cols())};
  for (Eigen::Index k = 0; k < n; ++k) {
    const Eigen::RowVectorXd centre = all.row(k * num);
    moments.mean.row(k) = centre;
    for (Eigen::Index i = 1; i < num; i += 2) {
      const Eigen::RowVectorXd above = all.row(k * num + i), below = all.row(k * num + i + 1);
      const Eigen::RowVectorXd slope = (above - below) / (2.0 * kNode);
      const Eigen::RowVectorXd curve = (above + below - 2.0 * centre) / (2.0 * kNode * kNode);
      moments.mean.row(k) += curve;
      moments.deviation.row(k) += slope.cwiseAbs2() + 2.0 * curve.cwiseAbs2();
    }
  }
  moments.deviation = moments.deviation.cwiseSqrt();
  return moments;
}

}  // namespace corvath::analysis
