#include "metamodel/surrogate.h"

#include "archive/instantiate.h"
#include "foundation/exception.h"
#include "foundation/log_line.h"
#include "foundation/same_figures.h"
#include "foundation/text.h"
#include "foundation/text_stream.h"
#include "metamodel/factories.h"
#include "metamodel/support_rows.h"
#include "metamodel/transforms/trans_min_max.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <new>
#include <stdexcept>

namespace corvath::math::metamodel {

using transform::Transform;
using transform::TransformType;

namespace {

bool SameTransform(const boost::shared_ptr<Transform>& a, const boost::shared_ptr<Transform>& b) {
  return a && b ? a->Equals(*b) : !a && !b;
}

/// Builds a copy of `installed` on `data`. Models share transforms with their copies, so an
/// installed one is never changed.
boost::shared_ptr<Transform> BuiltCopy(const Transform& installed,
                                       const Eigen::Ref<const Eigen::MatrixXd>& data) {
  boost::shared_ptr<Transform> copy(installed.Clone());
  copy->Build(data);
  return copy;
}

std::wstring NameOrNone(const boost::shared_ptr<Transform>& trans) {
  return trans ? trans->GetName() : L"none";
}

}  // namespace

SurrogateBase::SurrogateBase()
    : points_(boost::make_shared<Eigen::MatrixXd>()),
      trans_coord_(boost::make_shared<transform::TransMinMax>()),
      logger_(boost::make_shared<utils::log::LogDummy>()) {}

SurrogateBase::SurrogateBase(const Eigen::MatrixXd& points, const Eigen::VectorXd& values)
    : SurrogateBase() {
  points_ = boost::make_shared<Eigen::MatrixXd>(points);
  values_ = values;
  RequireSupportData();
}

void SurrogateBase::Initialize(const SurrogateSettingsBase& settings) {
  if (settings.GetNumberInputs() != 0) settings.Check(logger_.get());
  SetCoordTransform(settings.GetCoordTransform(), settings.GetCoordTransformParameter());
  SetValueTransform(settings.GetValueTransform(), settings.GetValueTransformParameter());
  SetLimitTransform(settings.GetLimitTransform(), settings.GetLimitTransformParameter());
  try {
    SetSettings(settings);
  } catch (const std::bad_alloc&) {
    throw;  // no fault of the settings
  } catch (const std::exception& error) {
    const std::wstring message =
        utils::MessageOf(error) +
        L"\nThe surrogate can not be initialized. An error in the settings is very likely.";
    utils::log::LogLine(logger_, utils::log::kError) << message;
    throw utils::runtime_error(message);
  }
}

void SurrogateBase::SetCoordTransform(TransformType type, const std::vector<double>& parameters) {
  trans_coord_ = MakeTransform(type, parameters);
  ClearErrors();
}

void SurrogateBase::SetValueTransform(TransformType type, const std::vector<double>& parameters) {
  trans_value_ = MakeTransform(type, parameters);
  ClearErrors();
}

void SurrogateBase::SetLimitTransform(TransformType type, const std::vector<double>& parameters) {
  trans_limit_ = MakeTransform(type, parameters);
  ClearErrors();
}

void SurrogateBase::ClearErrors() {
  need_build_ = true;
  residuals_.resize(0);
  single_cops_.resize(0, 0);
  points_radii_mean_ = 0.0;
  weight_error_radius_ = 0.0;
}

void SurrogateBase::SetSupportData(boost::shared_ptr<const Eigen::MatrixXd> points,
                                   const Eigen::VectorXd& values) {
  points_ = std::move(points);
  values_ = values;
}

void SurrogateBase::SetSupportData(const Eigen::MatrixXd& points, const Eigen::VectorXd& values) {
  SetSupportData(boost::make_shared<Eigen::MatrixXd>(points), values);
}

Eigen::MatrixXd SurrogateBase::TransformedPoints() {
  Eigen::MatrixXd points = *points_;
  if (trans_coord_) {
    trans_coord_ = BuiltCopy(*trans_coord_, points);
    if (!trans_coord_->NeedBuild()) trans_coord_->ForwardInPlace(points);
  }
  return points;
}

Eigen::VectorXd SurrogateBase::TransformedValues() {
  Eigen::VectorXd values = values_;
  if (trans_value_) {
    trans_value_ = BuiltCopy(*trans_value_, values);
    if (!trans_value_->NeedBuild()) trans_value_->ForwardInPlace(values);
  }
  if (trans_limit_) trans_limit_ = BuiltCopy(*trans_limit_, values);
  return values;
}

Eigen::MatrixXd SurrogateBase::PreviewTransformedPoints() const {
  Eigen::MatrixXd points = *points_;
  if (trans_coord_) {
    const auto built = BuiltCopy(*trans_coord_, points);
    if (!built->NeedBuild()) built->ForwardInPlace(points);
  }
  return points;
}

void SurrogateBase::BackTransform(Eigen::Ref<Eigen::MatrixXd> values) const {
  if (trans_value_) trans_value_->BackwardInPlace(values);
  if (trans_limit_) trans_limit_->BackwardInPlace(values);
}

Eigen::MatrixXd SurrogateBase::ReduceColumns(const ConstPoints& matrix, const BitVector& filter) {
  Eigen::MatrixXd reduced;
  ReduceColumns(matrix, filter, reduced);
  return reduced;
}

void SurrogateBase::ReduceColumns(const ConstPoints& matrix, const BitVector& filter,
                                  Eigen::MatrixXd& reduced) {
  const auto columns = static_cast<std::size_t>(matrix.cols());
  if (filter.size() != columns)
    throw std::logic_error("Surrogate: the variable selection has " +
                           std::to_string(filter.size()) + " bits for " + std::to_string(columns) +
                           " inputs");
  reduced.resize(matrix.rows(), static_cast<Eigen::Index>(CountBits(filter)));
  Eigen::Index next = 0;
  for (Eigen::Index j = 0; j < matrix.cols(); ++j)
    if (filter[static_cast<std::size_t>(j)]) reduced.col(next++) = matrix.col(j);
}

void SurrogateBase::RequireSupportData() const {
  if (GetNumberPoints() != values_.size()) {  // here, none is a number too
    utils::WideTextStream message;
    message << L"Surrogate needs same number of support points (" << GetNumberPoints()
            << L") and values (" << values_.size() << L")";
    throw utils::runtime_error(message.str());
  }
  RequireSameRows({{L"support points", GetNumberPoints()}, {L"weights", weights_.size()}});
}

void SurrogateBase::RequireSameSupport() const {
  RequireSupportData();
  RequireSameRows({{L"support points", GetNumberPoints()},
                   {L"weights", weights_.size()},
                   {L"transformed support points", points_trans_reduced_.rows()},
                   {L"residuals", residuals_.size()},
                   {L"groups", subsets_.size()}});
}

void SurrogateBase::RequireValues() const {
  if (points_->size() == 0 || values_.size() == 0)
    throw std::logic_error("Surrogate: support point data is missing");
}

void SurrogateBase::RequireInputs(Eigen::Index columns) const {
  if (columns == GetNumberInputs()) return;
  utils::WideTextStream message;
  message << L"Surrogate approximate needs same number of input dimension (" << columns
          << L") as support points (" << GetNumberInputs() << L")";
  throw utils::runtime_error(message.str());
}

void SurrogateBase::WriteTransformParameters(SurrogateSettingsBase& settings) const {
  if (trans_coord_) settings.SetCoordTransformParameter(trans_coord_->GetParameters());
  if (trans_value_) settings.SetValueTransformParameter(trans_value_->GetParameters());
  if (trans_limit_) settings.SetLimitTransformParameter(trans_limit_->GetParameters());
}

void SurrogateBase::RebuildSettings(SurrogateSettingsBase& settings) const {
  settings.SetNumberInputs(static_cast<std::uint64_t>(GetNumberInputs()));
  if (trans_coord_) {
    settings.SetCoordTransform(trans_coord_->GetType());
    settings.SetCoordTransformParameter(trans_coord_->GetParameters());
  }
  if (trans_value_) {
    settings.SetValueTransform(trans_value_->GetType());
    settings.SetValueTransformParameter(trans_value_->GetParameters());
  }
}

Eigen::VectorXd SurrogateBase::ApproximateLeaveOneOut() const {
  if (GetClassWithoutSettings()) RefuseValidation(L"ApproximateLeaveOneOut");
  RequireValues();
  return ApproximateCrossValidation(
      IndexVector::LinSpaced(values_.size(), 0, static_cast<std::uint64_t>(values_.size() - 1)));
}

Eigen::VectorXd SurrogateBase::ApproximateCrossValidation(const IndexVector&) const {
  RefuseValidation(L"ApproximateCrossValidation");
}

BitVector SurrogateBase::GetVariableSelection() const {
  RefuseWithoutSettings("GetVariableSelection");
}

std::uint64_t SurrogateBase::GetNumberCoefficients() const {
  RefuseWithoutSettings("GetNumberCoefficients");
}

const SurrogateSettingsBase& SurrogateBase::GetSettingsBase() const {
  RefuseWithoutSettings("GetSettingsBase");
}

void SurrogateBase::RefuseWithoutSettings(const char* operation) const {
  const char* name = GetClassWithoutSettings();
  throw std::logic_error(std::string(operation) + " not implemented for " +
                         (name ? name : "this surrogate"));
}

void SurrogateBase::RefuseValidation(const wchar_t* operation) const {
  throw utils::runtime_error(std::wstring(L"The method ") + operation +
                             L" is not implemented for surrogate model '" + GetName(false) + L"'.");
}

std::wstring SurrogateBase::GetDescription() const {
  return L"coordinate transformation : " + NameOrNone(trans_coord_) +
         L" | value transformation : " + NameOrNone(trans_value_) + NameOrNone(trans_limit_);
}

std::wstring SurrogateBase::GetModelFunction(const std::vector<std::wstring>&) const {
  return L"No model function available";
}

bool SurrogateBase::CheckAvailable(const boost::shared_ptr<utils::log::LogBase>&) {
  return true;
}

bool SurrogateBase::Equals(const SurrogateBase& other) const {
  return SameFigures(*points_, *other.points_) && SameFigures(values_, other.values_) &&
         need_build_ == other.need_build_ && SameTransform(trans_coord_, other.trans_coord_) &&
         SameTransform(trans_value_, other.trans_value_) && SameFigures(weights_, other.weights_) &&
         SameFigures(points_trans_reduced_, other.points_trans_reduced_) &&
         SameFigures(residuals_, other.residuals_) && subsets_.size() == other.subsets_.size() &&
         subsets_ == other.subsets_ && SameTransform(trans_limit_, other.trans_limit_) &&
         SameFigures(single_cops_, other.single_cops_) &&
         SameFigure(points_radii_mean_, other.points_radii_mean_) &&
         SameFigure(weight_error_radius_, other.weight_error_radius_);
}

template <class Archive>
void SurrogateBase::serialize(Archive& ar, unsigned int version) {
  if constexpr (Archive::is_loading::value) {
    const auto points = boost::make_shared<Eigen::MatrixXd>();
    ar& boost::serialization::make_nvp("points_", *points);
    points_ = points;
  } else {
    ar& boost::serialization::make_nvp("points_", *points_);
  }
  ar& BOOST_SERIALIZATION_NVP(values_);
  if (version >= 2) {
    ar& BOOST_SERIALIZATION_NVP(points_trans_reduced_);
    ar& BOOST_SERIALIZATION_NVP(residuals_);
  }
  if (version >= 3) ar& BOOST_SERIALIZATION_NVP(subsets_);
  ar& BOOST_SERIALIZATION_NVP(need_build_);
  ar& BOOST_SERIALIZATION_NVP(trans_coord_) & BOOST_SERIALIZATION_NVP(trans_value_);
  if (version >= 1) ar& BOOST_SERIALIZATION_NVP(weights_);
  if (version >= 4) ar& BOOST_SERIALIZATION_NVP(trans_limit_);
  if (version >= 5) ar& BOOST_SERIALIZATION_NVP(single_cops_);
  if (version >= 6) ar& BOOST_SERIALIZATION_NVP(points_radii_mean_);
  if (version >= 7) ar& BOOST_SERIALIZATION_NVP(weight_error_radius_);
  if constexpr (Archive::is_loading::value) RequireSameSupport();
}

}  // namespace corvath::math::metamodel

ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::SurrogateBase)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::SurrogateBase)
