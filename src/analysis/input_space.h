#pragma once

#include "analysis/study_model.h"
#include "stochastics/rv_set.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <map>
#include <string>
#include <vector>

namespace corvath::analysis {

/// How the inputs of a study vary: d of the m inputs as random variables, perhaps correlated, the
/// others at a fixed value each. Points of the d coordinates become designs of all inputs.
class InputSpace {
 public:
  enum class Scope {
    kDistributions,  ///< as the inputs scatter; those without distribution are fixed
    kBounds          ///< uniform between the bounds, equally likely states
  };

  struct Choice {
    Scope scope = Scope::kDistributions;
    /// In the place of what the scope says. Correlations of the study stay, except those of an
    /// input that is given a discrete distribution.
    std::map<std::wstring, boost::shared_ptr<algorithm::RV>> distributions;
    std::map<std::wstring, double> fixed;  ///< values of inputs that shall not vary
  };

  /// @throws AnalysisError  unknown names, an input without finite bounds or without a value to fix
  ///                        it at, correlations that cannot be had, or no input that varies
  InputSpace(const StudyModel& model, const Choice& choice);

  Eigen::Index GetDim() const { return static_cast<Eigen::Index>(columns_.size()); }
  /// Of each coordinate the position of its input.
  const std::vector<Eigen::Index>& GetColumns() const { return columns_; }
  /// Coordinates that depend on each other stand in one group, in ascending order; all others by
  /// themselves. Groups in the order of their first coordinates.
  std::vector<std::vector<Eigen::Index>> GetGroups() const;
  /// The values of all inputs; those of inputs that vary are not used.
  const Eigen::VectorXd& GetFixed() const { return fixed_; }
  /// The random variable of each coordinate.
  const std::vector<boost::shared_ptr<algorithm::RV>>& GetVariables() const {
    return variables_->GetRVs();
  }
  bool HasDiscrete() const;
  /// Inputs whose correlations are left out, since their given distribution is discrete.
  const std::vector<std::wstring>& GetUncorrelated() const { return uncorrelated_; }

  /// Designs for rows of independent standard normal coordinates (n x d): n x m.
  Eigen::MatrixXd FromGauss(const ConstPoints& u) const;
  /// Designs for rows of coordinates in (0, 1): quantiles of independent uniform ones.
  Eigen::MatrixXd FromUniform(const ConstPoints& p) const;

 private:
  boost::shared_ptr<algorithm::RV> VariableOf(const StudyInput& input, const Choice& choice) const;
  void Correlate(const StudyModel& model, const Choice& choice);

  std::vector<Eigen::Index> columns_;
  Eigen::VectorXd fixed_;
  boost::shared_ptr<algorithm::RVSet> variables_;
  Eigen::MatrixXd correlations_;  ///< d x d, of the variables
  std::vector<std::wstring> uncorrelated_;
};

}  // namespace corvath::analysis
