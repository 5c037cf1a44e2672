#pragma once

#include "metamodel/regression/linear_regression_settings.h"
#include "metamodel/regression/ridge_solver.h"
#include "metamodel/surrogate.h"

namespace corvath::math::metamodel {

/// Polynomial least-squares model with terms chosen one by one, solved by the normal equations.
class LinearRegression : public SurrogateBase {
 public:
  LinearRegression() = default;  ///< for loading: no support points
  /// @param points   N x m
  /// @param values   N
  /// @param weights  N, or empty for equal weights
  /// @throws corvath::utils::runtime_error  sizes that do not fit, or no input
  LinearRegression(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                   const Eigen::VectorXd& weights = Eigen::VectorXd());
  LinearRegression(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                   const LinearRegressionSettings& settings,
                   const Eigen::VectorXd& weights = Eigen::VectorXd());

  using SurrogateBase::BuildOptimal;

  /// @returns false when there are more coefficients than support points
  bool Build() override;
  bool IsSolvable() const override;
  bool IsBuilt() const override;
  Eigen::VectorXd ApproximateSupportPoints() const override;
  /// Works on blocks of rows: O(n P) time, one buffer of a block.
  /// @throws corvath::utils::runtime_error  not built, another number of inputs, or a stored model
  ///                                        whose parts contradict each other
  Eigen::VectorXd Approximate(const ConstPoints& points) const override;
  /// One factorisation, by the diagonal of the hat matrix.
  Eigen::VectorXd ApproximateLeaveOneOut() const override;
  Eigen::VectorXd ApproximateCrossValidation(const IndexVector& subsets) const override;
  /// BuildBoxCox when there is a value transform, else Build; the groups do not matter.
  bool BuildOptimal(const IndexVector& subsets) override;

  /// Builds with penalised coefficients (RidgeSolver) in place of those of least squares; there may
  /// be more of them than support points. The penalty is no part of the settings: a later Build of
  /// a changed model is one of least squares.
  /// @returns false without support points, or when the terms are not those of StandardTerms
  bool BuildRidge(const RidgePenalty& penalty);
  /// The same, with the penalty of the smallest error when each of `singles` is left out: where
  /// points are few, larger groups make the choice a matter of chance.
  /// @param singles         labels of single points; of points that coincide, the same
  /// @param groups          of cross-validation
  /// @param[out] predicted  each value without its group, in the user's units
  RidgePenalty BuildOptimalRidge(const IndexVector& singles, const IndexVector& groups,
                                 Eigen::VectorXd& predicted);
  /// Each value predicted without its group with this penalty, in the user's units. Built.
  Eigen::VectorXd CrossValidateRidge(const RidgePenalty& penalty, const IndexVector& groups) const;

  /// Chooses the Box-Cox transform of the response by search over a grid, and builds.
  /// @returns false when the model could not be built
  virtual bool BuildBoxCox();

  std::wstring GetName(bool short_form) const override;
  std::wstring GetDescription() const override;
  BitVector GetVariableSelection() const override { return settings_.GetVariableSelection(); }
  std::uint64_t GetNumberCoefficients() const override { return settings_.GetNumberCoefficients(); }
  std::wstring GetModelFunction(const std::vector<std::wstring>& names) const override;
  const LinearRegressionSettings& GetSettingsBase() const override { return settings_; }
  bool Equals(const SurrogateBase& other) const override;
  LinearRegression* Clone() const override { return new LinearRegression(*this); }
  void SetSettings(const SurrogateSettingsBase& settings) override;

  const Eigen::VectorXd& GetCoefficients() const { return coefficients_; }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  ZEL_SPLIT_SERIALIZE()

  /// The parts of a loaded model must fit each other before anything is computed with them.
  void RequireConsistent() const;
  void RequireSupportMatrix() const;
  StandardTerms TermsOf(const ConstPoints& transformed, double curvature) const;
  /// Values through the value transform as it was built.
  Eigen::VectorXd ForwardValues() const;

  Eigen::VectorXd coefficients_;        ///< P; entry 0 is the constant term
  Eigen::MatrixXd coefficient_matrix_;  ///< N x P, at the transformed support points
  LinearRegressionSettings settings_;
};

}  // namespace corvath::math::metamodel

ZEL_CLASS_VERSION(corvath::math::metamodel::LinearRegression, 1)
ZEL_EXPORT_KEY(corvath::math::metamodel::LinearRegression,
               "corvath::math::metamodel::LinearRegression")
