#pragma once

#include "archive/serialization.h"
#include "foundation/log.h"
#include "metamodel/surrogate_settings.h"
#include "metamodel/transforms/transform.h"
#include "metamodel/types.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <functional>
#include <string>
#include <vector>

namespace corvath::math::metamodel {

/// One scalar response as a function of m inputs, fitted to N support points.
///
/// A stored model arrives built and answers at once. A new one goes through Initialize, Build or
/// BuildOptimal, then BuildErrors. Points and values are in the user's units; what ends in
/// `_trans_` or `_trans_reduced_` is in transformed coordinates.
///
/// The const operations change no member: threads may share a built model.
class SurrogateBase {
 public:
  virtual ~SurrogateBase() = default;

  /// Fits the model to its support points; returns at once when nothing is to be done.
  /// @returns false when the support points do not suffice
  /// @throws corvath::utils::runtime_error  the numbers of points, values and weights disagree
  virtual bool Build() = 0;
  /// Whether a build with the present data would have a regular system.
  virtual bool IsSolvable() const = 0;
  virtual bool IsBuilt() const = 0;
  /// Predictions at the N support points.
  virtual Eigen::VectorXd ApproximateSupportPoints() const { return Approximate(*points_); }
  /// Predictions at the rows of `points` (n x m): n values. NaN is a legal prediction.
  virtual Eigen::VectorXd Approximate(const ConstPoints& points) const = 0;
  /// Prediction of each support point without itself.
  virtual Eigen::VectorXd ApproximateLeaveOneOut() const;
  /// Prediction of each support point without its group; `subsets` holds the group of each point,
  /// empty means one group per point.
  virtual Eigen::VectorXd ApproximateCrossValidation(const IndexVector& subsets) const;
  /// Prediction of each support point without itself or its group, from stored residuals where
  /// there are any.
  /// @throws std::logic_error  there are no support points
  virtual Eigen::VectorXd ApproximatePrognosis() const;
  /// Build, with the free parameters of the model chosen by cross-validation in these groups.
  virtual bool BuildOptimal(const IndexVector& subsets) = 0;
  bool BuildOptimal() { return BuildOptimal(IndexVector()); }

  /// The family's name; the long form adds the order where the family has one.
  virtual std::wstring GetName(bool short_form) const = 0;
  /// One line on the model; here the names of its transforms.
  virtual std::wstring GetDescription() const;
  virtual const Eigen::VectorXd& GetValues() const { return values_; }
  virtual const Eigen::MatrixXd& GetPoints() const { return *points_; }
  /// Which inputs the model uses: m bits.
  virtual BitVector GetVariableSelection() const;
  virtual std::uint64_t GetNumberCoefficients() const;  ///< as that of the settings
  /// The model as a formula in the inputs, where it has one.
  virtual std::wstring GetModelFunction(const std::vector<std::wstring>& names) const;
  virtual const SurrogateSettingsBase& GetSettingsBase() const;  ///< logic_error without any
  /// Whether the model can be used on this machine; every model of this library can.
  virtual bool CheckAvailable(const boost::shared_ptr<utils::log::LogBase>& logger);
  virtual bool Equals(const SurrogateBase& other) const;
  /// A copy, owned by the caller.
  virtual SurrogateBase* Clone() const = 0;
  virtual void SetLogger(const boost::shared_ptr<utils::log::LogBase>& logger) { logger_ = logger; }
  /// Takes settings of the model's own class over; the model then needs a build.
  /// @throws std::logic_error  settings of another class
  virtual void SetSettings(const SurrogateSettingsBase& settings) = 0;

  /// Checks the settings, makes the transforms that they name and takes them over.
  /// @throws corvath::utils::runtime_error  the settings are refused
  void Initialize(const SurrogateSettingsBase& settings);

  /// Residuals of leave-one-out, or of cross-validation in these groups, and the radii of density
  /// and local errors. Does only what is still missing.
  /// @throws std::logic_error  the model is not built, or its support points are missing
  /// @throws corvath::utils::runtime_error  parts with a row per support point disagree in number
  bool BuildErrors();
  bool BuildErrors(const IndexVector& subsets);

  /// Takes residuals (N, value minus prediction without the point's group) from a caller who knows
  /// more than the model: who also chose the model without each group. With BuildErrors' radii.
  /// @throws std::logic_error  the model is not built, or sizes differ from N
  void SetErrors(const Eigen::VectorXd& residuals, const IndexVector& subsets);

  /// How far to trust the prediction at each row of `points` (n x m): LocalErrors there, an n x 5
  /// matrix with a column per ErrorColumn.
  /// @throws corvath::utils::runtime_error  another number of inputs, or BuildErrors is missing
  Eigen::MatrixXd ApproximateErrors(const ConstPoints& points) const;

  /// Central differences at each row of `points` (n x m), over 1e-4 of each input's range to each
  /// side: n x m, response units per input unit. An input that the model does not use, or on which
  /// all support points agree, has gradient 0.
  /// @throws corvath::utils::runtime_error  another number of inputs
  Eigen::MatrixXd ApproximateGradients(const ConstPoints& points) const;

  /// Replace a transform; the model then needs a build.
  /// @throws std::logic_error  an unknown type
  void SetCoordTransform(transform::TransformType type, const std::vector<double>& parameters);
  void SetValueTransform(transform::TransformType type, const std::vector<double>& parameters);
  void SetLimitTransform(transform::TransformType type, const std::vector<double>& parameters);

  /// Takes other support data and changes nothing else: for stored models whose support data were
  /// left out of the file. `points` is not null.
  void SetSupportData(boost::shared_ptr<const Eigen::MatrixXd> points,
                      const Eigen::VectorXd& values);
  void SetSupportData(const Eigen::MatrixXd& points, const Eigen::VectorXd& values);

  /// The support points (N x r) in transformed coordinates, without unused inputs; empty before a
  /// build, and for families that keep none.
  const Eigen::MatrixXd& GetTransformedPoints() const { return points_trans_reduced_; }
  const Eigen::VectorXd& GetWeights() const { return weights_; }
  const Eigen::VectorXd& GetResiduals() const { return residuals_; }
  const IndexVector& GetSubsets() const { return subsets_; }
  const Eigen::MatrixXd& GetSingleCoPs() const { return single_cops_; }
  void SetSingleCoPs(const Eigen::MatrixXd& single_cops) { single_cops_ = single_cops; }
  double GetPointsRadiiMean() const { return points_radii_mean_; }
  double GetWeightErrorRadius() const { return weight_error_radius_; }
  /// Null where the model has none.
  const transform::Transform* GetTransCoord() const { return trans_coord_.get(); }
  const transform::Transform* GetTransValue() const { return trans_value_.get(); }
  const transform::Transform* GetTransLimit() const { return trans_limit_.get(); }

  /// Called at the top of each expensive step of a long fit; may throw to end the fit. Not stored.
  void SetInterruptionPoint(std::function<void()> point) { interruption_point_ = std::move(point); }

 protected:
  SurrogateBase();  ///< for loading: no support points, default transforms
  /// @throws corvath::utils::runtime_error  the numbers of points and values differ
  SurrogateBase(const Eigen::MatrixXd& points, const Eigen::VectorXd& values);
  SurrogateBase(const SurrogateBase&) = default;
  SurrogateBase& operator=(const SurrogateBase&) = default;

  /// The class name of a family that has neither settings and selected inputs nor
  /// cross-validation: these operations then refuse in its name. Null where a family overrides them.
  virtual const char* GetClassWithoutSettings() const { return nullptr; }

  Eigen::Index GetNumberPoints() const { return points_->rows(); }
  Eigen::Index GetNumberInputs() const { return points_->cols(); }

  /// Build the transforms on the support data and return these data transformed. A copy of a model
  /// shares its transforms: so a build never touches an installed transform, it installs a new one.
  Eigen::MatrixXd TransformedPoints();
  Eigen::VectorXd TransformedValues();

  /// The support points as a build would transform them, without changing the model.
  Eigen::MatrixXd PreviewTransformedPoints() const;

  /// Transformed model output to the user's units, in place: value transform, then limits.
  void BackTransform(Eigen::Ref<Eigen::MatrixXd> values) const;

  /// The columns of `matrix` whose bit is set, in their order.
  /// @throws std::logic_error  another number of bits than columns
  static Eigen::MatrixXd ReduceColumns(const ConstPoints& matrix, const BitVector& filter);
  /// The same into a matrix that keeps its memory where the size stays.
  static void ReduceColumns(const ConstPoints& matrix, const BitVector& filter,
                            Eigen::MatrixXd& reduced);

  /// What a fit reads must have one row per support point.
  /// @throws corvath::utils::runtime_error  the numbers of points, values or weights disagree
  void RequireSupportData() const;
  /// The same for all parts, those of a fit and of BuildErrors included; support data that were left
  /// out of a file may be missing as a whole.
  void RequireSameSupport() const;

  /// @throws std::logic_error  there are no support points: a file may leave them out
  void RequireValues() const;
  /// @throws corvath::utils::runtime_error  `columns` is not m
  void RequireInputs(Eigen::Index columns) const;

  static bool NeedsBuild(const boost::shared_ptr<transform::Transform>& trans) {
    return trans && trans->NeedBuild();
  }
  /// Writes the parameters of the transforms that exist into `settings`.
  void WriteTransformParameters(SurrogateSettingsBase& settings) const;
  /// Number of inputs, and types and parameters of coordinate and value transform where they exist:
  /// for models from files that stored no settings.
  void RebuildSettings(SurrogateSettingsBase& settings) const;
  void PassInterruptionPoint() const {
    if (interruption_point_) interruption_point_();
  }

  boost::shared_ptr<const Eigen::MatrixXd> points_;  ///< N x m; models of a project share them
  Eigen::VectorXd values_;                           ///< N
  Eigen::MatrixXd points_trans_reduced_;             ///< N x r: transformed, unused inputs dropped
  Eigen::VectorXd residuals_;  ///< 0 or N: value minus prediction without the point
  IndexVector subsets_;        ///< 0 or N
  Eigen::MatrixXd single_cops_;
  bool need_build_ = true;
  std::function<void()> interruption_point_;
  boost::shared_ptr<transform::Transform> trans_coord_;
  boost::shared_ptr<transform::Transform> trans_value_;
  Eigen::VectorXd weights_;  ///< 0 or N; empty means all equal
  boost::shared_ptr<transform::Transform> trans_limit_;
  double points_radii_mean_ = 0.0;    ///< density radius; 0 until BuildErrors
  double weight_error_radius_ = 0.0;  ///< local-error radius; 0 until BuildErrors
  boost::shared_ptr<utils::log::LogBase> logger_;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  void ClearErrors();
  void BeginBuildErrors();
  [[noreturn]] void RefuseWithoutSettings(const char* operation) const;
  [[noreturn]] void RefuseValidation(const wchar_t* operation) const;
};

}  // namespace corvath::math::metamodel

ZEL_CLASS_VERSION(corvath::math::metamodel::SurrogateBase, 7)
ZEL_EXPORT_KEY(corvath::math::metamodel::SurrogateBase, "corvath::math::metamodel::SurrogateBase")
