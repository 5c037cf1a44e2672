#include "exchange/model_reader.h"

#include "foundation/exception.h"
#include "foundation/text.h"
#include "metamodel/factories.h"
#include "metamodel/kernels/kernels_constant.h"
#include "metamodel/kernels/kernels_nodal.h"
#include "metamodel/kriging/ordinary_kriging.h"
#include "metamodel/moving_least_squares/moving_least_squares.h"
#include "metamodel/regression/linear_regression.h"
#include "metamodel/thin_plate_splines.h"
#include "metamodel/transforms/trans_box_cox.h"
#include "metamodel/transforms/trans_limits.h"
#include "metamodel/transforms/trans_min_max.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <string>

namespace corvath::exchange {

namespace {

using math::metamodel::BitVector;
using math::metamodel::KernelType;
using math::metamodel::LinearRegression;
using math::metamodel::MovingLeastSquares;
using math::metamodel::OrdinaryKriging;
using math::metamodel::SurrogateBase;
using math::metamodel::SurrogateTPS;
using math::transform::TransBoxCox;
using math::transform::Transform;
using math::transform::TransLimits;
using math::transform::TransMinMax;

constexpr std::size_t kUnused = static_cast<std::size_t>(-1);

[[noreturn]] void RefuseContradiction() {
  throw NotDescribable("the parts of its model contradict each other");
}

void RequireFinite(const double* numbers, std::size_t n, const char* what) {
  if (std::all_of(numbers, numbers + n, [](double x) { return std::isfinite(x); })) return;
  throw NotDescribable(std::string("its model has a number that is not finite, among its ") + what);
}

void RequireFinite(const std::vector<double>& numbers, const char* what) {
  RequireFinite(numbers.data(), numbers.size(), what);
}

void RequireAllFinite(const Eigen::MatrixXd& numbers, const char* what) {
  RequireFinite(numbers.data(), static_cast<std::size_t>(numbers.size()), what);
}

/// k of lambda = 1 / k, 0 for the logarithm.
std::int64_t InverseLambda(const TransBoxCox& trans) {
  const std::int64_t k = trans.GetInverseLambda();
  if (k != 0 && trans.GetParameters().front() != 1.0 / static_cast<double>(k))
    RefuseContradiction();
  return k;
}

/// The inputs in use, and the transform of their coordinates.
/// @return of each column of the model its place among the inputs in use, or kUnused
std::vector<std::size_t> ReadInputs(const SurrogateBase& surrogate, const BitVector& selection,
                                    const std::vector<std::size_t>& columns, ResponseModel& model) {
  if (selection.size() != columns.size()) RefuseContradiction();
  const Transform* const trans = surrogate.GetTransCoord();
  const auto* min_max = dynamic_cast<const TransMinMax*>(trans);
  if (const auto* const box_cox = dynamic_cast<const TransBoxCox*>(trans)) {
    if (columns.size() != 1) RefuseContradiction();
    min_max = &box_cox->GetScaling();
    model.has_power = selection[0];
    model.power = InverseLambda(*box_cox);
  }
  // Limits act backwards alone: as a transform of coordinates they change nothing.
  if (trans != nullptr && min_max == nullptr && dynamic_cast<const TransLimits*>(trans) == nullptr)
    throw NotDescribable("the transform of its coordinates is not known");
  if (min_max != nullptr &&
      (min_max->GetScaling().size() != static_cast<Eigen::Index>(columns.size()) ||
       min_max->GetOffsetForward().size() != static_cast<Eigen::Index>(columns.size())))
    RefuseContradiction();
  std::vector<std::size_t> places(columns.size(), kUnused);
  for (std::size_t c = 0; c < columns.size(); ++c) {
    if (!selection[c]) continue;
    places[c] = model.inputs.size();
    model.inputs.push_back(columns[c]);
    const auto column = static_cast<Eigen::Index>(c);
    model.scale.push_back(min_max == nullptr ? 1.0 : min_max->GetScaling()(column));
    model.offset.push_back(min_max == nullptr ? 0.0 : min_max->GetOffsetForward()(column));
  }
  RequireFinite(model.scale, "coordinates");
  RequireFinite(model.offset, "coordinates");
  return places;
}

void AddScale(const TransMinMax& trans, ResponseModel& model) {
  if (trans.NeedBuild()) throw NotDescribable("the transform of its values is not built");
  if (trans.GetScaling().size() != 1 || trans.GetOffsetBackward().size() != 1)
    RefuseContradiction();
  BackStep step;
  step.kind = BackStep::Kind::kScale;
  step.scale = trans.GetScaling()(0);
  step.offset = trans.GetOffsetBackward()(0);
  RequireFinite({step.scale, step.offset}, "values");
  model.back.push_back(step);
}

void AddBackStep(const Transform* trans, ResponseModel& model) {
  if (trans == nullptr) return;
  if (trans->NeedBuild()) throw NotDescribable("the transform of its values is not built");
  BackStep step;
  if (const auto* const box_cox = dynamic_cast<const TransBoxCox*>(trans)) {
    step.kind = BackStep::Kind::kBoxCox;
    step.k = InverseLambda(*box_cox);
    model.back.push_back(step);
    AddScale(box_cox->GetScaling(), model);
  } else if (const auto* const min_max = dynamic_cast<const TransMinMax*>(trans)) {
    AddScale(*min_max, model);
  } else {
    const std::vector<double> limits = trans->GetParameters();
    if (dynamic_cast<const TransLimits*>(trans) == nullptr || limits.size() != 2 ||
        std::isnan(limits[0]) || std::isnan(limits[1]))
      throw NotDescribable("the transform of its values is not known");
    step.kind = BackStep::Kind::kLimits;
    step.lower = limits[0];
    step.upper = limits[1];
    model.back.push_back(step);
  }
}

/// The powers that the bits select, in their order: bit o * m + j stands for x_j^(o + 1).
void ReadPowers(const BitVector& main, const std::vector<std::size_t>& places,
                ResponseModel& model) {
  for (std::size_t bit = 0; bit < main.size(); ++bit) {
    if (!main[bit]) continue;
    const std::size_t place = places[bit % places.size()];
    if (place == kUnused) RefuseContradiction();
    model.powers.push_back({place, bit / places.size() + 1});
  }
}

void ReadPolynomial(const LinearRegression& surrogate, const std::vector<std::size_t>& columns,
                    ResponseModel& model) {
  model.family = Family::kPolynomial;
  const auto& settings = surrogate.GetSettingsBase();
  const auto places = ReadInputs(surrogate, settings.GetVariableSelection(), columns, model);
  ReadPowers(settings.GetMainTermSelection(), places, model);
  const BitVector pairs = settings.GetInteractionSelection();
  const std::size_t m = places.size();
  if (!pairs.empty() && pairs.size() != m * (m - 1) / 2) RefuseContradiction();
  for (std::size_t i = 0, pair = 0; i < m && !pairs.empty(); ++i)
    for (std::size_t j = i + 1; j < m; ++j) {
      if (!pairs[pair++]) continue;
      if (places[i] == kUnused || places[j] == kUnused) RefuseContradiction();
      model.products.push_back({places[i], places[j]});
    }
  const Eigen::VectorXd& coefficients = surrogate.GetCoefficients();
  if (static_cast<std::size_t>(coefficients.size()) !=
      1 + model.powers.size() + model.products.size())
    RefuseContradiction();
  RequireAllFinite(coefficients, "coefficients");
  model.constant = coefficients(0);
  model.coefficients.assign(coefficients.begin() + 1, coefficients.end());
}

void ReadKernel(KernelType type, const Eigen::VectorXd& parameters, ResponseModel& model) {
  const auto kernel = math::metamodel::MakeKernel(type, parameters);
  if (kernel->GetParameters().size() == 0) RefuseContradiction();
  Kernel& description = model.kernel;
  if (const auto* const one =
          dynamic_cast<const math::metamodel::KernelConstInflIsoExp*>(&*kernel)) {
    description.factors = {one->GetHelperTerm()};
  } else if (const auto* const each =
                 dynamic_cast<const math::metamodel::KernelConstInflExp*>(&*kernel)) {
    description.factors.assign(each->GetHelperTerm().begin(), each->GetHelperTerm().end());
    if (description.factors.size() != model.inputs.size()) RefuseContradiction();
  } else if (dynamic_cast<const math::metamodel::KernelConstInflIsoReg*>(&*kernel)) {
    description.kind = Kernel::Kind::kRegularised;
    description.squared_radius = parameters(0) * parameters(0);
  } else if (dynamic_cast<const math::metamodel::KernelNodalInflExp*>(&*kernel)) {
    description.kind = Kernel::Kind::kNodal;
    const double c = math::metamodel::InfluenceScale();
    description.factors = {-1.0 / (c * c)};
    description.count = static_cast<std::uint64_t>(
        std::min(parameters(0), static_cast<double>(model.points.rows())));
  } else {
    throw NotDescribable("the kernel of its model is not known");
  }
  RequireFinite(description.factors, "kernel parameters");
  RequireFinite({description.squared_radius}, "kernel parameters");
}

void RequireSupport(const ResponseModel& model) {
  if (model.inputs.empty()) throw NotDescribable("its model has support points, but no inputs");
  if (model.points.rows() == 0 || model.points.rows() != model.values.size() ||
      model.points.cols() != static_cast<Eigen::Index>(model.inputs.size()))
    RefuseContradiction();
  RequireAllFinite(model.points, "support points");
  RequireAllFinite(model.values, "weights");
}

void ReadKriging(const OrdinaryKriging& surrogate, const std::vector<std::size_t>& columns,
                 ResponseModel& model) {
  model.family = Family::kKriging;
  ReadInputs(surrogate, surrogate.GetVariableSelection(), columns, model);
  model.constant = surrogate.GetMean();
  model.points = surrogate.GetTransformedPoints();
  model.values = surrogate.GetKernelWeights();
  RequireFinite({model.constant}, "coefficients");
  RequireSupport(model);
  const auto& settings = surrogate.GetSettingsBase();
  ReadKernel(settings.GetKernelType(), settings.GetKernelParameter(), model);
}

void ReadLocalFits(const MovingLeastSquares& surrogate, const std::vector<std::size_t>& columns,
                   ResponseModel& model) {
  model.family = Family::kMovingLeastSquares;
  const auto& settings = surrogate.GetSettingsBase();
  const auto places = ReadInputs(surrogate, settings.GetVariableSelection(), columns, model);
  model.is_average = settings.GetOrder() == 0;
  if (!model.is_average) ReadPowers(settings.GetMainTermSelection(), places, model);
  model.points = surrogate.GetTransformedPoints();
  model.values = surrogate.GetTransformedValues();
  RequireSupport(model);
  ReadKernel(settings.GetKernelType(), settings.GetKernelParameter(), model);
}

void ReadSplines(const SurrogateTPS& surrogate, const std::vector<std::size_t>& columns,
                 ResponseModel& model) {
  model.family = Family::kThinPlateSplines;
  ReadInputs(surrogate, BitVector(columns.size(), true), columns, model);
  model.points = surrogate.GetScaledPoints().transpose();
  const Eigen::VectorXd& all = surrogate.GetCoefficients();
  const Eigen::Index n = model.points.rows();
  const Eigen::Index m = model.points.cols();
  if (all.size() != n + 1 + m) RefuseContradiction();
  RequireAllFinite(all, "coefficients");
  model.values = all.head(n);
  model.constant = all(n);
  model.coefficients.assign(all.end() - m, all.end());
  RequireSupport(model);
}

/// The library asks splines for no selection: they use all inputs.
BitVector SelectionOf(const SurrogateBase& surrogate, std::size_t num_columns) {
  return dynamic_cast<const SurrogateTPS*>(&surrogate) ? BitVector(num_columns, true)
                                                       : surrogate.GetVariableSelection();
}

}  // namespace

ResponseModel ReadModel(const SurrogateBase& surrogate, const std::vector<std::size_t>& columns) {
  ResponseModel model;
  try {
    if (!surrogate.IsBuilt()) throw NotDescribable("its model is not built");
    bool has_value_transform = true;
    if (const auto* const polynomial = dynamic_cast<const LinearRegression*>(&surrogate)) {
      ReadPolynomial(*polynomial, columns, model);
    } else if (const auto* const kriging = dynamic_cast<const OrdinaryKriging*>(&surrogate)) {
      ReadKriging(*kriging, columns, model);
    } else if (const auto* const fits = dynamic_cast<const MovingLeastSquares*>(&surrogate)) {
      ReadLocalFits(*fits, columns, model);
    } else if (const auto* const splines = dynamic_cast<const SurrogateTPS*>(&surrogate)) {
      ReadSplines(*splines, columns, model);
      has_value_transform = false;
    } else {
      throw NotDescribable("its family of models is not known");
    }
    if (has_value_transform) {
      AddBackStep(surrogate.GetTransValue(), model);
      AddBackStep(surrogate.GetTransLimit(), model);
    }
  } catch (const NotDescribable&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    throw NotDescribable(utils::ToUtf8(utils::MessageOf(error)));
  }
  return model;
}

std::vector<double> ReadGradientSteps(const SurrogateBase& surrogate,
                                      const std::vector<std::size_t>& columns) {
  const Eigen::MatrixXd& points = surrogate.GetPoints();
  if (points.rows() == 0 || points.cols() != static_cast<Eigen::Index>(columns.size())) return {};
  constexpr double kRelativeStep = 0.0001;  // as SurrogateBase::ApproximateGradients
  const BitVector selection = SelectionOf(surrogate, columns.size());
  std::vector<double> steps(columns.size(), 0.0);
  for (std::size_t c = 0; c < columns.size(); ++c) {
    const auto column = points.col(static_cast<Eigen::Index>(c));
    const double step = (column.maxCoeff() - column.minCoeff()) * kRelativeStep;
    if (!std::isfinite(step)) return {};
    if (selection.at(c)) steps[columns[c]] = step;
  }
  return steps;
}

std::optional<LocalError> ReadLocalError(const SurrogateBase& surrogate,
                                         const ResponseModel& model) {
  const Eigen::VectorXd& residuals = surrogate.GetResiduals();
  const Eigen::VectorXd& values = surrogate.GetValues();
  const auto n = static_cast<double>(residuals.size());
  if (residuals.size() == 0 || residuals.size() != values.size() || !residuals.allFinite() ||
      !values.allFinite())
    return std::nullopt;
  LocalError error;
  const Eigen::MatrixXd& points = surrogate.GetTransformedPoints();
  if (points.rows() != residuals.size() ||
      points.cols() != static_cast<Eigen::Index>(model.inputs.size())) {
    error.everywhere = std::sqrt(residuals.squaredNorm() / n);
    return error;
  }
  // As LocalErrors: residuals that are rounding noise count as none.
  constexpr double kPerfectFit = 1e-12;
  const double variation = (values.array() - values.mean()).square().sum();
  if ((values.array() == values(0)).all() || residuals.squaredNorm() < variation * kPerfectFit)
    return error;
  error.everywhere = std::sqrt(residuals.squaredNorm() / n);
  if (points.cols() == 0 || !(surrogate.GetWeightErrorRadius() > 0.0)) return error;
  const Eigen::VectorXd radius = Eigen::VectorXd::Constant(1, surrogate.GetWeightErrorRadius());
  error.factor = math::metamodel::KernelConstInflIsoExp(radius).GetHelperTerm();
  error.residuals = residuals;
  if (model.points.rows() == 0) error.points = points;
  return error;
}

}  // namespace corvath::exchange
