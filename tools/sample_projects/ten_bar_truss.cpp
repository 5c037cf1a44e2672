#include "ten_bar_truss.h"

#include <Eigen/Cholesky>
#include <Eigen/Core>

#include <stdexcept>
#include <string>

namespace sample_projects {
namespace {

constexpr double kBay = 360.0;    // in
constexpr double kDensity = 0.1;  // lb / in^3
constexpr int kNumFreeNodes = 4;  // the last two nodes are supports
constexpr int kNumFree = 2 * kNumFreeNodes;

struct Node {
  double x, y;
};
constexpr Node kNodes[] = {{2 * kBay, kBay}, {2 * kBay, 0}, {kBay, kBay},
                           {kBay, 0},        {0, kBay},     {0, 0}};
constexpr int kLoadedNodes[] = {1, 3};
constexpr int kBars[kNumBars][2] = {{4, 2}, {2, 0}, {5, 3}, {3, 1}, {2, 3},
                                    {0, 1}, {4, 3}, {5, 2}, {2, 1}, {3, 0}};

struct Bar {
  double length;
  Eigen::Matrix<double, kNumFree, 1> elongation;  ///< per displacement of each degree of freedom
};

Bar MakeBar(int index) {
  const auto [first, second] = kBars[index];
  const Eigen::Vector2d axis(kNodes[second].x - kNodes[first].x,
                             kNodes[second].y - kNodes[first].y);
  Bar bar{axis.norm(), Eigen::Matrix<double, kNumFree, 1>::Zero()};
  const Eigen::Vector2d direction = axis / bar.length;
  if (first < kNumFreeNodes) bar.elongation.segment<2>(2 * first) -= direction;
  if (second < kNumFreeNodes) bar.elongation.segment<2>(2 * second) += direction;
  return bar;
}

}  // namespace

TrussResponse AnalyseTenBarTruss(const Truss& truss) {
  if (!(truss.modulus > 0.0))
    throw std::domain_error("AnalyseTenBarTruss: the modulus is not positive.");
  TrussResponse response{};
  Eigen::Matrix<double, kNumFree, kNumFree> stiffness;
  stiffness.setZero();
  for (int i = 0; i < kNumBars; ++i) {
    const double area = truss.areas[static_cast<std::size_t>(i)];
    if (!(area > 0.0))
      throw std::domain_error("AnalyseTenBarTruss: the area of bar " + std::to_string(i + 1) +
                              " is not positive.");
    const Bar bar = MakeBar(i);
    response.mass += kDensity * area * bar.length;
    stiffness += truss.modulus * area / bar.length * bar.elongation * bar.elongation.transpose();
  }
  Eigen::Matrix<double, kNumFree, 1> loads = Eigen::Matrix<double, kNumFree, 1>::Zero();
  for (std::size_t i = 0; i < truss.loads.size(); ++i)
    loads(2 * kLoadedNodes[i] + 1) = -truss.loads[i];
  const Eigen::Matrix<double, kNumFree, 1> displacements = stiffness.ldlt().solve(loads);
  response.displacement = displacements.cwiseAbs().maxCoeff();
  for (int i = 0; i < kNumBars; ++i) {
    const Bar bar = MakeBar(i);
    response.stresses[static_cast<std::size_t>(i)] =
        truss.modulus * bar.elongation.dot(displacements) / bar.length;
  }
  return response;
}

}  // namespace sample_projects
