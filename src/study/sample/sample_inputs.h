#pragma once

#include "doe/scheme.h"
#include "study/project/project.h"
#include "study/table/table_columns.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <memory>
#include <string>
#include <vector>

namespace corvath::algorithm {
class RVSet;
}

namespace corvath::study {

/// The inputs that a sample is made for, and the way from the unit coordinates of a sampling scheme
/// to the inputs' units.
class SampleInputs {
 public:
  /// Reads `name:low:high` for each continuous and `name:{a;b;c}` for each discrete input, whose
  /// states are numbers or words.
  /// @throws Refusal  something else, a name twice, or no inputs
  static SampleInputs FromTexts(const std::vector<std::string>& texts);

  /// The inputs of a project. @throws Refusal  there are none, or one has no bounds
  static SampleInputs FromProject(const Project& project);

  const std::vector<std::string>& GetNames() const { return names_; }

  /// The words of inputs that have such. Their values are codes.
  const TableColumns& GetColumns() const { return columns_told_; }

  /// What the scheme is to build on: states as if they lay in [-1, 1], so that the first and last
  /// are the ends of a discrete input, and the middle one its middle.
  corvath::math::StateLists GetStateLists() const;

  /// One row per point in the units of the inputs. A random input takes its values through its
  /// distribution, together with its correlations.
  /// @param points   one row per point, in [-1, 1] or on a state
  /// @param is_grid  the coordinates of random inputs are levels, from -3 to 3 standard deviations
  ///                 of a normal variable; otherwise probabilities from 0 to 1
  Eigen::MatrixXd ToUnits(const Eigen::MatrixXd& points, bool is_grid) const;

 private:
  struct Domain {
    double low = 0.0;
    double high = 0.0;
    std::vector<double> states;     ///< ascending; none: continuous
    std::vector<double> positions;  ///< of the states in [-1, 1]
  };

  static Domain Discrete(std::vector<double> states);
  static double ToUnits(const Domain& domain, double x);
  Eigen::MatrixXd ToRandom(const Eigen::MatrixXd& points, bool is_grid) const;

  std::vector<std::string> names_;
  TableColumns columns_told_;
  std::vector<Domain> domains_;  ///< of each input, unless they are random
  boost::shared_ptr<corvath::algorithm::RVSet> variables_;  ///< or null
  std::vector<Eigen::Index> columns_;                       ///< of each variable among the inputs
};

}  // namespace corvath::study
