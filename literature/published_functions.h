#pragma once

#include <Eigen/Core>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace literature {

/// A test function of the literature over a box, with the noise that its authors add.
struct PublishedFunction {
  std::string name;
  std::string source;
  Eigen::VectorXd lower;
  Eigen::VectorXd upper;
  std::function<double(const Eigen::VectorXd&)> value;
  double noise = 0.0;  ///< standard deviation, normal
};

/// The functions on which training is judged: smooth, periodic and kinked ones, four with noise,
/// five with inputs that do nothing. The first kNumTested are enough for a test.
const std::vector<PublishedFunction>& PublishedFunctions();
constexpr std::size_t kNumTested = 10;

struct Sample {
  Eigen::MatrixXd points;  ///< n x d
  Eigen::VectorXd values;  ///< n, with noise
};

/// A Latin hypercube of small correlations, as one would plan a study.
Sample LatinHypercubeSample(const PublishedFunction& function, Eigen::Index n, std::uint32_t seed);
/// Independent uniform points, as future predictions may be asked for.
Sample UniformSample(const PublishedFunction& function, Eigen::Index n, std::uint32_t seed);

}  // namespace literature
