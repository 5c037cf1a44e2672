#include "metamodel/kriging/ordinary_kriging.h"

#include "foundation/exception.h"
#include "foundation/log_line.h"
#include "foundation/same_figures.h"
#include "foundation/text_stream.h"
#include "metamodel/factories.h"
#include "metamodel/kernels/kernel_block.h"
#include "metamodel/kriging/definite_factor.h"
#include "metamodel/regression/quadratic_box_cox.h"

#include <algorithm>
#include <stdexcept>
#include <typeinfo>

namespace corvath::math::metamodel {

namespace {

/// Rows predicted at once: their transformed coordinates stay in the second-level cache.
constexpr Eigen::Index kBlockRows = 256;

}  // namespace

OrdinaryKriging::OrdinaryKriging(const Eigen::MatrixXd& points, const Eigen::VectorXd& values)
    : OrdinaryKriging(points, values,
                      OrdinaryKrigingSettings(static_cast<std::uint64_t>(points.cols()))) {}

OrdinaryKriging::OrdinaryKriging(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                                 const OrdinaryKrigingSettings& settings)
    : SurrogateBase(points, values) {
  Initialize(settings);
}

void OrdinaryKriging::SetSettings(const SurrogateSettingsBase& settings) {
  try {
    settings_ = dynamic_cast<const OrdinaryKrigingSettings&>(settings);
  } catch (const std::bad_cast& error) {
    throw std::logic_error(
        std::string("Initialize Kriging failed. Could not convert surrogate setting : ") +
        error.what());
  }
  need_build_ = true;
  if (!settings_.Equals(OrdinaryKrigingSettings(settings_.GetNumberInputs())))
    settings_.SetState(SettingsState::kReplaced);
}

bool OrdinaryKriging::IsBuilt() const {
  // By the transformed points: a loaded model predicts also where its support data are missing.
  return !need_build_ && !NeedsBuild(trans_coord_) && kernel_weights_.size() > 0 &&
         kernel_weights_.size() == points_trans_reduced_.rows();
}

void OrdinaryKriging::TransformSupportData() {
  points_trans_reduced_ = ReduceColumns(TransformedPoints(), GetVariableSelection());
  values_trans_ = TransformedValues();
}

bool OrdinaryKriging::Build() {
  if (IsBuilt()) {
    // The oldest stored form lacks the transformed values, which cross-validation needs.
    if (values_trans_.size() != kernel_weights_.size() &&
        values_.size() == kernel_weights_.size() && !NeedsBuild(trans_value_))
      values_trans_ = trans_value_ ? Eigen::VectorXd(trans_value_->Forward(values_)) : values_;
    return true;
  }
  need_build_ = true;  // a failure on the way leaves no half-built model behind
  residuals_.resize(0);
  likelihood_ = 0.0;
  RequireSupportData();
  if (GetNumberPoints() == 0) return false;
  if (settings_.GetKernelParameter().size() == 0) {
    utils::log::LogLine(logger_, utils::log::kError)
        << L"Kriging has no kernel parameter; it can not be built before one is chosen.";
    return false;
  }
  TransformSupportData();
  Eigen::MatrixXd correlation;
  BuildCorrelation(points_trans_reduced_, correlation);
  DefiniteFactor factor;
  if (!Solve(correlation, factor)) return false;
  WriteTransformParameters(settings_);
  return true;
}

void OrdinaryKriging::ChooseValueTransform() {
  residuals_.resize(0);
  const ValueTransformChoice choice = FitQuadraticBoxCox(*this, interruption_point_);
  SetValueTransform(choice.type, choice.parameters);
  settings_.SetValueTransform(choice.type);
  WriteTransformParameters(settings_);
  settings_.SetState(SettingsState::kOptimized);
}

bool OrdinaryKriging::BuildBoxCox() {
  ChooseValueTransform();
  Build();
  return true;
}

void OrdinaryKriging::RequireConsistent() const {
  const Eigen::VectorXd& parameters = settings_.GetKernelParameter();
  const Eigen::MatrixXd& support = points_trans_reduced_;
  const bool radius_per_input = settings_.GetKernelType() == KernelType::kConstInflExp;
  if (static_cast<std::uint64_t>(support.cols()) == CountBits(GetVariableSelection()) &&
      (radius_per_input ? parameters.size() == support.cols() : parameters.size() > 0))
    return;
  utils::WideTextStream message;
  message << L"Kriging: support points of " << support.cols() << L" inputs and "
          << parameters.size() << L" kernel parameters for " << CountBits(GetVariableSelection())
          << L" selected inputs";
  throw utils::runtime_error(message.str());
}

Eigen::VectorXd OrdinaryKriging::Approximate(const ConstPoints& points) const {
  if (!IsBuilt()) throw utils::runtime_error(L"can not approximate - build first");
  RequireConsistent();
  const BitVector selection = GetVariableSelection();
  if (static_cast<std::size_t>(points.cols()) != selection.size()) {
    utils::WideTextStream message;
    message << L"Surrogate approximate needs same number of input dimension (" << points.cols()
            << L") as support points (" << selection.size() << L")";
    throw utils::runtime_error(message.str());
  }
  const auto kernel = MakeKernel(settings_.GetKernelType(), settings_.GetKernelParameter());
  KernelBlock block_weights(*kernel, points_trans_reduced_);
  Eigen::VectorXd values(points.rows());
  Eigen::MatrixXd block;
  Eigen::MatrixXd reduced;
  for (Eigen::Index begin = 0; begin < points.rows(); begin += kBlockRows) {
    const Eigen::Index rows = std::min(kBlockRows, points.rows() - begin);
    block = points.middleRows(begin, rows);
    if (trans_coord_) trans_coord_->ForwardInPlace(block);
    auto result = values.segment(begin, rows);
    ReduceColumns(block, selection, reduced);
    block_weights.WeightedSums(reduced, kernel_weights_, result);
    result.array() += mean_;
    BackTransform(result);
  }
  return values;
}

std::wstring OrdinaryKriging::GetName(bool short_form) const {
  const std::wstring name = settings_.GetKernelType() == KernelType::kConstInflExp
                                ? L"Anisotropic Kriging"
                                : L"Isotropic Kriging";
  return short_form ? name : name + L" | " + std::to_wstring(settings_.GetOrder());
}

bool OrdinaryKriging::Equals(const SurrogateBase& other) const {
  if (!SurrogateBase::Equals(other)) return false;
  const auto* own = dynamic_cast<const OrdinaryKriging*>(&other);
  return own && SameFigure(mean_, own->mean_) && SameFigure(sigma2_, own->sigma2_) &&
         SameFigures(kernel_weights_, own->kernel_weights_) && settings_.Equals(own->settings_) &&
         SameFigures(values_trans_, own->values_trans_);
}

}  // namespace corvath::math::metamodel
