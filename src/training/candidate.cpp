#include "training/candidate.h"

#include "foundation/constants.h"
#include "metamodel/kriging/ordinary_kriging.h"
#include "metamodel/kriging/ordinary_kriging_settings.h"
#include "metamodel/moving_least_squares/moving_least_squares.h"
#include "metamodel/moving_least_squares/moving_least_squares_settings.h"
#include "metamodel/regression/linear_regression.h"
#include "metamodel/regression/linear_regression_settings.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>

namespace corvath::training {
namespace {

using math::metamodel::BitVector;
using math::metamodel::KernelType;
using math::metamodel::LinearRegression;
using math::metamodel::LinearRegressionSettings;
using math::metamodel::ModelType;
using math::metamodel::MovingLeastSquares;
using math::metamodel::MovingLeastSquaresSettings;
using math::metamodel::OrdinaryKriging;
using math::metamodel::OrdinaryKrigingSettings;
using math::metamodel::RidgePenalty;
using math::metamodel::SubspaceResults;
using math::metamodel::SurrogateBase;
using math::metamodel::SurrogateSettingsBase;
using math::transform::TransformType;

using math::kNaN;

/// The bits of powers up to `order` of the inputs of `subspace`. A power p tells something beyond
/// the lower ones only of an input with more than p different values.
BitVector MainTerms(std::uint64_t order, const BitVector& subspace, const ResponseData& data) {
  const std::size_t m = subspace.size();
  BitVector bits(m * order, false);
  for (std::size_t power = 1; power <= order; ++power)
    for (std::size_t j = 0; j < m; ++j)
      bits[(power - 1) * m + j] = subspace[j] && data.num_levels[j] > power;
  return bits;
}

LinearRegressionSettings RegressionSettings(const CandidateForm& form, const BitVector& subspace,
                                            const ResponseData& data) {
  const std::size_t m = subspace.size();
  LinearRegressionSettings settings(m);
  if (form.order == 0) {
    settings.SetVariableSelection(BitVector(m, false));
    return settings;
  }
  settings.SetOrder(form.order);
  settings.SetInteractionSelection(form.interactions ? BitVector(m * (m - 1) / 2, true)
                                                     : BitVector());
  settings.SetVariableSelection(subspace);
  settings.SetMainTermSelection(MainTerms(form.order, subspace, data));
  return settings;
}

MovingLeastSquaresSettings MovingSettings(const CandidateForm& form, const BitVector& subspace,
                                          const ResponseData& data) {
  MovingLeastSquaresSettings settings(subspace.size());
  settings.SetOrder(form.order);
  settings.SetMainTermSelection(MainTerms(form.order, subspace, data));
  return settings;
}

OrdinaryKrigingSettings KrigingSettings(const CandidateForm& form, const BitVector& subspace) {
  OrdinaryKrigingSettings settings(subspace.size());
  settings.SetKernelType(form.family == Family::kAnisotropicKriging ? KernelType::kConstInflExp
                                                                    : KernelType::kConstInflIsoExp);
  settings.SetVariableSelection(subspace);
  return settings;
}

/// For the number of coefficients; NaN without a spare design.
double Adjusted(double determination, Eigen::Index n, std::uint64_t num_coefficients) {
  const double spare = static_cast<double>(n) - static_cast<double>(num_coefficients);
  if (!(spare > 0.0)) return kNaN;
  return 1.0 - (static_cast<double>(n) - 1.0) / spare * (1.0 - determination);
}

/// The regression without each input in turn: its coefficients anew, its transforms as they are.
Eigen::VectorXd SingleCoPsOfRegression(const LinearRegression& model, const ResponseData& data,
                                       const RidgePenalty* penalty) {
  const auto cop = [&](const LinearRegression& judged) {
    return Determination(data.values, penalty ? judged.CrossValidateRidge(*penalty, data.groups)
                                              : judged.ApproximateCrossValidation(data.groups));
  };
  const double full = cop(model);
  const BitVector subspace = model.GetVariableSelection();
  Eigen::VectorXd single = Eigen::VectorXd::Zero(static_cast<Eigen::Index>(subspace.size()));
  for (std::size_t j = 0; j < subspace.size(); ++j) {
    if (!subspace[j]) continue;
    LinearRegressionSettings settings = model.GetSettingsBase();
    BitVector others = subspace;
    others[j] = false;
    settings.SetVariableSelection(others);
    LinearRegression reduced(data.points, data.values, settings);
    const bool is_built = penalty ? reduced.BuildRidge(*penalty) : reduced.Build();
    single(static_cast<Eigen::Index>(j)) = is_built ? full - cop(reduced) : kNaN;
  }
  return single;
}

}  // namespace

std::vector<CandidateForm> AllowedForms(const ModelChoice& choice) {
  std::vector<CandidateForm> forms;
  const auto add = [&](Family family, std::uint64_t order, bool interactions) {
    forms.push_back({family, order, interactions, false});
    if (choice.box_cox) forms.push_back({family, order, interactions, true});
  };
  if (choice.polynomials)
    for (std::uint64_t order = 1; order <= choice.max_polynomial_order && order <= 2; ++order) {
      for (const bool interactions : {false, true}) add(Family::kRegression, order, interactions);
      // The penalty shrinks what does not matter: one form for each order.
      const std::size_t first = forms.size();
      add(Family::kRegression, order, order == 2);
      for (std::size_t k = first; k < forms.size(); ++k) forms[k].ridge = true;
    }
  if (choice.moving_least_squares)
    for (std::uint64_t order = 1; order <= choice.max_moving_least_squares_order && order <= 2;
         ++order)
      add(Family::kMovingLeastSquares, order, false);
  if (choice.isotropic_kriging) add(Family::kIsotropicKriging, 0, false);
  if (choice.anisotropic_kriging) add(Family::kAnisotropicKriging, 0, false);
  return forms;
}

std::wstring Describe(const CandidateForm& form) {
  std::wstring text;
  if (form.family == Family::kRegression && form.order == 0) return L"Constant";
  switch (form.family) {
    case Family::kRegression:
      text = L"Linear Regression of order " + std::to_wstring(form.order);
      break;
    case Family::kMovingLeastSquares:
      text = L"Moving Least Squares of order " + std::to_wstring(form.order);
      break;
    case Family::kIsotropicKriging:
      text = L"Isotropic Kriging";
      break;
    case Family::kAnisotropicKriging:
      text = L"Anisotropic Kriging";
      break;
  }
  if (form.interactions) text += L" with interactions";
  if (form.ridge) text += L", ridge";
  if (form.box_cox) text += L", Box-Cox";
  return text;
}

boost::shared_ptr<SurrogateSettingsBase> MakeSettings(const CandidateForm& form,
                                                      const BitVector& subspace,
                                                      const ResponseData& data,
                                                      const ModelChoice& choice) {
  boost::shared_ptr<SurrogateSettingsBase> made;
  switch (form.family) {
    case Family::kRegression:
      made = boost::make_shared<LinearRegressionSettings>(RegressionSettings(form, subspace, data));
      break;
    case Family::kMovingLeastSquares:
      made = boost::make_shared<MovingLeastSquaresSettings>(MovingSettings(form, subspace, data));
      break;
    case Family::kIsotropicKriging:
    case Family::kAnisotropicKriging:
      made = boost::make_shared<OrdinaryKrigingSettings>(KrigingSettings(form, subspace));
      break;
  }
  if (form.box_cox) made->SetValueTransform(TransformType::kBoxCox);
  if (choice.limits) {
    made->SetLimitTransform(TransformType::kLimits);
    made->SetLimitTransformParameter({choice.limits->first, choice.limits->second});
  } else if (form.order > 0 || form.family != Family::kRegression) {
    const double lower = data.values.minCoeff();
    const double upper = data.values.maxCoeff();
    const double margin = kMargin * (upper - lower);
    if (margin > 0.0 && std::isfinite(upper + margin) && std::isfinite(lower - margin)) {
      made->SetLimitTransform(TransformType::kLimits);
      made->SetLimitTransformParameter({lower - margin, upper + margin});
    }
  }
  return made;
}

bool IsAffordable(const SurrogateSettingsBase& model, Family family, Eigen::Index num_points,
                  const ModelChoice& choice) {
  const double factor = family == Family::kRegression
                            ? choice.designs_per_coefficient
                            : choice.designs_per_coefficient_of_local_models;
  return static_cast<double>(num_points) >=
         std::max(factor, 1.0) * static_cast<double>(model.GetNumberCoefficients());
}

boost::shared_ptr<SurrogateBase> MakeModel(const SurrogateSettingsBase& settings,
                                           const Eigen::MatrixXd& points,
                                           const Eigen::VectorXd& values) {
  if (const auto* regression = dynamic_cast<const LinearRegressionSettings*>(&settings))
    return boost::make_shared<LinearRegression>(points, values, *regression);
  if (const auto* moving = dynamic_cast<const MovingLeastSquaresSettings*>(&settings))
    return boost::make_shared<MovingLeastSquares>(points, values, *moving);
  if (const auto* kriging = dynamic_cast<const OrdinaryKrigingSettings*>(&settings))
    return boost::make_shared<OrdinaryKriging>(points, values, *kriging);
  throw std::logic_error("MakeModel: settings of an unknown family");
}

FittedForm FitForm(const CandidateForm& form, const SurrogateSettingsBase& settings,
                   const ResponseData& data, const std::vector<Eigen::Index>& fit_rows,
                   const std::function<void()>& interruption_point) {
  FittedForm fitted;
  const auto model = MakeModel(settings, data.points, data.values);
  model->SetInterruptionPoint(interruption_point);
  bool is_built = false;
  if (form.ridge) {
    auto& regression = dynamic_cast<LinearRegression&>(*model);
    fitted.penalty = regression.BuildOptimalRidge(data.singles, data.groups, fitted.predicted);
    is_built = model->IsBuilt() && fitted.predicted.size() > 0;
  } else if (auto* kriging = dynamic_cast<OrdinaryKriging*>(model.get())) {
    is_built = kriging->BuildWithNoise(fit_rows);
  } else {
    is_built = model->IsSolvable() && model->BuildOptimal(data.groups);
  }
  if (!is_built) return fitted;
  if (!form.ridge) fitted.predicted = model->ApproximateCrossValidation(data.groups);
  model->SetInterruptionPoint({});
  fitted.model = model;
  return fitted;
}

SubspaceResults Judge(const SurrogateBase& model, const CandidateForm& form,
                      const ResponseData& data, const Eigen::VectorXd& predicted) {
  SubspaceResults results;
  results.model_type = static_cast<ModelType::eModelType>(
      form.ridge ? kRidgeNumber : static_cast<std::int32_t>(form.family));
  results.settings.reset(model.GetSettingsBase().Clone());
  const Eigen::Index n = data.values.size();
  const std::uint64_t num_coefficients = model.GetNumberCoefficients();
  results.CoP = Determination(data.values, predicted);
  results.CoPadj = Adjusted(results.CoP, n, num_coefficients);
  results.CoD = Determination(data.values, model.ApproximateSupportPoints());
  results.CoDadj = Adjusted(results.CoD, n, num_coefficients);
  results.CoDtest = kNaN;
  results.predError = (data.values - predicted).norm() / std::sqrt(static_cast<double>(n));
  return results;
}

Eigen::VectorXd ComputeSingleCoPs(const SurrogateBase& model, const ResponseData& data,
                                  const RidgePenalty* penalty) {
  if (const auto* regression = dynamic_cast<const LinearRegression*>(&model))
    return SingleCoPsOfRegression(*regression, data, penalty);
  if (const auto* moving = dynamic_cast<const MovingLeastSquares*>(&model))
    return moving->ComputeSingleCoPs(data.groups);
  if (const auto* kriging = dynamic_cast<const OrdinaryKriging*>(&model))
    return kriging->ComputeSingleCoPs(data.groups);
  throw std::logic_error("ComputeSingleCoPs: a model of an unknown family");
}

}  // namespace corvath::training
