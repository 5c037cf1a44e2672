#pragma once

#include "metamodel/kriging/ordinary_kriging_settings.h"
#include "metamodel/surrogate.h"

namespace corvath::math::metamodel {

class DefiniteFactor;

/// Interpolation by a correlation kernel c with a constant mean and a nugget on the diagonal:
///
///     f(x) = mu + sum_i c(x, x_i) w_i,   w = C^-1 (y - mu 1),   mu = (1' C^-1 y) / (1' C^-1 1)
///
/// J. Sacks, W. J. Welch, T. J. Mitchell, H. P. Wynn, "Design and analysis of computer
/// experiments", Statistical Science 4, 1989, pp. 409-423. y are the transformed values. The nugget
/// acts on C alone: with one, f passes near its support points, not through them.
///
/// The correlation matrix C (N x N) is not kept. What needs it forms it again, O(N^2), before a
/// factorisation that costs O(N^3).
class OrdinaryKriging : public SurrogateBase {
 public:
  OrdinaryKriging() = default;  ///< for loading: no support points
  /// With default settings. They hold no kernel parameter: see BuildOptimal and SetSettings.
  /// @throws corvath::utils::runtime_error  sizes that do not fit, or no input
  OrdinaryKriging(const Eigen::MatrixXd& points, const Eigen::VectorXd& values);
  OrdinaryKriging(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                  const OrdinaryKrigingSettings& settings);

  using SurrogateBase::BuildOptimal;

  /// @returns false when C is not positive definite (mean and weights are kept), or when there are
  ///          no support points or no kernel parameters
  bool Build() override;
  bool IsSolvable() const override { return true; }
  bool IsBuilt() const override;
  /// Works on blocks of rows: O(n N r) time, buffers of a few blocks.
  /// @throws corvath::utils::runtime_error  not built, another number of inputs, or a stored model
  ///                                        whose parts contradict each other
  Eigen::VectorXd Approximate(const ConstPoints& points) const override;

  /// Exact, with the kernel parameters kept and the mean estimated again without the point; one
  /// inverse of C. The value without which no other is left is NaN.
  /// @throws std::logic_error  not built
  Eigen::VectorXd ApproximateLeaveOneOut() const override;
  /// The same for groups: one inverse of C, then a system of the size of each group.
  /// @throws std::logic_error  not built, or `subsets` is neither empty nor of size N
  Eigen::VectorXd ApproximateCrossValidation(const IndexVector& subsets) const override;
  /// The same by one factorisation per group. O(N^3) per group.
  virtual Eigen::VectorXd ApproximateCrossValidationDirect(const IndexVector& subsets) const;

  /// Chooses kernel parameters and nugget, and the value transform where there is one, and builds.
  /// A kernel with one radius is fitted by its likelihood or, where the settings say so, by its
  /// cross-validation error in the groups `subsets`: a coarse grid, then SQP. Other kernels are
  /// fitted by their likelihood: SQP from the five best points of a Latin hypercube, which is drawn
  /// from a fixed seed, so that a fit can be repeated. The nugget lies between 1e-6 and 1.
  /// @returns false, with settings and transforms as before, when there are no support points, no
  ///          inputs or numbers that are not finite, or when no trial can be solved; for a kernel
  ///          with one radius also when all points coincide
  /// @throws std::logic_error  an unknown kernel, or `subsets` is used and not of size N
  bool BuildOptimal(const IndexVector& subsets) override;

  /// Chooses the value transform where there is one, kernel parameters and nugget for data with noise
  /// (FitKernelWithNoise), from these rows of the support points, and builds with all.
  /// @returns false when there are no support points, inputs or likelihood; the model is not built
  /// @throws std::logic_error  a kernel without radii
  bool BuildWithNoise(const std::vector<Eigen::Index>& rows);

  /// Takes mean and weights with which a built model follows another function: least squares of the
  /// deviations at `points`, with a small penalty on what bends; radii are kept. The values it was
  /// fitted to stay, as does what is computed from them. O(N^2 M) time, a buffer of N M doubles.
  /// @param points       M x m, in the user's units
  /// @param values       M, of the other function, in the user's units
  /// @param importances  M: factors of the squared deviations, not negative, not all 0
  /// @returns false, with nothing changed, when the system is not positive definite
  /// @throws std::logic_error  the model is not built, or numbers of rows that differ
  bool Follow(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
              const Eigen::VectorXd& importances);

  /// How much the cross-validated share of unexplained variance grows when one input is removed: m
  /// values, 0 for inputs that are not selected, NaN where the smaller model cannot be built.
  virtual Eigen::VectorXd ComputeSingleCoPs(const IndexVector& subsets) const;
  virtual Eigen::VectorXd ComputeSingleCoPs() const { return ComputeSingleCoPs(IndexVector()); }

  /// Gradient of the negative log likelihood in log10 of the nugget (entry 0) and of each kernel
  /// parameter. Builds the model if needed.
  /// @throws std::logic_error  the model cannot be built
  virtual Eigen::VectorXd LikelihoodGradient();

  /// Takes the value transform over from a quadratic regression that is fitted to it, and builds.
  virtual bool BuildBoxCox();

  std::wstring GetName(bool short_form) const override;
  std::wstring GetDescription() const override { return GetName(false); }
  BitVector GetVariableSelection() const override { return settings_.GetVariableSelection(); }
  std::uint64_t GetNumberCoefficients() const override { return settings_.GetNumberCoefficients(); }
  const OrdinaryKrigingSettings& GetSettingsBase() const override { return settings_; }
  bool Equals(const SurrogateBase& other) const override;
  OrdinaryKriging* Clone() const override { return new OrdinaryKriging(*this); }
  void SetSettings(const SurrogateSettingsBase& settings) override;

  double GetMean() const { return mean_; }
  /// Variance of the process.
  double GetSigma2() const { return sigma2_; }
  const Eigen::VectorXd& GetKernelWeights() const { return kernel_weights_; }
  /// Negative log likelihood, up to a constant, of the last solution; smaller is better.
  double GetLikelihood() const { return likelihood_; }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void save(Archive& ar, unsigned int version) const;
  template <class Archive>
  void load(Archive& ar, unsigned int version);
  ZEL_SPLIT_SERIALIZE()
  template <class Archive>
  void LoadVersion0(Archive& ar);

  /// The correlation matrix of `points`, the nugget on its diagonal.
  void BuildCorrelation(const Eigen::MatrixXd& points, Eigen::MatrixXd& correlation) const;
  /// Its lower triangle from the matrix of squared distances, for isotropic kernels.
  void BuildCorrelationOfDistances(const Eigen::MatrixXd& squared,
                                   Eigen::MatrixXd& correlation) const;
  /// Mean, variance, weights and likelihood for the transformed values.
  /// @param factor  takes the factorisation of `correlation`
  /// @returns false, with nothing changed, when `correlation` is not positive definite
  bool Solve(const Eigen::MatrixXd& correlation, DefiniteFactor& factor);
  /// The gradient of the last solution, from its correlation matrix and its factorisation.
  Eigen::VectorXd LikelihoodGradient(const Eigen::MatrixXd& correlation,
                                     const DefiniteFactor& factor) const;
  /// points_trans_reduced_ and values_trans_ from the support data.
  void TransformSupportData();
  /// BuildBoxCox without the build.
  void ChooseValueTransform();

  class Trials;  ///< solutions of the model with other parameters
  /// The steps of BuildOptimal on this model, which is left half built when they fail.
  bool Fit(const IndexVector& subsets);
  bool FitKernel(const IndexVector& subsets);
  bool FitIsotropic(const IndexVector& subsets);
  bool FitAnisotropic();

  /// The parts of a loaded model must fit each other before anything is computed with them.
  void RequireConsistent() const;
  /// @throws std::logic_error  there is no built model, or another number of groups than points
  void RequireCrossValidation(const IndexVector& subsets) const;

  double mean_ = 0.0;
  double sigma2_ = 0.0;
  double likelihood_ = 0.0;
  Eigen::VectorXd kernel_weights_;  ///< N
  OrdinaryKrigingSettings settings_;
  Eigen::VectorXd values_trans_;  ///< N: y; empty in models of the oldest form
};

}  // namespace corvath::math::metamodel

ZEL_CLASS_VERSION(corvath::math::metamodel::OrdinaryKriging, 2)
ZEL_EXPORT_KEY(corvath::math::metamodel::OrdinaryKriging,
               "corvath::math::metamodel::OrdinaryKriging")
