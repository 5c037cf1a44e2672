#pragma once

#include "metamodel/regression/ridge_solver.h"
#include "metamodel/subspace_results.h"
#include "metamodel/surrogate.h"
#include "training/cross_validation.h"
#include "training/train_settings.h"

#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace corvath::training {

/// Families of models; the numbers are stored with the candidates that were tried.
enum class Family : std::int32_t {
  kRegression = 0,
  kMovingLeastSquares = 1,
  kIsotropicKriging = 2,
  kAnisotropicKriging = 3
};

/// The number that is stored with ridge regressions, whose settings are those of least squares.
constexpr std::int32_t kRidgeNumber = 4;

/// A model before it has inputs.
struct CandidateForm {
  Family family;
  std::uint64_t order;  ///< of the polynomial; 0 for kriging and for a constant
  bool interactions;
  bool box_cox;
  bool ridge = false;  ///< a regression with penalised coefficients
};

inline bool IsSameForm(const CandidateForm& a, const CandidateForm& b) {
  return a.family == b.family && a.order == b.order && a.interactions == b.interactions &&
         a.box_cox == b.box_cox && a.ridge == b.ridge;
}

/// Whether its free parameters shrink what the data do not support: penalties, and nuggets.
inline bool Shrinks(const CandidateForm& form) {
  return form.ridge || form.family == Family::kIsotropicKriging ||
         form.family == Family::kAnisotropicKriging;
}

/// The mean: what every other model must beat.
constexpr CandidateForm kConstantForm{Family::kRegression, 0, false, false};

/// What bends least and most over all inputs, and shrinks what the data do not support.
constexpr CandidateForm kPlaneForm{Family::kRegression, 1, false, false, /*ridge=*/true};
constexpr CandidateForm kBowlForm{Family::kRegression, 2, true, false, /*ridge=*/true};
constexpr CandidateForm kIsotropicForm{Family::kIsotropicKriging, 0, false, false};
constexpr CandidateForm kAnisotropicForm{Family::kAnisotropicKriging, 0, false, false};

/// The forms that the settings allow, the cheapest first; each without Box-Cox transform, then with.
/// The constant is none of them.
std::vector<CandidateForm> AllowedForms(const ModelChoice& choice);

constexpr double kMargin = 0.5;

/// "Linear Regression of order 2 with interactions, Box-Cox".
std::wstring Describe(const CandidateForm& form);

/// Settings of a form over the inputs of `subspace`. Powers that an input has too few different
/// values for are left out. Predictions are limited to the range of the values and kMargin of it to
/// both sides, or by the limits of the settings.
boost::shared_ptr<math::metamodel::SurrogateSettingsBase> MakeSettings(
    const CandidateForm& form, const math::metamodel::BitVector& subspace, const ResponseData& data,
    const ModelChoice& choice);

/// Whether `num_points` designs suffice for the coefficients of a model, by the factors of the
/// settings.
bool IsAffordable(const math::metamodel::SurrogateSettingsBase& model, Family family,
                  Eigen::Index num_points, const ModelChoice& choice);

/// A new model of the family that `settings` belong to, not built.
boost::shared_ptr<math::metamodel::SurrogateBase> MakeModel(
    const math::metamodel::SurrogateSettingsBase& settings, const Eigen::MatrixXd& points,
    const Eigen::VectorXd& values);

/// Fits a model of the form, its free parameters chosen, and predicts each value without its group.
struct FittedForm {
  boost::shared_ptr<math::metamodel::SurrogateBase> model;  ///< built; null where there is none
  math::metamodel::RidgePenalty penalty;                    ///< of a ridge regression
  Eigen::VectorXd predicted;                                ///< n, in the user's units
};
/// @param fit_rows            rows that kriging chooses its radii and nugget from
/// @param interruption_point  may be empty; may throw to end the fit
FittedForm FitForm(const CandidateForm& form,
                   const math::metamodel::SurrogateSettingsBase& settings, const ResponseData& data,
                   const std::vector<Eigen::Index>& fit_rows,
                   const std::function<void()>& interruption_point);

/// The figures of a built model with these cross-validated predictions, single CoPs and what is told
/// of test data excepted.
math::metamodel::SubspaceResults Judge(const math::metamodel::SurrogateBase& model,
                                       const CandidateForm& form, const ResponseData& data,
                                       const Eigen::VectorXd& predicted);

/// Loss of CoP without each input, hyper-parameters and transforms kept: m values, 0 for inputs
/// that the model does not use, NaN where the smaller model cannot be built.
/// @param penalty  of a ridge regression; null for other models
Eigen::VectorXd ComputeSingleCoPs(const math::metamodel::SurrogateBase& model,
                                  const ResponseData& data,
                                  const math::metamodel::RidgePenalty* penalty);

}  // namespace corvath::training
